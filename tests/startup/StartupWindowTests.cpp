// The start-up card and window as they stand on the screen: geometry and colours at two DPIs,
// one in each language, where long texts stop, the moving bar, DPI changes, and every way to
// cancel or close the window. Then the monitor's phase history and cache state, the report
// drawn from them, and the two reports of -KorvaneStartupPreview run by the real launcher.
#include "MessageBoxes.h"
#include "ScreenPicture.h"
#include "TestSupport.h"

#include "foundation/GdiSelection.h"
#include "foundation/Json.h"
#include "startup/StartupMonitor.h"
#include "startup/StartupPaint.h"
#include "startup/StartupReport.h"

#include <gtest/gtest.h>

#include <vector>

namespace korvane {
namespace {

constexpr COLORREF kBase = RGB(7, 17, 31);
constexpr COLORREF kDivider = RGB(28, 58, 73);
constexpr COLORREF kTrack = RGB(20, 46, 60);
constexpr COLORREF kButtonFill = RGB(22, 39, 55);

using Picture = testing::ScreenPicture;

// The test's own scaling, for the places and sizes it checks; the areas it only looks into are the
// product's ScaledRect.
int Scale(int value, std::uint32_t dpi)
{
    return MulDiv(value, static_cast<int>(dpi), 96);
}

bool IsBar(COLORREF colour)
{
    return GetRValue(colour) == 34 && GetGValue(colour) >= 211 && GetGValue(colour) <= 249 &&
        GetBValue(colour) >= 192 && GetBValue(colour) <= 238;
}

bool IsBright(COLORREF colour)
{
    return GetRValue(colour) > 120 && GetGValue(colour) > 150 && GetBValue(colour) > 160;
}

void CheckCard(std::uint32_t dpi, bool chinese)
{
    SCOPED_TRACE(::testing::Message() << "dpi " << dpi << (chinese ? " zh" : " en"));
    std::atomic<bool> cancel{false};
    StartupMonitor monitor({.forcedDpi = dpi, .chinese = chinese, .cancelFlag = &cancel});
    const HWND window = monitor.WindowHandle();
    ASSERT_NE(window, nullptr);
    // A phase longer than its rectangle, as a preview may be given. (No cache state is long enough to
    // reach the Cancel button, so the detail line's own limit is never met.)
    Text phase;
    for (int word = 0; word < 60; ++word) {
        phase += L"Preparing ";
    }
    monitor.SetPhaseText(phase);
    monitor.SetCacheState(1, true);
    EXPECT_TRUE(monitor.Snapshot().backgroundDrawn) << "the art from the resources";

    RECT bounds{};
    RECT work{};
    GetWindowRect(window, &bounds);
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    EXPECT_EQ(bounds.left, work.left + (work.right - work.left - Scale(720, dpi)) / 2) << "centred on the work area";
    EXPECT_EQ(bounds.top, work.top + (work.bottom - work.top - Scale(370, dpi)) / 2);
    // Its 60 ms timer keeps it painting: the phase set above shows soon.
    const RECT phaseLine = ScaledRect(42, 267, 678, 306, dpi);
    const Picture image =
        Picture::OfWindow(window, [&](const Picture& shown) { return shown.Count(phaseLine, IsBright) > 100; });
    ASSERT_EQ(image.width, Scale(720, dpi));
    ASSERT_EQ(image.height, Scale(370, dpi));

    // Solid elements lie over the art, so their colours are exact.
    for (const int x : {42, 300, 677}) {
        EXPECT_EQ(image.At(Scale(x, dpi), Scale(246, dpi)), kDivider) << "divider at " << x;
    }
    EXPECT_NE(image.At(Scale(300, dpi), Scale(248, dpi)), kDivider);
    const RECT button{Scale(600, dpi), Scale(309, dpi), Scale(678, dpi), Scale(339, dpi)};
    const int buttonMiddle = (button.top + button.bottom) / 2;
    EXPECT_EQ(image.At(button.left, button.top), RGB(11, 21, 36)) << "corners filled before the rounding";
    EXPECT_EQ(image.At(button.left, buttonMiddle), RGB(35, 56, 73)) << "a 1-pixel border at every DPI";
    EXPECT_EQ(image.At(button.left + 1, buttonMiddle), kButtonFill);
    EXPECT_EQ(image.At(button.left + 2, button.top + 2), kButtonFill) << "an 8-pixel corner at every DPI";
    const RECT label{button.left + 8, button.top + 4, button.right - 8, button.bottom - 4};
    EXPECT_GT(image.Count(label, [](COLORREF colour) { return colour != kButtonFill; }), 30) << "the Cancel text";

    // Of the track's 636 units, 96 carry the bar: one run, which may wrap.
    const auto track = [&](int unit) { return image.At(Scale(42 + unit % 636, dpi), Scale(351, dpi)); };
    int barColumns = 0;
    int edges = 0;
    for (int unit = 0; unit < 636; ++unit) {
        EXPECT_TRUE(IsBar(track(unit)) || track(unit) == kTrack) << "unit " << unit;
        barColumns += IsBar(track(unit)) ? 1 : 0;
        edges += IsBar(track(unit)) != IsBar(track(unit + 1)) ? 1 : 0;
    }
    EXPECT_EQ(barColumns, 96);
    EXPECT_EQ(edges, 2);
    EXPECT_NE(image.At(Scale(41, dpi), Scale(351, dpi)), kTrack) << "nothing left of the track";
    EXPECT_NE(image.At(Scale(300, dpi), Scale(353, dpi)), kTrack) << "the track is 3 units high";

    const COLORREF logo = image.At(Scale(126, dpi), Scale(176, dpi));
    EXPECT_GT(GetRValue(logo) + GetGValue(logo) + GetBValue(logo), 60) << "the logo";
    EXPECT_GT(image.Count(ScaledRect(230, 124, 684, 178, dpi), IsBright), 300) << "the title";
    EXPECT_GT(image.Count(ScaledRect(233, 185, 684, 218, dpi), IsBright), 60) << "the subtitle";
    EXPECT_GT(image.Count(phaseLine, IsBright), 100) << "the phase line";
    EXPECT_EQ(image.Count(ScaledRect(42, 306, 678, 309, dpi), IsBright), 0) << "the rest of a long phase is cut";
    EXPECT_EQ(image.Count(ScaledRect(42, 218, 678, 245, dpi), IsBright), 0) << "nothing below the subtitle";

    // Only a left click inside the button cancels, at the button's place for the DPI; the window then
    // says so in its language.
    SendMessageW(window, WM_RBUTTONUP, 0, MAKELPARAM(button.left + 4, button.top + 4));
    SendMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(button.left - 1, button.top + 4));
    SendMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(button.left + 4, button.bottom));
    SendMessageW(window, WM_KEYDOWN, VK_RETURN, 0);
    EXPECT_FALSE(cancel.load()) << "right button, beside the button, another key";
    SendMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(button.right - 1, button.bottom - 1));
    EXPECT_TRUE(cancel.exchange(false));
    EXPECT_EQ(monitor.PhaseText(), chinese ? L"正在取消…" : L"Cancelling…");
    // Escape and a close from the task bar cancel too; the window stays until its owner closes it,
    // which is no cancel.
    SendMessageW(window, WM_KEYDOWN, VK_ESCAPE, 0);
    EXPECT_TRUE(cancel.exchange(false)) << "Escape";
    SendMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(cancel.exchange(false));
    EXPECT_TRUE(IsWindowVisible(window)) << "a close while a cancel is possible leaves the window";
    monitor.Close();
    EXPECT_FALSE(cancel.load()) << "the owner's close is no cancel";
    EXPECT_FALSE(IsWindow(window));
    monitor.Close();  // a second close does nothing
}

// A DPI scaling fault shows at any DPI but 96; a text fault in one Chinese run.
TEST(StartupWindow, CardMatchesItsGeometryAtTwoDpisInBothLanguages)
{
    CheckCard(96, false);
    CheckCard(144, true);
}

// Windows without a cancel flag, as the preview shows: no button, and a close ends the window.
TEST(StartupWindow, ForcedDpiIgnoresDpiChangesAndAFollowingWindowResizes)
{
    for (const std::uint32_t forced : {144u, 0u}) {
        StartupMonitor monitor({.forcedDpi = forced, .noBackground = true});
        const HWND window = monitor.WindowHandle();
        ASSERT_NE(window, nullptr);
        const RECT button = CancelButtonRect(monitor.Snapshot().dpi);
        const Picture image = Picture::OfWindow(window, [](const Picture& shown) { return shown.At(5, 5) == kBase; });
        EXPECT_EQ(image.Count(button, [](COLORREF colour) { return colour != kBase; }), 0) << "no button";
        RECT suggested{10, 20, 10 + 1440, 20 + 740};
        SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(192, 192), reinterpret_cast<LPARAM>(&suggested));
        RECT bounds{};
        GetWindowRect(window, &bounds);
        EXPECT_EQ(bounds.right - bounds.left, forced == 0 ? 1440 : 1080);
        EXPECT_EQ(bounds.bottom - bounds.top, forced == 0 ? 740 : 555);
        EXPECT_EQ(monitor.Snapshot().dpi, forced == 0 ? 192u : 144u);
        SendMessageW(window, WM_CLOSE, 0, 0);
        EXPECT_FALSE(IsWindow(window));
    }
}

TEST(StartupWindow, BarWrapsAndTheDetailLineCountsSeconds)
{
    EXPECT_EQ(MovingBarColumn(2399, 0).x, 635) << "the tail at the right end";
    EXPECT_EQ(MovingBarColumn(2399, 95).x, 94) << "the head wrapped to the left";
    // Whole seconds (with a status in the user-text table); no separator without one.
    EXPECT_EQ(StartupDetailText(999, L"", false), L"Waited 0 s");
}

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
    ASSERT_TRUE(testing::WaitUntil(preview, [&] {
        firstBytes = testing::ReadFileBytes(report);
        return !firstBytes.empty() && firstBytes.back() == '}';
    }));
    // The report's form is checked where it is composed; here, what the preview put into it.
    const JsonValue first = ParseJson(firstBytes);
    EXPECT_GE(number(first, L"paintCount"), 1u) << "the window paints before the first report";
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

// With the picker preview asked for too, only the start-up preview runs (the picker's, without a
// time of its own, would stay open). A report that cannot be written is no error.
TEST(StartupPreview, RunsAloneAndEndsWellWhereverItsReportGoes)
{
    testing::ScratchDirectory scratch(L"preview-alone");
    for (const Text& report : {scratch / L"startup.json", scratch / L"missing\\startup.json"}) {
        const testing::RunEnd end = testing::WaitAnsweringBox(
            testing::ChildProcess::Start(testing::BuiltLauncherPath(),
                {L"-KorvanePickerPreview", L"-KorvaneStartupPreview", L"-KorvaneStartupReport=" + report,
                    L"-KorvaneStartupPreviewMs=250"},
                {.currentDirectory = {}, .hidden = false}),
            30000);
        EXPECT_EQ(end.exitCode, 0u) << TextToUtf8(report);
        EXPECT_FALSE(end.box.has_value()) << TextToUtf8(report);
    }
    EXPECT_FALSE(FindJsonMember(ParseJson(testing::ReadFileBytes(scratch / L"startup.json")), L"phase").text.empty());
    EXPECT_FALSE(testing::FileExists(scratch / L"missing"));
}

}  // namespace
}  // namespace korvane
