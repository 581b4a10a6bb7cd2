// -KorvaneStartupPreview run by the real launcher: its two reports.
#include "TestSupport.h"

#include "foundation/Json.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

const Text& Word(const JsonValue& report, const wchar_t* key)
{
    return FindJsonMember(report, key).text;
}

std::uint64_t Number(const JsonValue& report, const wchar_t* key)
{
    return std::wcstoull(Word(report, key).c_str(), nullptr, 10);
}

TEST(StartupPreview, FirstReportHasAPaintAndTheLastTheValuesAsked)
{
    testing::ScratchDirectory scratch(L"preview");
    const Text report = scratch / L"startup.json";
    testing::ProcessOptions options;
    options.hidden = false;
    testing::ChildProcess preview = testing::ChildProcess::Start(testing::BuiltLauncherPath(),
        {L"-KorvaneStartupPreview", L"-KorvaneStartupReport=" + report, L"-KorvaneStartupPreviewMs=2500",
            L"-KorvaneStartupPreviewDpi=144", L"-KorvaneStartupPreviewLanguage=ZH-hans",
            L"-KorvaneStartupPreviewNoBackground", L"-KorvaneStartupPhase=say \"hi\" \\ \x01\x1F\ttab"},
        options);
    ASSERT_TRUE(preview.IsStarted());
    // The first report, once whole: nothing signals it to another process, and a reader may
    // come between the file's creation and the write.
    Bytes firstBytes;
    for (int round = 0; round < 1000 && (firstBytes.empty() || firstBytes.back() != '}'); ++round) {
        Sleep(10);
        firstBytes = testing::ReadFileBytes(report);
    }
    // The report's form is checked where it is composed; here, what the preview put into it.
    const JsonValue first = ParseJson(firstBytes);
    EXPECT_GE(Number(first, L"paintCount"), 1u) << "the window paints before construction returns";
    EXPECT_GE(Number(first, L"firstPaintMs"), Number(first, L"assetLoadMs"));

    ASSERT_TRUE(preview.Wait(30000));
    EXPECT_EQ(preview.ExitCode(), 0u);
    const JsonValue last = ParseJson(testing::ReadFileBytes(report));
    EXPECT_GT(Number(last, L"paintCount"), Number(first, L"paintCount") + 10) << "about 16 paints a second";
    EXPECT_EQ(Number(last, L"firstPaintMs"), Number(first, L"firstPaintMs"));
    EXPECT_EQ(Number(last, L"dpi"), 144u) << "the size follows the DPI, as the window tests show";
    EXPECT_EQ(Word(last, L"language"), L"zh-Hans");
    EXPECT_EQ(Word(last, L"backgroundLoaded"), L"false");
    EXPECT_EQ(Word(last, L"logoLoaded"), L"true");
    EXPECT_EQ(Word(last, L"phase"), L"say \"hi\" \\ \ttab") << "other control characters are dropped";
    EXPECT_EQ(FindJsonMember(last, L"observedPhases").items.size(), 1u);
    EXPECT_EQ(FindJsonMember(last, L"cacheHit").kind, JsonKind::Null);
}

}  // namespace
}  // namespace korvane
