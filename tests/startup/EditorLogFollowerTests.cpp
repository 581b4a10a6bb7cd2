// Following a growing log file: lines and UTF-8 split across reads, the carry, overlong lines,
// a file that shrinks or is written anew, and logs of an earlier run. (Every marker of a real
// editor's log followed while it grows is checked by bench/LogFollowBench.)
#include "TestSupport.h"

#include "startup/EditorLogFollower.h"
#include "startup/StartupMarkers.h"

#include <gtest/gtest.h>

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

void SetLastWriteTime(TextView path, std::uint64_t time)
{
    UniqueFileHandle file(CreateFileW(Text(path).c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE,
        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    FILETIME lastWrite{static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    ASSERT_TRUE(SetFileTime(file.Get(), nullptr, nullptr, &lastWrite));
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
    EXPECT_EQ(MatchStartupMarker(L"LogEngine: Initializing Engine...\r", false), L"Initializing the Editor engine…");
    EXPECT_EQ(log.follower.PendingBytes(), 4u);

    // One pass reads at most one 64 KiB block; the rest follows on the next, nothing skipped.
    Bytes block;
    for (int index = 0; index < 100; ++index) {
        block += Bytes(999, static_cast<char>('a' + index % 26)) + "\n";
    }
    EXPECT_EQ(log.After("\n" + block).size(), 66u);
    EXPECT_EQ(log.follower.Position(), 63 + kLogReadBlockBytes);
    EXPECT_EQ(log.Pass().size(), 35u);
    EXPECT_EQ(log.follower.Position(), 63 + 1 + 100000u);
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
    ASSERT_TRUE(MoveFileExW(log.path.c_str(), (log.scratch / L"Editor-backup.log").c_str(), 0));
    EXPECT_EQ(log.After(Bytes(26, '-') + "\nthree\n"), Lines{L"three"}) << "renamed away and replaced";
}

TEST(EditorLogFollower, LogOfAnEarlierRunIsNotRead)
{
    const std::uint64_t notBefore = 134000000000000000ull;  // in 2025
    FollowedLog log(notBefore);
    AppendBytes(log.path, "LogEngine: Initializing Engine\n");
    SetLastWriteTime(log.path, notBefore - 36000000000ull);  // an hour before
    EXPECT_EQ(log.Pass(), Lines{});
    EXPECT_EQ(log.follower.Position(), 0u);
    SetLastWriteTime(log.path, notBefore);
    EXPECT_EQ(log.Pass(), Lines{L"LogEngine: Initializing Engine"}) << "written by this run: read from its start";
}

}  // namespace
}  // namespace korvane
