// Following a growing log file: lines and UTF-8 split across reads, the carry, overlong lines,
// a file that shrinks or is written anew, logs of an earlier run, and a whole log a real editor
// wrote. Then the watch of a real child process that plays the starting editor (startup_child.exe,
// built beside these tests): its log and its windows. Its early end and a cancel, with the editor
// ended by the cancelled code, are checked on whole launches.
#include "TestSupport.h"

#include "foundation/Paths.h"
#include "startup/EditorLogFollower.h"
#include "startup/EditorWindowSearch.h"
#include "startup/StartupMarkers.h"
#include "startup/StartupMonitor.h"
#include "startup/WatchEditorStart.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace korvane {
namespace {

using Lines = std::vector<Text>;

// Appends bytes the way a writer that keeps its file open for others does.
void AppendBytes(TextView path, BytesView bytes)
{
    UniqueFileHandle file(CreateFileW(Text(path).c_str(), FILE_APPEND_DATA,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    ASSERT_TRUE(WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
}

// The time of day as a FILETIME count, as the launch takes it when it starts the editor.
std::uint64_t Now()
{
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return (static_cast<std::uint64_t>(now.dwHighDateTime) << 32) | now.dwLowDateTime;
}

struct FollowedLog {
    explicit FollowedLog(std::uint64_t notBefore = 0) : follower(path, notBefore) {}
    Lines Pass()
    {
        Lines lines;
        follower.FollowOnce([&lines](TextView line) { lines.emplace_back(line); });
        return lines;
    }
    Lines After(BytesView bytes)
    {
        AppendBytes(path, bytes);
        return Pass();
    }
    testing::ScratchDirectory scratch{L"log"};
    Text path = scratch / L"Editor.log";
    EditorLogFollower follower;
};

TEST(EditorLogFollower, LinesSplitAcrossPassesComeOnceWhenTheirLineFeedArrives)
{
    FollowedLog log;
    EXPECT_EQ(log.Pass(), Lines{}) << "no file yet";
    const std::pair<Bytes, Lines> steps[] = {
        {"", {}},
        {"first\nLogEngine: Initial", {L"first"}},
        {"", {}},
        {"izing Engine...\r", {}},
        {"\n\nthird \xE6", {L"LogEngine: Initializing Engine...\r", L""}},  // a CR stays in its line
        {"\xB8\xB8\n\xFF\xFE bad\nlast", {L"third \x6E38", L""}},  // invalid UTF-8 gives an empty line
    };
    for (const auto& [bytes, lines] : steps) {
        EXPECT_EQ(log.After(bytes), lines) << bytes;
    }
    EXPECT_EQ(log.follower.PendingBytes(), 4u);
}

// UTF-8 with a byte-order mark, lines up to 21 KB, and a line with a path in Chinese across the
// first block boundary: read one block of at most 64 KiB a pass, nothing skipped.
TEST(EditorLogFollower, ARealEditorLogGivesEveryLineAndItsMarkersInOrder)
{
    FollowedLog log;
    testing::WriteFileBytes(log.path, testing::ReadRealData(L"logs\\ue5.4.4_2687695258__bd5.0-z1\\model.log"));
    Lines lines;
    int passes = 0;
    for (Lines more = log.Pass(); !more.empty(); more = log.Pass()) {
        lines.insert(lines.end(), more.begin(), more.end());
        ++passes;
    }
    EXPECT_EQ(passes, 3);
    EXPECT_EQ(lines.size(), 1173u);
    const auto naming = [](const Text& line) { return line.find(L"上传官网") != Text::npos; };
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(), naming), 20) << "the Chinese path, whole in every line";
    Lines phases;
    for (const Text& line : lines) {
        if (Text phase = MatchStartupMarker(line, true); !phase.empty()) {
            phases.push_back(std::move(phase));
        }
    }
    phases.erase(std::unique(phases.begin(), phases.end()), phases.end());  // as the window keeps them
    EXPECT_EQ(phases, (Lines{L"正在准备渲染与着色器…", L"正在初始化编辑器引擎…", L"引擎初始化完成，正在建立编辑界面…"}));
}

TEST(EditorLogFollower, OverlongLineIsDroppedWholeAndReadingGoesOn)
{
    FollowedLog log;
    // Exactly 65536 unfinished bytes are still carried; one more and the line is dropped.
    EXPECT_EQ(log.After("LogEngine: Initializing Engine" + Bytes(65536 - 30, 'x')), Lines{});
    EXPECT_EQ(log.follower.PendingBytes(), 65536u);
    EXPECT_EQ(log.After("y"), Lines{});
    EXPECT_EQ(log.follower.PendingBytes(), 0u) << "the line's beginning, marker and all, is gone";
    EXPECT_EQ(log.After("tail\nnext\n"), (Lines{L"tail", L"next"}));

    // A line whose LF comes in the same pass as its excess is still whole.
    EXPECT_EQ(log.After("before\n" + Bytes(70000, 'z') + "\nafter\n"), Lines{L"before"});
    EXPECT_EQ(log.Pass(), (Lines{Text(70000, L'z'), L"after"}));
    // A line still unfinished after two blocks is dropped; its remainder comes as a line.
    EXPECT_EQ(log.After("before\n" + Bytes(140000, 'z') + "\nafter\n"), Lines{L"before"});
    EXPECT_EQ(log.Pass(), Lines{});
    EXPECT_EQ(log.Pass(), (Lines{Text(140000 - 65529 - 65536, L'z'), L"after"}));
}

TEST(EditorLogFollower, FileOpenedAfreshEachPassIsReadFromThePosition)
{
    FollowedLog log;
    EXPECT_EQ(log.After("one\ntwo\nthree\n"), (Lines{L"one", L"two", L"three"}));
    // Written anew and shorter: nothing is read until it grows past the position.
    testing::WriteFileBytes(log.path, "new\n");
    EXPECT_EQ(log.Pass(), Lines{});
    EXPECT_EQ(log.After("0123456789abc\nnext\n"), (Lines{L"abc", L"next"}));

    // Between passes nobody holds the file: the editor may open it without any sharing.
    {
        UniqueFileHandle exclusive(CreateFileW(
            log.path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(exclusive.IsValid());
        DWORD written = 0;
        SetFilePointer(exclusive.Get(), 0, nullptr, FILE_END);
        ASSERT_TRUE(WriteFile(exclusive.Get(), "two\n", 4, &written, nullptr));
        EXPECT_EQ(log.Pass(), Lines{}) << "a file that cannot be opened skips the pass";
    }
    EXPECT_EQ(log.Pass(), Lines{L"two"});
}

// A log written by this run is read by the watch below.
TEST(EditorLogFollower, LogOfAnEarlierRunIsNotRead)
{
    FollowedLog log(Now() + 36000000000ull);  // the run began an hour after the log was last written
    EXPECT_EQ(log.After("LogEngine: Initializing Engine\n"), Lines{});
    EXPECT_EQ(log.follower.Position(), 0u);
}

// Shown: its windows must be seen.
testing::ChildProcess StartChild(const Lines& steps)
{
    testing::ChildProcess child = testing::ChildProcess::Start(JoinPath(testing::BinaryDirectory(), L"startup_child.exe"),
        steps, {.currentDirectory = {}, .hidden = false});
    EXPECT_TRUE(child.IsStarted());
    return child;
}

TEST(EditorWindowSearch, OnlyAVisibleUnownedWindowLargerThanASplashCounts)
{
    // None of the first child's windows counts: each is a pixel too narrow or too low, of a splash
    // class (whatever its size), hidden, or owned. The second's is just large enough.
    const std::pair<Lines, bool> children[] = {
        {{L"--window=300x151", L"--window=301x150", L"--window=1280x720:UnrealSPLASHWindow",
             L"--hidden-window=1280x720", L"--window=200x100", L"--owned-window=1280x720", L"--stay"},
            false},
        {{L"--window=301x151", L"--stay"}, true},
    };
    for (const auto& [steps, counts] : children) {
        testing::ChildProcess child = StartChild(steps);
        EXPECT_EQ(WaitForInputIdle(child.Handle(), 30000), 0u) << "its windows made, it waits for messages";
        EXPECT_EQ(EditorMainWindowExists(child.Id()), counts);
        child.Kill();
    }
}

// In the monitor's language (English is seen on whole launches), from the loading line on.
TEST(WatchEditorStart, LogMarkersMoveThePhaseUntilTheMainWindowStands)
{
    testing::ScratchDirectory scratch(L"watch-log");
    const Text log = scratch / L"KorvaneLauncher-1-2.log";
    std::atomic<bool> cancel{false};
    StartupMonitor monitor({.forcedDpi = 96, .noBackground = true, .chinese = true, .cancelFlag = &cancel});
    // The log stands whole before the editor's window, so that the watch has read it by then.
    const std::uint64_t notBefore = Now();
    testing::WriteFileBytes(log, "LogInit: Display: Running engine\n"
                                 "LogShaderCompilers: Display: Compiling shader autogen file: a\n"
                                 "LogEngine: Initializing Engine...\n");
    testing::ChildProcess child = StartChild({L"--window=1280x720", L"--stay"});
    EXPECT_TRUE(WatchEditorStart(monitor, child.Handle(), child.Id(), cancel, log, notBefore));
    EXPECT_EQ(monitor.Snapshot().observedPhases,
        (Lines{L"正在加载编辑器模块与界面…", L"正在准备渲染与着色器…", L"正在初始化编辑器引擎…"}));
}

}  // namespace
}  // namespace korvane
