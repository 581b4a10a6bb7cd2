// The pure pieces of the tool bridge: progress and timing files and the source listing.
#include "TestSupport.h"

#include "foundation/Text.h"
#include "tool/ModSource.h"
#include "tool/ProgressFile.h"

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
        {R"({"stage":"cacheVerify","cacheHit":false})", L"Verifying the local SDK cache… · Creating the SDK cache", 0},
        {R"({"stage":"materialize"})", L"Preparing local SDK files… · Creating the SDK cache", 0},  // state kept
        {R"({"stage":"materialize","cacheHit":"true"})", L"Preparing local SDK files… · SDK cache hit, verifying", 1},
        {R"({"stage":"materialize","cacheHit":1})", L"Preparing local SDK files… · SDK cache hit, verifying", 1},
        {R"({"stage":"sdkHash"})", L"Computing the SDK content revision… · SDK cache hit, verifying", 1},
        {R"(["sdkHash"])", L"Preparing the Mod… · SDK cache hit, verifying", 1},
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
    EXPECT_EQ(other.Take(R"({"cacheHit":false})", fresh), Text(L"正在准备 Mod… · 正在从 SDK 创建缓存"));
}

TEST(ProgressFile, TimingReportLastRowWithTheKeyWins)
{
    struct Row { const char* report; std::int32_t before, after; };
    const Row rows[] = {
        {R"({"stages":[{"cacheHit":true},{"name":"x"},{"cacheHit":false},{"cacheHit":"maybe"}]})", 1, 0},
        {R"({"stages":[{"cacheHit":false},{"cacheHit":"true"}],"cacheHit":false})", 0, 1},  // only rows count
        {"", 1, 1},
        {R"({"stages":[{"cacheHit":false}])", 1, 1},
        {R"({"stages":[{"cacheHit":false}],"stages":[]})", 1, 1},
        {R"({"stages":[{"durationMs":12}]})", -1, -1},
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
                          R"({"id":"mod.a","modProject":"C:\\a-second.kvmod"},)"
                          R"({"id":"mod.empty","modProject":""}]})";
    EXPECT_EQ(FindModSourceInListing(listing, L"mod.a"), L"C:\\a-first.kvmod");
    EXPECT_EQ(FindModSourceInListing(listing, L"mod.A"), L"C:\\a-upper.kvmod");
    EXPECT_EQ(FindModSourceInListing(listing, L"mod.b"), L"");
    EXPECT_EQ(FindModSourceInListing(listing, L"mod.empty"), L"");
    EXPECT_EQ(FindModSourceInListing(R"({"other":[]})", L"mod.a"), L"") << "no mods reads as an empty list";
    EXPECT_THROW(FindModSourceInListing("", L"mod.a"), std::runtime_error);
    EXPECT_THROW(FindModSourceInListing(R"({"mods":[})", L"mod.a"), std::runtime_error);
}

}  // namespace
}  // namespace korvane
