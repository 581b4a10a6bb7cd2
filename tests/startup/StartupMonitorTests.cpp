// The monitor's phase history and cache state, the report drawn from them, and the two reports
// of -KorvaneStartupPreview run by the real launcher.
#include "TestSupport.h"

#include "foundation/Json.h"
#include "startup/StartupMonitor.h"
#include "startup/StartupReport.h"

#include <gtest/gtest.h>

#include <vector>

namespace korvane {
namespace {

TEST(StartupMonitor, PhaseHistoryKeepsDistinctSuccessiveLinesUpTo128)
{
    StartupMonitor monitor({.forcedDpi = 96});
    EXPECT_EQ(monitor.PhaseText(), L"Opening the editor…");
    EXPECT_TRUE(monitor.Snapshot().observedPhases.empty()) << "the construction line is no observed phase";
    for (const wchar_t* line : {L"Shaders…", L"Shaders…", L"Shaders…", L"A", L"Shaders…"}) {
        monitor.SetPhaseText(line);
    }
    EXPECT_EQ(monitor.Snapshot().observedPhases, (std::vector<Text>{L"Shaders…", L"A", L"Shaders…"}));

    // Writers on other threads while the window paints are the launch's own way; here, the limit.
    for (std::uint64_t index = 0; index < 200; ++index) {
        monitor.SetPhaseText(L"line " + DecimalText(index));
    }
    monitor.SetPhaseText(L"last");
    const StartupSnapshot full = monitor.Snapshot();
    EXPECT_EQ(full.observedPhases.size(), kMaxObservedPhases);
    EXPECT_EQ(full.observedPhases.front(), L"Shaders…");
    EXPECT_NE(full.observedPhases.back(), L"last") << "the first 128 are kept";
    EXPECT_EQ(full.phaseText, L"last") << "the line itself still changes";
}

TEST(StartupReport, KeysInOrderWithTheValuesOfThatMoment)
{
    testing::ScratchDirectory scratch(L"report");
    const Text path = scratch / L"startup.json";
    StartupMonitor monitor({.forcedDpi = 144, .noBackground = true});
    ASSERT_GE(monitor.Snapshot().paintCount, 1u) << "the window paints before construction returns";
    monitor.SetPhaseText(L"say \"hi\" \\ \x01\x1F\ttab\r\nend");
    // A cache state is worded in the monitor's language when it is set, and kept when the language changes.
    monitor.SetCacheState(-1, false);
    monitor.SetChinese(true);
    EXPECT_EQ(monitor.Snapshot().cacheStatusText, L"Checking the SDK cache state");
    monitor.SetCacheState(5, true);
    monitor.SetEditorCulture(L"en");
    monitor.SetChinese(false);
    monitor.Close();
    const StartupSnapshot closed = monitor.Snapshot();
    WriteStartupReport(monitor, path);
    const auto number = [](std::uint64_t value) { return TextToUtf8(DecimalText(value)); };
    EXPECT_EQ(testing::ReadFileBytes(path),
        "{\"firstPaintMs\":" + number(closed.firstPaintMs - 1) + ",\"assetLoadMs\":" + number(closed.assetLoadMs) +
            ",\"windowCreateMs\":" + number(closed.windowCreateMs) + ",\"firstDrawMs\":" + number(closed.firstDrawMs) +
            ",\"paintCount\":" + number(closed.paintCount) +
            ",\"dpi\":144,\"language\":\"en\",\"editorCulture\":\"en\",\"width\":1080,\"height\":555,"
            "\"backgroundLoaded\":false,\"logoLoaded\":true,\"phase\":\"say \\\"hi\\\" \\\\ \\ttab\\r\\nend\","
            "\"observedPhases\":[\"say \\\"hi\\\" \\\\ \\ttab\\r\\nend\"],"
            "\"cacheStatus\":\"SDK 缓存命中，已完整校验\",\"cacheHit\":true,\"cacheVerified\":true}");

    StartupSnapshot unpainted;
    unpainted.cacheHit = 0;
    EXPECT_EQ(ComposeStartupReport(unpainted).rfind("{\"firstPaintMs\":0,", 0), 0u);
    EXPECT_NE(ComposeStartupReport(unpainted).find(",\"cacheHit\":false,"), Bytes::npos);
}

TEST(StartupPreview, FirstReportHasAPaintAndTheLastTheValuesAsked)
{
    testing::ScratchDirectory scratch(L"preview");
    const Text report = scratch / L"startup.json";
    const auto number = [](const JsonValue& values, const wchar_t* key) {
        return std::wcstoull(FindJsonMember(values, key).text.c_str(), nullptr, 10);
    };
    testing::ChildProcess preview = testing::ChildProcess::Start(testing::BuiltLauncherPath(),
        {L"-KorvaneStartupPreview", L"-KorvaneStartupReport=" + report, L"-KorvaneStartupPreviewMs=2500",
            L"-KorvaneStartupPreviewDpi=144", L"-KorvaneStartupPreviewLanguage=ZH-hans",
            L"-KorvaneStartupPreviewNoBackground", L"-KorvaneStartupPhase=say \"hi\" \\ \x01\x1F\ttab"},
        {.currentDirectory = {}, .hidden = false});
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
    EXPECT_GE(number(first, L"firstPaintMs"), number(first, L"assetLoadMs")) << "no paint is counted before the assets";

    ASSERT_TRUE(preview.Wait(30000));
    EXPECT_EQ(preview.ExitCode(), 0u);
    const JsonValue last = ParseJson(testing::ReadFileBytes(report));
    EXPECT_GT(number(last, L"paintCount"), number(first, L"paintCount") + 10) << "about 16 paints a second";
    EXPECT_EQ(number(last, L"firstPaintMs"), number(first, L"firstPaintMs"));
    EXPECT_EQ(number(last, L"dpi"), 144u) << "the size follows the DPI, as the window tests show";
    EXPECT_EQ(FindJsonMember(last, L"language").text, L"zh-Hans");
    EXPECT_EQ(FindJsonMember(last, L"backgroundLoaded").text, L"false");
    EXPECT_EQ(FindJsonMember(last, L"logoLoaded").text, L"true") << "the icon from the launcher's own resources";
    EXPECT_EQ(FindJsonMember(last, L"phase").text, L"say \"hi\" \\ \ttab") << "other control characters are dropped";
    EXPECT_EQ(FindJsonMember(last, L"cacheHit").kind, JsonKind::Null);
}

}  // namespace
}  // namespace korvane
