// The start-up window as it stands on the screen: its geometry and colours at each DPI and
// in both languages, the moving bar, DPI changes, and every way to cancel.
#include "TestSupport.h"
#include "WindowCapture.h"

#include "foundation/Paths.h"
#include "startup/StartupMonitor.h"
#include "startup/StartupPaint.h"
#include "startup/StartupWindow.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace korvane {
namespace {

using testing::Colour;
using testing::ScreenImage;

constexpr Colour kBase{7, 17, 31};
constexpr Colour kDivider{28, 58, 73};
constexpr Colour kTrack{20, 46, 60};
constexpr Colour kButtonFill{22, 39, 55};
constexpr Colour kButtonBorder{35, 56, 73};
constexpr Colour kButtonCorner{11, 21, 36};

int Scale(int value, std::uint32_t dpi)
{
    return MulDiv(value, static_cast<int>(dpi), 96);
}

// Pixels in a rectangle (given at 96 DPI) that differ from `colour`.
int CountOther(const ScreenImage& image, std::uint32_t dpi, RECT area, Colour colour)
{
    int count = 0;
    for (int y = Scale(area.top, dpi); y < Scale(area.bottom, dpi); ++y) {
        for (int x = Scale(area.left, dpi); x < Scale(area.right, dpi); ++x) {
            count += image.At(x, y) == colour ? 0 : 1;
        }
    }
    return count;
}

// Returns once the window has finished `count` more paints; its 60 ms timer keeps it painting.
void WaitForPaints(const StartupMonitor& monitor, std::uint32_t count)
{
    const std::uint32_t target = monitor.Snapshot().paintCount + count;
    const ULONGLONG deadline = GetTickCount64() + 10000;
    while (monitor.Snapshot().paintCount < target && GetTickCount64() < deadline) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
    }
    ASSERT_GE(monitor.Snapshot().paintCount, target);
}

// Where the screenshots for the documentation go, when the run is asked for them.
Text ScreenshotFolder()
{
    const wchar_t* folder = _wgetenv(L"KORVANE_SCREENSHOT_DIR");
    return folder == nullptr ? Text() : Text(folder);
}

void CheckCard(std::uint32_t dpi, bool chinese)
{
    SCOPED_TRACE(::testing::Message() << "dpi " << dpi << (chinese ? " zh" : " en"));
    std::atomic<bool> cancel{false};
    StartupMonitor monitor(dpi, false, chinese, &cancel);
    const HWND window = monitor.WindowHandle();
    ASSERT_NE(window, nullptr);
    monitor.SetPhaseText(chinese ? L"正在初始化编辑器引擎…" : L"Initializing the Editor engine…");
    monitor.SetCacheState(1, true);
    WaitForPaints(monitor, 2);

    RECT bounds{};
    GetWindowRect(window, &bounds);
    EXPECT_EQ(bounds.right - bounds.left, Scale(720, dpi));
    EXPECT_EQ(bounds.bottom - bounds.top, Scale(370, dpi));
    RECT work{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    EXPECT_EQ(bounds.left, work.left + (work.right - work.left - Scale(720, dpi)) / 2) << "centred on the work area";
    EXPECT_EQ(bounds.top, work.top + (work.bottom - work.top - Scale(370, dpi)) / 2);
    EXPECT_EQ(monitor.Snapshot().dpi, dpi);

    const ScreenImage image = ScreenImage::OfWindowOnceShown(
        window, [dpi](const ScreenImage& shown) { return shown.At(Scale(300, dpi), Scale(246, dpi)) == kDivider; });
    ASSERT_EQ(image.Width(), Scale(720, dpi));
    // Solid elements lie over the art, so their colours are exact.
    for (const int x : {42, 300, 677}) {
        EXPECT_EQ(image.At(Scale(x, dpi), Scale(246, dpi)), kDivider) << "divider at " << x;
    }
    EXPECT_NE(image.At(Scale(300, dpi), Scale(248, dpi)), kDivider);
    const RECT button = CancelButtonRect(dpi);
    const int buttonMiddle = (button.top + button.bottom) / 2;
    EXPECT_EQ(image.At(button.left, button.top), kButtonCorner) << "corners filled before the rounding";
    EXPECT_EQ(image.At(button.right - 1, button.bottom - 1), kButtonCorner);
    EXPECT_EQ(image.At(button.left, buttonMiddle), kButtonBorder) << "a 1-pixel border at every DPI";
    EXPECT_EQ(image.At(button.left + 1, buttonMiddle), kButtonFill);
    EXPECT_EQ(image.At(button.left + 2, button.top + 2), kButtonFill) << "an 8-pixel corner at every DPI";
    EXPECT_GT(CountOther(image, dpi, RECT{600, 309, 678, 339}, kButtonFill), 60) << "the Cancel text";

    // The track and the moving bar: of the 636 units of the track, 96 carry the bar, one
    // contiguous run that may wrap, coloured from tail to head.
    int barColumns = 0;
    int runs = 0;
    bool previousBar = false;
    for (int unit = 0; unit < 636; ++unit) {
        const Colour colour = image.At(Scale(42 + unit, dpi), Scale(351, dpi));
        const bool bar = colour.red == 34 && colour.green >= 211 && colour.green <= 249 && colour.blue >= 192 &&
            colour.blue <= 238;
        EXPECT_TRUE(bar || colour == kTrack) << "unit " << unit;
        barColumns += bar ? 1 : 0;
        runs += bar && !previousBar ? 1 : 0;
        previousBar = bar;
    }
    EXPECT_EQ(barColumns, 96);
    const bool wrapped = previousBar && image.At(Scale(42, dpi), Scale(351, dpi)).red == 34;
    EXPECT_EQ(runs - (wrapped ? 1 : 0), 1);
    EXPECT_NE(image.At(Scale(41, dpi), Scale(351, dpi)), kTrack) << "nothing left of the track";
    EXPECT_NE(image.At(Scale(300, dpi), Scale(353, dpi)), kTrack) << "the track is 3 units high";

    // Logo, title, subtitle, phase and detail lines are drawn where the table puts them.
    const Colour artAtLogo = image.At(Scale(126, dpi), Scale(176, dpi));
    EXPECT_GT(artAtLogo.red + artAtLogo.green + artAtLogo.blue, 60) << "the logo";
    const auto brightPixels = [&](RECT area) {
        int count = 0;
        for (int y = Scale(area.top, dpi); y < Scale(area.bottom, dpi); ++y) {
            for (int x = Scale(area.left, dpi); x < Scale(area.right, dpi); ++x) {
                const Colour colour = image.At(x, y);
                count += colour.red > 120 && colour.green > 150 && colour.blue > 160 ? 1 : 0;
            }
        }
        return count;
    };
    EXPECT_GT(brightPixels(RECT{230, 124, 684, 178}), 300) << "the title";
    EXPECT_GT(brightPixels(RECT{233, 185, 684, 218}), 60) << "the subtitle";
    EXPECT_GT(brightPixels(RECT{42, 267, 678, 306}), 100) << "the phase line";
    EXPECT_EQ(brightPixels(RECT{42, 218, 678, 245}), 0) << "nothing between the subtitle and the divider";

    if (const Text folder = ScreenshotFolder(); !folder.empty()) {
        const Text name = L"startup-window-" + DecimalText(dpi) + (chinese ? L"-zh.png" : L"-en.png");
        EXPECT_TRUE(image.SavePng(JoinPath(folder, name)));
    }
}

TEST(StartupWindow, CardMatchesItsGeometryAtEachDpiInBothLanguages)
{
    for (const std::uint32_t dpi : {96u, 144u, 192u}) {
        CheckCard(dpi, false);
        CheckCard(dpi, true);
    }
}

TEST(StartupWindow, WithoutArtTheBaseFillShowsAndThePreviewHasNoButton)
{
    StartupMonitor monitor(96, true, false, nullptr);
    ASSERT_NE(monitor.WindowHandle(), nullptr);
    const ScreenImage image = ScreenImage::OfWindowOnceShown(
        monitor.WindowHandle(), [](const ScreenImage& shown) { return shown.At(5, 5) == kBase; });
    EXPECT_EQ(image.At(5, 5), kBase);
    EXPECT_EQ(image.At(715, 365), kBase);
    EXPECT_EQ(image.At(40, 100), kBase);
    EXPECT_EQ(CountOther(image, 96, RECT{600, 309, 678, 339}, kBase), 0) << "no Cancel button without a cancel flag";
    EXPECT_FALSE(monitor.Snapshot().backgroundDrawn);
    EXPECT_TRUE(monitor.Snapshot().logoLoaded);
}

TEST(StartupWindow, ForcedDpiIgnoresDpiChangesAndAFollowingWindowResizes)
{
    {
        StartupMonitor monitor(144, true, false, nullptr);
        const HWND window = monitor.WindowHandle();
        ASSERT_NE(window, nullptr);
        RECT suggested{10, 20, 10 + 1440, 20 + 740};
        SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(192, 192), reinterpret_cast<LPARAM>(&suggested));
        RECT bounds{};
        GetWindowRect(window, &bounds);
        EXPECT_EQ(bounds.right - bounds.left, 1080);
        EXPECT_EQ(bounds.bottom - bounds.top, 555);
        EXPECT_EQ(monitor.Snapshot().dpi, 144u);
    }
    {
        StartupMonitor monitor(0, true, false, nullptr);
        const HWND window = monitor.WindowHandle();
        ASSERT_NE(window, nullptr);
        EXPECT_EQ(monitor.Snapshot().dpi, GetDpiForSystem());
        RECT suggested{10, 20, 10 + 1440, 20 + 740};
        SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(192, 192), reinterpret_cast<LPARAM>(&suggested));
        RECT bounds{};
        GetWindowRect(window, &bounds);
        EXPECT_EQ(bounds.left, 10);
        EXPECT_EQ(bounds.top, 20);
        EXPECT_EQ(bounds.right - bounds.left, 1440);
        EXPECT_EQ(bounds.bottom - bounds.top, 740);
        EXPECT_EQ(monitor.Snapshot().dpi, 192u);
        // The Cancel rectangle follows the new DPI too: this monitor has no flag, so only the
        // size is checked here.
    }
}

TEST(StartupWindow, ClickEscapeAndCloseCancelWhileACancelIsPossible)
{
    const auto phaseOf = [](const StartupMonitor& monitor) { return monitor.PhaseText(); };
    {
        std::atomic<bool> cancel{false};
        StartupMonitor monitor(144, true, false, &cancel);
        const HWND window = monitor.WindowHandle();
        ASSERT_NE(window, nullptr);
        const RECT button = CancelButtonRect(144);
        SendMessageW(window, WM_RBUTTONUP, 0, MAKELPARAM(button.left + 4, button.top + 4));
        SendMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(button.left - 1, button.top + 4));
        SendMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(button.left + 4, button.bottom));
        SendMessageW(window, WM_KEYDOWN, VK_RETURN, 0);
        EXPECT_FALSE(cancel.load()) << "right button, beside the button, another key";
        EXPECT_EQ(phaseOf(monitor), L"Opening the editor…");
        SendMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(button.right - 1, button.bottom - 1));
        EXPECT_TRUE(cancel.load());
        EXPECT_EQ(phaseOf(monitor), L"Cancelling…");
        // The button can be used again, with no further effect.
        SendMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(button.left, button.top));
        EXPECT_EQ(monitor.Snapshot().observedPhases, std::vector<Text>{L"Cancelling…"});
    }
    {
        std::atomic<bool> cancel{false};
        StartupMonitor monitor(96, true, true, &cancel);
        ASSERT_NE(monitor.WindowHandle(), nullptr);
        SendMessageW(monitor.WindowHandle(), WM_KEYDOWN, VK_ESCAPE, 0);
        EXPECT_TRUE(cancel.load());
        EXPECT_EQ(phaseOf(monitor), L"正在取消…");
    }
    {
        std::atomic<bool> cancel{false};
        StartupMonitor monitor(96, true, false, &cancel);
        const HWND window = monitor.WindowHandle();
        ASSERT_NE(window, nullptr);
        SendMessageW(window, WM_CLOSE, 0, 0);
        EXPECT_TRUE(cancel.load());
        EXPECT_TRUE(IsWindow(window)) << "a close while a cancel is possible leaves the window";
        EXPECT_TRUE(IsWindowVisible(window));
        EXPECT_EQ(phaseOf(monitor), L"Cancelling…");
    }
}

TEST(StartupWindow, RealMouseClickOnTheButtonCancels)
{
    std::atomic<bool> cancel{false};
    StartupMonitor monitor(96, true, false, &cancel);
    const HWND window = monitor.WindowHandle();
    ASSERT_NE(window, nullptr);
    RECT bounds{};
    GetWindowRect(window, &bounds);
    const RECT button = CancelButtonRect(96);
    const POINT target{bounds.left + (button.left + button.right) / 2, bounds.top + (button.top + button.bottom) / 2};
    INPUT inputs[3] = {};
    for (INPUT& input : inputs) {
        input.type = INPUT_MOUSE;
        input.mi.dx = MulDiv(target.x, 65535, GetSystemMetrics(SM_CXSCREEN) - 1);
        input.mi.dy = MulDiv(target.y, 65535, GetSystemMetrics(SM_CYSCREEN) - 1);
    }
    inputs[0].mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
    inputs[1].mi.dwFlags = MOUSEEVENTF_LEFTDOWN | MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
    inputs[2].mi.dwFlags = MOUSEEVENTF_LEFTUP | MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
    ASSERT_EQ(SendInput(3, inputs, sizeof(INPUT)), 3u);
    // The click reaches the window thread through its queue; a message sent behind it
    // returns once the queue has been worked through.
    for (int round = 0; round < 50 && !cancel.load(); ++round) {
        SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_BLOCK, 1000, nullptr);
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
    }
    POINT cursor{};
    GetCursorPos(&cursor);
    EXPECT_TRUE(cancel.load()) << "cursor " << cursor.x << "," << cursor.y << " target " << target.x << "," << target.y
                               << " window there " << (WindowFromPoint(target) == window);
}

TEST(StartupWindow, OwnerCloseEndsTheWindowWithoutCancelling)
{
    std::atomic<bool> cancel{false};
    StartupMonitor monitor(96, true, false, &cancel);
    const HWND window = monitor.WindowHandle();
    ASSERT_NE(window, nullptr);
    monitor.Close();
    EXPECT_FALSE(cancel.load());
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(monitor.WindowHandle(), nullptr);

    // Without a cancel flag a close from outside destroys the window at once.
    StartupMonitor preview(96, true, false, nullptr);
    const HWND previewWindow = preview.WindowHandle();
    ASSERT_NE(previewWindow, nullptr);
    SendMessageW(previewWindow, WM_CLOSE, 0, 0);
    EXPECT_FALSE(IsWindow(previewWindow));
    EXPECT_EQ(preview.WindowHandle(), nullptr);
    preview.SetPhaseText(L"still usable");
    EXPECT_EQ(preview.PhaseText(), L"still usable");
}

TEST(StartupWindow, BarColumnsRunFromTailToHeadAndWrap)
{
    EXPECT_EQ(MovingBarColumn(0, 0).x, 0) << "the tail at the track's left end";
    EXPECT_EQ(MovingBarColumn(0, 0).colour, RGB(34, 211, 238));
    EXPECT_EQ(MovingBarColumn(0, 95).colour, RGB(34, 249, 192));
    EXPECT_EQ(MovingBarColumn(2400, 0).x, 0);
    EXPECT_EQ(MovingBarColumn(1200, 0).x, 318);
    EXPECT_EQ(MovingBarColumn(2399, 0).x, 635);
    EXPECT_EQ(MovingBarColumn(2399, 1).x, 0) << "wrapped: part at the right end, part at the left";
    EXPECT_EQ(MovingBarColumn(2399, 95).x, 94);

    EXPECT_EQ(StartupDetailText(999, L"", false), L"Waited 0 s");
    EXPECT_EQ(StartupDetailText(61500, L"SDK cache hit, verifying", false), L"Waited 61 s · SDK cache hit, verifying");
    EXPECT_EQ(StartupDetailText(3000, L"正在确定 SDK 缓存状态", true), L"已等待 3 秒 · 正在确定 SDK 缓存状态");
}

}  // namespace
}  // namespace korvane
