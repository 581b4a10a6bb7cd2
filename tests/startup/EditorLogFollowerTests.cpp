// Following a growing log file: lines split across reads, the carry, overlong lines, a file
// that shrinks or is written anew, and logs of an earlier run.
#include "TestSupport.h"

#include "startup/EditorLogFollower.h"
#include "startup/StartupMarkers.h"

#include <gtest/gtest.h>

#include <vector>

namespace korvane {
namespace {

using testing::ScratchDirectory;

// Appends bytes the way a writer that keeps its file open for others does.
void AppendBytes(TextView path, BytesView bytes)
{
    UniqueFileHandle file(CreateFileW(Text(path).c_str(), FILE_APPEND_DATA,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(file.IsValid());
    DWORD written = 0;
    ASSERT_TRUE(WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    ASSERT_EQ(written, bytes.size());
}

std::uint64_t FileTimeOf(TextView path)
{
    UniqueFileHandle file(CreateFileW(Text(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    FILETIME lastWrite{};
    GetFileTime(file.Get(), nullptr, nullptr, &lastWrite);
    return (static_cast<std::uint64_t>(lastWrite.dwHighDateTime) << 32) | lastWrite.dwLowDateTime;
}

void SetLastWriteTime(TextView path, std::uint64_t time)
{
    UniqueFileHandle file(CreateFileW(Text(path).c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE,
        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    FILETIME lastWrite{static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    ASSERT_TRUE(SetFileTime(file.Get(), nullptr, nullptr, &lastWrite));
}

class LineCollector {
public:
    explicit LineCollector(EditorLogFollower& follower) : follower_(follower) {}
    std::vector<Text> Pass()
    {
        std::vector<Text> lines;
        follower_.FollowOnce([&lines](TextView line) { lines.emplace_back(line); });
        return lines;
    }

private:
    EditorLogFollower& follower_;
};

using Lines = std::vector<Text>;

TEST(EditorLogFollower, LinesSplitAcrossPassesComeOnceWhenTheirLineFeedArrives)
{
    ScratchDirectory scratch(L"log-split");
    const Text log = scratch / L"Editor.log";
    EditorLogFollower follower(log, 0);
    LineCollector collect(follower);

    EXPECT_EQ(collect.Pass(), Lines{}) << "no file yet";
    AppendBytes(log, "");
    EXPECT_EQ(collect.Pass(), Lines{}) << "an empty file";

    AppendBytes(log, "first\nLogEngine: Initial");
    EXPECT_EQ(collect.Pass(), Lines{L"first"});
    EXPECT_EQ(follower.PendingBytes(), 18u);
    EXPECT_EQ(collect.Pass(), Lines{}) << "nothing new";
    AppendBytes(log, "izing Engine...\r");
    EXPECT_EQ(collect.Pass(), Lines{});
    AppendBytes(log, "\n\nthird \xE6\xB8\xB8\n\xFF\xFE bad\nlast");
    EXPECT_EQ(collect.Pass(), (Lines{L"LogEngine: Initializing Engine...\r", L"", L"third \x6E38", L""}))
        << "a CR stays in its line; invalid UTF-8 gives an empty line";
    EXPECT_EQ(MatchStartupMarker(L"LogEngine: Initializing Engine...\r", false), L"Initializing the Editor engine…");
    EXPECT_EQ(follower.PendingBytes(), 4u);
    EXPECT_EQ(follower.Position(), 63u);
}

TEST(EditorLogFollower, OnePassReadsAtMostOneBlock)
{
    ScratchDirectory scratch(L"log-block");
    const Text log = scratch / L"Editor.log";
    // 100 lines of 1000 bytes: the first pass sees the lines within 64 KiB only.
    Bytes content;
    for (int index = 0; index < 100; ++index) {
        content += Bytes(999, static_cast<char>('a' + index % 26)) + "\n";
    }
    AppendBytes(log, content);
    EditorLogFollower follower(log, 0);
    LineCollector collect(follower);
    EXPECT_EQ(collect.Pass().size(), 65u);
    EXPECT_EQ(follower.Position(), kLogReadBlockBytes);
    EXPECT_EQ(collect.Pass().size(), 35u) << "the rest follows on the next pass, nothing skipped";
    EXPECT_EQ(follower.Position(), 100000u);
}

TEST(EditorLogFollower, OverlongLineIsDroppedWholeAndReadingGoesOn)
{
    ScratchDirectory scratch(L"log-long");
    const Text log = scratch / L"Editor.log";
    EditorLogFollower follower(log, 0);
    LineCollector collect(follower);

    // Exactly 65536 unfinished bytes are still carried; one more and the line is dropped.
    AppendBytes(log, "LogEngine: Initializing Engine" + Bytes(65536 - 30, 'x'));
    EXPECT_EQ(collect.Pass(), Lines{});
    EXPECT_EQ(follower.PendingBytes(), 65536u);
    AppendBytes(log, "y");
    EXPECT_EQ(collect.Pass(), Lines{});
    EXPECT_EQ(follower.PendingBytes(), 0u) << "the line's beginning, marker and all, is gone";
    AppendBytes(log, "tail\nMod authoring policy active\n");
    EXPECT_EQ(collect.Pass(), (Lines{L"tail", L"Mod authoring policy active"}));

    // A line whose LF comes in the same pass as its excess is still whole.
    AppendBytes(log, "before\n" + Bytes(70000, 'z') + "\nafter\n");
    EXPECT_EQ(collect.Pass(), Lines{L"before"});
    EXPECT_EQ(collect.Pass(), (Lines{Text(70000, L'z'), L"after"}));

    // A line still unfinished after two blocks is dropped; its remainder comes as a line.
    AppendBytes(log, "before\n" + Bytes(140000, 'z') + "\nafter\n");
    EXPECT_EQ(collect.Pass(), Lines{L"before"});
    EXPECT_EQ(collect.Pass(), Lines{});
    EXPECT_EQ(follower.PendingBytes(), 0u);
    EXPECT_EQ(collect.Pass(), (Lines{Text(140000 - 65529 - 65536, L'z'), L"after"}));
}

TEST(EditorLogFollower, ShrunkenFileIsNotReadAgainUntilItGrowsPastThePosition)
{
    ScratchDirectory scratch(L"log-shrink");
    const Text log = scratch / L"Editor.log";
    AppendBytes(log, "one\ntwo\nthree\n");  // 14 bytes
    EditorLogFollower follower(log, 0);
    LineCollector collect(follower);
    EXPECT_EQ(collect.Pass(), (Lines{L"one", L"two", L"three"}));

    // A new run writes the file anew, shorter than before: nothing is read.
    testing::WriteFileBytes(log, "new\n");
    EXPECT_EQ(collect.Pass(), Lines{});
    EXPECT_EQ(follower.Position(), 14u);
    // Grown past the old position: reading resumes there, not at the start.
    AppendBytes(log, "0123456789abc\nnext\n");
    EXPECT_EQ(collect.Pass(), (Lines{L"abc", L"next"}));

    // The file removed: the pass is skipped, and a later file is followed from the position.
    ASSERT_TRUE(DeleteFileW(log.c_str()));
    EXPECT_EQ(collect.Pass(), Lines{});
    AppendBytes(log, Bytes(22, '-') + "\nback\n");
    EXPECT_EQ(collect.Pass(), Lines{L"back"});
}

TEST(EditorLogFollower, FileIsOpenedAfreshOnEachPassAndNeverHeld)
{
    ScratchDirectory scratch(L"log-afresh");
    const Text log = scratch / L"Editor.log";
    AppendBytes(log, "one\n");
    EditorLogFollower follower(log, 0);
    LineCollector collect(follower);
    EXPECT_EQ(collect.Pass(), Lines{L"one"});

    // Between passes nobody holds the file: the editor may open it without any sharing.
    {
        UniqueFileHandle exclusive(
            CreateFileW(log.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(exclusive.IsValid());
        DWORD written = 0;
        SetFilePointer(exclusive.Get(), 0, nullptr, FILE_END);
        ASSERT_TRUE(WriteFile(exclusive.Get(), "two\n", 4, &written, nullptr));
        EXPECT_EQ(collect.Pass(), Lines{}) << "a file that cannot be opened skips the pass";
    }
    EXPECT_EQ(collect.Pass(), Lines{L"two"});

    // Renamed away and another file put in its place: the new file is read from the position.
    ASSERT_TRUE(MoveFileExW(log.c_str(), (scratch / L"Editor-backup.log").c_str(), 0));
    AppendBytes(log, "12345678three\n");
    EXPECT_EQ(collect.Pass(), Lines{L"three"});
}

TEST(EditorLogFollower, LogOfAnEarlierRunIsNotRead)
{
    ScratchDirectory scratch(L"log-old");
    const Text log = scratch / L"Editor.log";
    AppendBytes(log, "LogEngine: Initializing Engine\n");
    const std::uint64_t written = FileTimeOf(log);
    const std::uint64_t oneHour = 36000000000ull;
    SetLastWriteTime(log, written - oneHour);

    EditorLogFollower follower(log, written);
    LineCollector collect(follower);
    EXPECT_EQ(collect.Pass(), Lines{});
    EXPECT_EQ(follower.Position(), 0u);

    // Written again by this run: now it is followed, from its start.
    SetLastWriteTime(log, written);
    EXPECT_EQ(collect.Pass(), Lines{L"LogEngine: Initializing Engine"});

    EditorLogFollower unlimited(log, 0);
    SetLastWriteTime(log, 1);
    EXPECT_EQ(LineCollector(unlimited).Pass(), Lines{L"LogEngine: Initializing Engine"}) << "0 means no limit";
}

TEST(EditorLogFollower, RealEditorLogWrittenInPiecesGivesItsPhasesInOrder)
{
    const Bytes real = testing::ReadRealData(L"logs\\ue5.3.2_02020fan__FirstGame\\FPS.log");
    ASSERT_GT(real.size(), 300000u);
    ScratchDirectory scratch(L"log-real");
    const Text log = scratch / L"FPS.log";
    EditorLogFollower follower(log, 0);
    std::vector<Text> phases;
    std::size_t lineCount = 0;
    const auto onLine = [&](TextView line) {
        ++lineCount;
        const Text phase = MatchStartupMarker(line, false);
        if (!phase.empty() && (phases.empty() || phases.back() != phase)) {
            phases.push_back(phase);
        }
    };
    // Pieces of odd sizes, so that lines and UTF-8 sequences are cut anywhere.
    for (std::size_t offset = 0; offset < real.size(); offset += 7919) {
        AppendBytes(log, BytesView(real).substr(offset, 7919));
        follower.FollowOnce(onLine);
    }
    while (follower.Position() < real.size()) {
        follower.FollowOnce(onLine);
    }
    follower.FollowOnce(onLine);
    EXPECT_EQ(lineCount, 2173u);
    EXPECT_EQ(phases, (Lines{L"Preparing rendering and shaders…", L"Initializing the Editor engine…",
                          L"Engine initialized; preparing the Editor interface…"}));
}

}  // namespace
}  // namespace korvane
