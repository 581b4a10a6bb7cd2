// The monitor's state and setters, and the report drawn from it.
#include "TestSupport.h"

#include "startup/StartupMonitor.h"
#include "startup/StartupReport.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace korvane {
namespace {

using testing::ScratchDirectory;

TEST(StartupMonitor, PhaseHistoryKeepsDistinctSuccessiveLinesUpTo128)
{
    std::atomic<bool> cancel{false};
    StartupMonitor monitor(96, true, false, &cancel);
    EXPECT_EQ(monitor.PhaseText(), L"Opening the editor…");
    EXPECT_TRUE(monitor.Snapshot().observedPhases.empty()) << "the construction line is no observed phase";

    // A run of equal shader lines keeps one entry.
    monitor.SetPhaseText(L"Preparing rendering and shaders…");
    for (int index = 0; index < 3000; ++index) {
        monitor.SetPhaseText(L"Preparing rendering and shaders…");
    }
    monitor.SetPhaseText(L"A");
    monitor.SetPhaseText(L"Preparing rendering and shaders…");
    EXPECT_EQ(monitor.Snapshot().observedPhases,
        (std::vector<Text>{L"Preparing rendering and shaders…", L"A", L"Preparing rendering and shaders…"}));

    for (int index = 0; index < 200; ++index) {
        monitor.SetPhaseText(L"line " + DecimalText(static_cast<std::uint64_t>(index)));
    }
    const StartupSnapshot full = monitor.Snapshot();
    EXPECT_EQ(full.observedPhases.size(), kMaxObservedPhases);
    EXPECT_EQ(full.observedPhases.back(), L"line 124");
    EXPECT_EQ(full.phaseText, L"line 199") << "the line itself still changes";
    EXPECT_FALSE(cancel.load());
}

TEST(StartupMonitor, CacheStateAndCultureFollowTheMonitorsOwnLanguage)
{
    StartupMonitor monitor(96, true, false, nullptr);
    EXPECT_EQ(monitor.Snapshot().cacheHit, -1);
    monitor.SetCacheState(-1, false);
    EXPECT_EQ(monitor.Snapshot().cacheStatusText, L"Checking the SDK cache state");

    monitor.SetEditorCulture(L"zh-Hans");
    EXPECT_TRUE(monitor.IsChinese());
    EXPECT_EQ(monitor.Snapshot().cacheStatusText, L"Checking the SDK cache state") << "published texts keep their language";
    monitor.SetCacheState(0, true);
    StartupSnapshot snapshot = monitor.Snapshot();
    EXPECT_EQ(snapshot.cacheStatusText, L"SDK 缓存已创建并校验");
    EXPECT_EQ(snapshot.cacheHit, 0);
    EXPECT_TRUE(snapshot.cacheVerified);
    EXPECT_EQ(snapshot.editorCulture, L"zh-Hans");

    monitor.SetEditorCulture(L"zh-hans");
    EXPECT_FALSE(monitor.IsChinese()) << "exactly \"zh-Hans\"";
    monitor.SetCacheState(3, false);
    EXPECT_EQ(monitor.Snapshot().cacheStatusText, L"SDK cache hit, verifying");
}

TEST(StartupMonitor, SettersFromManyThreadsWhileTheWindowPaints)
{
    StartupMonitor monitor(96, false, false, nullptr);
    ASSERT_NE(monitor.WindowHandle(), nullptr);
    std::vector<std::thread> writers;
    for (int thread = 0; thread < 4; ++thread) {
        writers.emplace_back([&monitor, thread] {
            for (int index = 0; index < 500; ++index) {
                monitor.SetPhaseText(L"writer " + DecimalText(static_cast<std::uint64_t>(thread)) + L" line " +
                    DecimalText(static_cast<std::uint64_t>(index)));
                monitor.SetCacheState(index % 3 - 1, index % 2 == 0);
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    EXPECT_EQ(monitor.Snapshot().observedPhases.size(), kMaxObservedPhases);
    monitor.Close();
    EXPECT_EQ(monitor.WindowHandle(), nullptr);
    monitor.Close();  // a second close does nothing
}

TEST(StartupReport, KeysInOrderWithTheValuesOfThatMoment)
{
    ScratchDirectory scratch(L"report");
    const Text path = scratch / L"startup.json";
    StartupMonitor monitor(144, true, true, nullptr);
    const StartupSnapshot first = monitor.Snapshot();
    ASSERT_GE(first.paintCount, 1u) << "the window paints before construction returns";
    ASSERT_GT(first.firstPaintMs, 0u);

    monitor.SetPhaseText(L"say \"hi\" \\ \x01\x1F\ttab\r\nend");
    monitor.SetCacheState(5, true);
    monitor.SetEditorCulture(L"en");
    monitor.Close();
    const StartupSnapshot closed = monitor.Snapshot();
    WriteStartupReport(monitor, path);
    const Bytes expected = "{\"firstPaintMs\":" + TextToUtf8(DecimalText(closed.firstPaintMs - 1)) +
        ",\"assetLoadMs\":" + TextToUtf8(DecimalText(closed.assetLoadMs)) +
        ",\"windowCreateMs\":" + TextToUtf8(DecimalText(closed.windowCreateMs)) +
        ",\"firstDrawMs\":" + TextToUtf8(DecimalText(closed.firstDrawMs)) +
        ",\"paintCount\":" + TextToUtf8(DecimalText(closed.paintCount)) +
        ",\"dpi\":144,\"language\":\"en\",\"editorCulture\":\"en\",\"width\":1080,\"height\":555,"
        "\"backgroundLoaded\":false,\"logoLoaded\":true,"
        "\"phase\":\"say \\\"hi\\\" \\\\ \\ttab\\r\\nend\","
        "\"observedPhases\":[\"say \\\"hi\\\" \\\\ \\ttab\\r\\nend\"],"
        "\"cacheStatus\":\"SDK 缓存命中，已完整校验\",\"cacheHit\":true,\"cacheVerified\":true}";
    EXPECT_EQ(testing::ReadFileBytes(path), expected);

    // A report path in a folder that does not exist gives no file and no error; an empty
    // path gives nothing.
    WriteStartupReport(monitor, scratch / L"missing\\startup.json");
    EXPECT_FALSE(testing::FileExists(scratch / L"missing\\startup.json"));
    WriteStartupReport(monitor, L"");
}

TEST(StartupReport, NothingPaintedAndNoCacheState)
{
    StartupSnapshot snapshot;
    snapshot.phaseText = L"Opening the editor…";
    EXPECT_EQ(ComposeStartupReport(snapshot),
        "{\"firstPaintMs\":0,\"assetLoadMs\":0,\"windowCreateMs\":0,\"firstDrawMs\":0,\"paintCount\":0,\"dpi\":96,"
        "\"language\":\"en\",\"editorCulture\":\"\",\"width\":720,\"height\":370,\"backgroundLoaded\":false,"
        "\"logoLoaded\":false,\"phase\":\"Opening the editor…\",\"observedPhases\":[],\"cacheStatus\":\"\","
        "\"cacheHit\":null,\"cacheVerified\":false}");
    snapshot.cacheHit = 0;
    snapshot.dpi = 192;
    snapshot.chinese = true;
    snapshot.observedPhases = {L"a", L"b"};
    const Bytes report = ComposeStartupReport(snapshot);
    EXPECT_NE(report.find("\"dpi\":192,\"language\":\"zh-Hans\""), Bytes::npos);
    EXPECT_NE(report.find("\"width\":1440,\"height\":740,"), Bytes::npos);
    EXPECT_NE(report.find("\"observedPhases\":[\"a\",\"b\"],"), Bytes::npos);
    EXPECT_NE(report.find("\"cacheHit\":false,"), Bytes::npos);
}

}  // namespace
}  // namespace korvane
