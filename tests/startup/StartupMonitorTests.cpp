// The monitor's phase history and cache state, and the report drawn from them.
#include "TestSupport.h"

#include "startup/StartupMonitor.h"
#include "startup/StartupReport.h"

#include <gtest/gtest.h>

#include <thread>
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

    // Writers on several threads while the window paints.
    std::vector<std::thread> writers;
    for (int thread = 0; thread < 4; ++thread) {
        writers.emplace_back([&monitor, thread] {
            for (int index = 0; index < 200; ++index) {
                monitor.SetPhaseText(L"line " + DecimalText(static_cast<std::uint64_t>(thread * 1000 + index)));
                monitor.SetCacheState(index % 3 - 1, index % 2 == 0);
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
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
    WriteStartupReport(monitor, scratch / L"missing\\startup.json");
    EXPECT_FALSE(testing::FileExists(scratch / L"missing\\startup.json")) << "a missing folder gives no file";

    StartupSnapshot unpainted;
    unpainted.cacheHit = 0;
    EXPECT_EQ(ComposeStartupReport(unpainted).rfind("{\"firstPaintMs\":0,", 0), 0u);
    EXPECT_NE(ComposeStartupReport(unpainted).find(",\"cacheHit\":false,"), Bytes::npos);
}

}  // namespace
}  // namespace korvane
