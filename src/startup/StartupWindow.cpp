#include "startup/StartupWindow.h"

#include "foundation/GdiSelection.h"
#include "foundation/UniqueResource.h"
#include "resources/ResourceIds.h"
#include "startup/StartupMonitor.h"
#include "startup/StartupPaint.h"
#include "startup/StartupTexts.h"

#include <windowsx.h>

namespace korvane {
namespace {

constexpr UINT_PTR kAnimationTimerId = 1;
constexpr UINT kAnimationPeriodMs = 60;  // about 16 frames a second
constexpr int kLogoSize = 128;

// The GDI objects of the card. They live on the window thread's stack, and only that thread
// touches them; the procedure finds them through a window property.
struct StartupWindowAssets {
    StartupFonts fonts;
    UniqueBitmap background;
    UniqueIcon logo;
};

constexpr wchar_t kAssetsProperty[] = L"KorvaneStartupAssets";

StartupWindowAssets* AssetsOf(HWND window) noexcept
{
    return static_cast<StartupWindowAssets*>(GetPropW(window, kAssetsProperty));
}

RECT CenteredWindowRect(const RECT& workArea, std::uint32_t dpi) noexcept
{
    const int width = ScaleForDpi(kStartupCardWidth, dpi);
    const int height = ScaleForDpi(kStartupCardHeight, dpi);
    const int left = workArea.left + (workArea.right - workArea.left - width) / 2;
    const int top = workArea.top + (workArea.bottom - workArea.top - height) / 2;
    return RECT{left, top, left + width, top + height};
}

RECT WorkAreaOf(HMONITOR screen) noexcept
{
    MONITORINFO info{};
    info.cbSize = sizeof(info);
    if (screen == nullptr || !GetMonitorInfoW(screen, &info)) {
        return RECT{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    }
    return info.rcWork;
}

bool RegisterStartupWindowClass(HINSTANCE instance)
{
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = StartupWindowProc;
    windowClass.hInstance = instance;
    windowClass.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(IDI_KORVANE_APP));
    windowClass.hCursor = LoadCursorW(nullptr, IDC_WAIT);
    windowClass.lpszClassName = kStartupWindowClass;
    // A second monitor in the same process finds the class already there.
    return RegisterClassExW(&windowClass) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

}  // namespace

class StartupWindow {
public:
    static void Run(StartupMonitor& monitor);
    static LRESULT Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

private:
    static std::uint64_t Elapsed(const StartupMonitor& monitor) noexcept
    {
        return GetTickCount64() - monitor.startTick_;
    }
    static bool CanCancel(const StartupMonitor& monitor) noexcept
    {
        return monitor.cancelFlag_ != nullptr && !monitor.closing_.load();
    }
    static void Cancel(StartupMonitor& monitor);
    static void Paint(HWND window, StartupMonitor& monitor);
    static void FollowDpi(HWND window, StartupMonitor& monitor, std::uint32_t dpi, const RECT& suggested);
};

void StartupWindow::Cancel(StartupMonitor& monitor)
{
    monitor.cancelFlag_->store(true);
    monitor.SetPhaseText(kCancellingPhase.In(monitor.IsChinese()));
}

void StartupWindow::Paint(HWND window, StartupMonitor& monitor)
{
    const std::uint64_t paintStart = GetTickCount64();
    const PaintScope paint(window);
    const StartupWindowAssets* assets = AssetsOf(window);
    // The window is shown only once its assets are attached; an earlier paint just validates.
    if (paint.Dc() == nullptr || assets == nullptr) {
        return;
    }
    RECT client{};
    GetClientRect(window, &client);
    const UniqueMemoryDc buffer(CreateCompatibleDC(paint.Dc()));
    const UniqueBitmap bufferBitmap(CreateCompatibleBitmap(paint.Dc(), client.right, client.bottom));
    if (buffer && bufferBitmap) {
        const GdiSelection selection(buffer.Get(), bufferBitmap.Get());
        StartupCard card;
        card.dpi = monitor.dpi_.load();
        card.chinese = monitor.IsChinese();
        card.showCancel = monitor.cancelFlag_ != nullptr;
        card.elapsedMs = Elapsed(monitor);
        {
            const std::lock_guard<std::mutex> guard(monitor.lock_);
            card.phaseText = monitor.phaseText_;
            card.cacheStatusText = monitor.cacheStatusText_;
        }
        card.background = assets->background.Get();
        card.logo = assets->logo.Get();
        card.fonts = &assets->fonts;
        const bool backgroundDrawn = DrawStartupCard(buffer.Get(), card);
        if (card.background != nullptr) {
            monitor.backgroundDrawn_.store(backgroundDrawn);
        }
        BitBlt(paint.Dc(), 0, 0, client.right, client.bottom, buffer.Get(), 0, 0, SRCCOPY);
    }
    monitor.paintCount_.fetch_add(1);
    if (monitor.firstPaintMs_.load() == 0) {
        monitor.firstDrawMs_.store(GetTickCount64() - paintStart);
        monitor.firstPaintMs_.store(Elapsed(monitor) + 1);
    }
}

void StartupWindow::FollowDpi(HWND window, StartupMonitor& monitor, std::uint32_t dpi, const RECT& suggested)
{
    monitor.dpi_.store(dpi);
    if (StartupWindowAssets* assets = AssetsOf(window); assets != nullptr) {
        assets->fonts = CreateStartupFonts(dpi);
    }
    SetWindowPos(window, nullptr, suggested.left, suggested.top, ScaleForDpi(kStartupCardWidth, dpi),
        ScaleForDpi(kStartupCardHeight, dpi), SWP_NOZORDER | SWP_NOACTIVATE);
    InvalidateRect(window, nullptr, FALSE);
}

LRESULT StartupWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NCCREATE) {
        const auto* creation = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
        return DefWindowProcW(window, message, wParam, lParam);
    }
    auto* monitor = reinterpret_cast<StartupMonitor*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (monitor == nullptr) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    switch (message) {
    case WM_TIMER:
    case WM_STARTUP_REFRESH:
        InvalidateRect(window, nullptr, FALSE);
        return 0;
    case WM_ERASEBKGND:
        return 1;  // the paint covers every pixel from its buffer
    case WM_PAINT:
        Paint(window, *monitor);
        return 0;
    case WM_DPICHANGED:
        if (monitor->forcedDpi_ != 0) {
            break;
        }
        FollowDpi(window, *monitor, HIWORD(wParam), *reinterpret_cast<const RECT*>(lParam));
        return 0;
    case WM_KEYDOWN:
        if (wParam == VK_ESCAPE && CanCancel(*monitor)) {
            Cancel(*monitor);
        }
        return 0;
    case WM_LBUTTONUP: {
        const POINT point{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
        const RECT button = CancelButtonRect(monitor->dpi_.load());
        if (CanCancel(*monitor) && PtInRect(&button, point)) {
            Cancel(*monitor);
        }
        return 0;
    }
    case WM_CLOSE:
        // While a cancel is possible, a close from the task bar is a cancel and the window
        // stays until its owner ends it.
        if (CanCancel(*monitor)) {
            Cancel(*monitor);
        } else {
            DestroyWindow(window);
        }
        return 0;
    case WM_DESTROY:
        monitor->windowHandle_.store(nullptr);
        RemovePropW(window, kAssetsProperty);
        PostQuitMessage(0);
        return 0;
    default:
        break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void StartupWindow::Run(StartupMonitor& monitor)
{
    SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    const bool registered = RegisterStartupWindowClass(instance);

    std::uint32_t dpi = monitor.forcedDpi_ != 0 ? monitor.forcedDpi_ : GetDpiForSystem();
    monitor.dpi_.store(dpi);
    StartupWindowAssets assets;
    assets.fonts = CreateStartupFonts(dpi);
    if (!monitor.noBackground_) {
        assets.background.Reset(LoadBitmapW(instance, MAKEINTRESOURCEW(IDB_KORVANE_BACKGROUND)));
    }
    const int logoSize = ScaleForDpi(kLogoSize, dpi);
    assets.logo.Reset(static_cast<HICON>(
        LoadImageW(instance, MAKEINTRESOURCEW(IDI_KORVANE_APP), IMAGE_ICON, logoSize, logoSize, LR_DEFAULTCOLOR)));
    monitor.logoLoaded_.store(assets.logo.IsValid());
    monitor.assetLoadMs_.store(Elapsed(monitor));

    POINT cursor{};
    GetCursorPos(&cursor);
    RECT bounds = CenteredWindowRect(WorkAreaOf(MonitorFromPoint(cursor, MONITOR_DEFAULTTOPRIMARY)), dpi);

    HWND window = nullptr;
    if (registered) {
        const std::uint64_t createStart = GetTickCount64();
        const Text title = kStartupWindowTitle.In(monitor.IsChinese());
        window = CreateWindowExW(WS_EX_APPWINDOW, kStartupWindowClass, title.c_str(), WS_POPUP, bounds.left, bounds.top,
            bounds.right - bounds.left, bounds.bottom - bounds.top, nullptr, nullptr, instance, &monitor);
        monitor.windowCreateMs_.store(GetTickCount64() - createStart);
    }
    if (window != nullptr) {
        SetPropW(window, kAssetsProperty, &assets);
        if (monitor.forcedDpi_ == 0) {
            // The window may have landed on a monitor of another DPI than the system's.
            const UINT windowDpi = GetDpiForWindow(window);
            if (windowDpi != 0 && windowDpi != dpi) {
                dpi = windowDpi;
                monitor.dpi_.store(dpi);
                assets.fonts = CreateStartupFonts(dpi);
                bounds = CenteredWindowRect(WorkAreaOf(MonitorFromWindow(window, MONITOR_DEFAULTTOPRIMARY)), dpi);
                SetWindowPos(window, nullptr, bounds.left, bounds.top, bounds.right - bounds.left,
                    bounds.bottom - bounds.top, SWP_NOZORDER | SWP_NOACTIVATE);
            }
        }
        monitor.windowHandle_.store(window);
        SetWindowPos(window, HWND_TOP, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
        UpdateWindow(window);  // the first paint happens before the owner goes on
        SetTimer(window, kAnimationTimerId, kAnimationPeriodMs, nullptr);
    }
    SetEvent(monitor.readyEvent_.Get());
    if (window != nullptr) {
        // The owner may have given up waiting and closed before the handle was published.
        if (monitor.closing_.load()) {
            PostMessageW(window, WM_CLOSE, 0, 0);
        }
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
}

void StartupWindowThread(StartupMonitor& monitor)
{
    StartupWindow::Run(monitor);
}

LRESULT CALLBACK StartupWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return StartupWindow::Procedure(window, message, wParam, lParam);
}

}  // namespace korvane
