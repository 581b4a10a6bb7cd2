// The pure pieces of the tool bridge: progress and timing files, the source listing, and the
// three-line answer to `prepare`, judged against files that really exist.
#include "TestSupport.h"

#include "foundation/Text.h"
#include "tool/ModSource.h"
#include "tool/ProgressFile.h"
#include "tool/SelectionFile.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace korvane {
namespace {

TEST(ProgressFile, LinesFollowChangesAndCarryTheCacheState)
{
    struct Row { const char* content; const wchar_t* line; std::int32_t cacheHit; };  // line nullptr: nothing shown
    const Row rows[] = {
        {"", nullptr, -1},  // an empty or oversized read
        {R"({"stage":"sdkHash"})", L"Computing the SDK content revision…", -1},
        {R"({"stage":"sdkHash"})", nullptr, -1},  // unchanged bytes are shown once
        {R"({"stage":"cacheVerify","cacheHit":fal)", nullptr, -1},  // caught half written
        {R"({"stage":"sdkHash"})", nullptr, -1},  // what was shown last is still what was applied
        {R"({"stage":"cacheVerify","cacheHit":false})", L"Verifying the local SDK cache… · Creating the SDK cache", 0},
        {R"({"stage":"materialize"})", L"Preparing local SDK files… · Creating the SDK cache", 0},  // state kept
        {R"({"stage":"materialize","cacheHit":"true"})", L"Preparing local SDK files… · SDK cache hit, verifying", 1},
        {R"({"stage":"sdkHash"})", L"Computing the SDK content revision… · SDK cache hit, verifying", 1},
    };
    ProgressFileFollower follower;
    std::int32_t cacheHit = -1;
    for (const Row& row : rows) {
        const std::optional<Text> expected = row.line ? std::optional<Text>(row.line) : std::nullopt;
        EXPECT_EQ(follower.Take(row.content, cacheHit), expected) << row.content;
        EXPECT_EQ(cacheHit, row.cacheHit) << row.content;
    }
    const testing::ScopedUiLanguage chinese(L"zh-Hans");
    std::int32_t fresh = -1;
    ProgressFileFollower other;
    EXPECT_EQ(other.Take(R"({"stage":"complete","cacheHit":true})", fresh), Text(L"工作区准备完成… · SDK 缓存命中，正在校验"));
}

TEST(ProgressFile, TimingReportLastRowWithTheKeyWins)
{
    struct Row { const char* report; std::int32_t before, after; };
    const Row rows[] = {
        {R"({"stages":[{"cacheHit":true},{"name":"x"},{"cacheHit":false},{"cacheHit":"maybe"}]})", 1, 0},
        {R"({"stages":[{"cacheHit":false},{"cacheHit":"true"}],"cacheHit":false})", 0, 1},  // only rows count
        {R"({"stages":[{"cacheHit":false}],"stages":[]})", 1, 1},  // refused by the reader: nothing changes
    };
    for (const Row& row : rows) {
        std::int32_t cacheHit = row.before;
        ApplyTimingReport(row.report, cacheHit);
        EXPECT_EQ(cacheHit, row.after) << row.report;
    }
}

TEST(ModSourceListing, FirstExactIdDecides)
{
    const Bytes listing = R"({"mods":[{"id":"mod.A","modProject":"C:\\a-upper.kvmod"},)"
                          R"({"id":"mod.a","modProject":"C:\\a-first.kvmod"},)"
                          R"({"id":"mod.a","modProject":"C:\\a-second.kvmod"}]})";
    EXPECT_EQ(FindModSourceInListing(listing, L"mod.a"), L"C:\\a-first.kvmod");
    EXPECT_EQ(FindModSourceInListing(listing, L"mod.A"), L"C:\\a-upper.kvmod");
    EXPECT_EQ(FindModSourceInListing(listing, L"mod.b"), L"");
    EXPECT_THROW(FindModSourceInListing(R"({"mods":[})", L"mod.a"), std::runtime_error);
}

constexpr wchar_t kModId[] = L"mod.0123456789abcdef0123456789abcdef";  // 36 units

Bytes Answer(TextView mod, TextView project, TextView id)
{
    return TextToUtf8(Text(mod) + L"\n" + Text(project) + L"\n" + Text(id));
}

TEST(SelectionFile, LinesAndOneReadOfAtMost4096Bytes)
{
    const std::vector<Text> expected = {L"a", L"c\r", L"\x4E2D", L"last\r"};
    EXPECT_EQ(SelectionFileLines("a\r\n\n\r\nb\xC3\x28\nc\r\r\n\xE4\xB8\xAD\nlast\r"), expected);
    EXPECT_TRUE(SelectionFileLines("\n\r\n\n").empty());

    testing::ScratchDirectory scratch(L"selection-read");
    testing::WriteFileBytes(scratch / L"answer.txt", Bytes(5000, 'a'));
    EXPECT_EQ(ReadSelectionFile(scratch / L"answer.txt").size(), 4096u);
    testing::WriteFileBytes(scratch / L"answer.txt", "short");
    EXPECT_EQ(ReadSelectionFile(scratch / L"answer.txt"), "short");
    EXPECT_EQ(ReadSelectionFile(scratch / L"missing.txt"), "");
}

TEST(SelectionFile, AnAnswerPassesWholeOrNotAtAll)
{
    testing::ScratchDirectory scratch(L"selection");
    const Text mod = scratch / L"Mods\\A\\Mod.kmodproject";
    const Text project = scratch / L"Work\\KorvaneSDK.uproject";
    testing::WriteFileBytes(mod, "{}");
    testing::WriteFileBytes(project, "{}");
    const Text folderProject = scratch / L"Folder\\KorvaneSDK.uproject";
    testing::MakeDirectories(folderProject);
    const Text upper = L"mod.0123456789ABCDEF0123456789abcdef";
    const Bytes valid = Answer(mod, project, kModId);

    struct Row { Bytes content; const wchar_t* selectedMod; bool valid; const char* what; };
    const Row rows[] = {
        {valid, L"", true, "plain"},
        {Answer(mod, project, upper), kModId, false, "the id must equal the selected one exactly"},
        {Answer(mod, project, upper), L"", true, "any id when none is selected"},
        {valid + "\nfourth", L"", false, "a fourth line"},
        {Answer(mod, project, L"mod.0123456789abcdef0123456789abcde"), L"", false, "an id of 35 units"},
        {Answer(mod, project, L"mod.0123456789abcdef0123456789abcdef0"), L"", false, "an id of 37 units"},
        {Answer(mod, project, L"Mod.0123456789abcdef0123456789abcdef"), L"", false, "the prefix is case-sensitive"},
        {Answer(project, mod, kModId), L"", false, "swapped files"},
        {Answer(scratch / L"Mods\\B\\Mod.kmodproject", project, kModId), L"", false, "a missing Mod project"},
        {Answer(mod, folderProject, kModId), L"", false, "a folder named like the project"},
        {valid + Bytes(4095 - valid.size(), '\n'), L"", true, "4095 bytes"},
        {valid + Bytes(4096 - valid.size(), '\n'), L"", false, "4096 bytes"},
        {Bytes(20, 'x'), L"", false, "20 bytes"},
    };
    // Which line fills which field needs no case of its own: each field is judged by its own rule,
    // so a mix-up fails the plain answer.
    for (const Row& row : rows) {
        EXPECT_EQ(JudgeSelectionFile(row.content, row.selectedMod).has_value(), row.valid) << row.what;
    }
}

}  // namespace
}  // namespace korvane
