#include "startup/StartupWindow.h"

#include "foundation/GdiSelection.h"
#include "resources/ResourceIds.h"
#include "startup/StartupMonitor.h"
#include "startup/StartupTexts.h"

#include <windowsx.h>

namespace korvane {
namespace {

constexpr UINT_PTR kAnimationTimerId = 1;
constexpr UINT kAnimationPeriodMs = 60;  // about 16 frames a second
constexpr int kLogoSize = 128;

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

}  // namespace

StartupWindow::StartupWindow(StartupMonitor& monitor) : monitor_(monitor)
{
    SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    LoadAssets();
    Create();
}

void StartupWindow::LoadAssets()
{
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    const std::uint32_t forcedDpi = monitor_.Options().forcedDpi;
    dpi_ = forcedDpi != 0 ? forcedDpi : GetDpiForSystem();
    monitor_.NoteDpi(dpi_);
    fonts_ = CreateStartupFonts(dpi_);
    if (!monitor_.Options().noBackground) {
        background_.Reset(LoadBitmapW(instance, MAKEINTRESOURCEW(IDB_KORVANE_BACKGROUND)));
    }
    const int logoSize = ScaleForDpi(kLogoSize, dpi_);
    logo_.Reset(static_cast<HICON>(
        LoadImageW(instance, MAKEINTRESOURCEW(IDI_KORVANE_APP), IMAGE_ICON, logoSize, logoSize, LR_DEFAULTCOLOR)));
    monitor_.NoteAssetsLoaded(logo_.IsValid());
}

void StartupWindow::Create()
{
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = Procedure;
    windowClass.hInstance = instance;
    windowClass.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(IDI_KORVANE_APP));
    windowClass.hCursor = LoadCursorW(nullptr, IDC_WAIT);
    windowClass.lpszClassName = kStartupWindowClass;
    // A second monitor in the same process finds the class already there.
    if (RegisterClassExW(&windowClass) == 0 && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
        return;
    }

    POINT cursor{};
    GetCursorPos(&cursor);
    RECT bounds = CenteredWindowRect(WorkAreaOf(MonitorFromPoint(cursor, MONITOR_DEFAULTTOPRIMARY)), dpi_);
    const std::uint64_t createStart = GetTickCount64();
    const Text title = kStartupWindowTitle.In(monitor_.IsChinese());
    window_.Reset(CreateWindowExW(WS_EX_APPWINDOW, kStartupWindowClass, title.c_str(), WS_POPUP, bounds.left,
        bounds.top, bounds.right - bounds.left, bounds.bottom - bounds.top, nullptr, nullptr, instance, this));
    monitor_.NoteWindowCreated(GetTickCount64() - createStart);
    if (!window_) {
        return;
    }
    if (monitor_.Options().forcedDpi == 0) {
        // The window may have landed on a monitor of another DPI than the system's.
        const UINT windowDpi = GetDpiForWindow(window_.Get());
        if (windowDpi != 0 && windowDpi != dpi_) {
            dpi_ = windowDpi;
            monitor_.NoteDpi(dpi_);
            fonts_ = CreateStartupFonts(dpi_);
            bounds = CenteredWindowRect(WorkAreaOf(MonitorFromWindow(window_.Get(), MONITOR_DEFAULTTOPRIMARY)), dpi_);
            SetWindowPos(window_.Get(), nullptr, bounds.left, bounds.top, bounds.right - bounds.left,
                bounds.bottom - bounds.top, SWP_NOZORDER | SWP_NOACTIVATE);
        }
    }
    monitor_.PublishWindow(window_.Get());
    SetWindowPos(window_.Get(), HWND_TOP, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
    UpdateWindow(window_.Get());  // the first paint happens before the owner goes on
    SetTimer(window_.Get(), kAnimationTimerId, kAnimationPeriodMs, nullptr);
}

void StartupWindow::RunMessageLoop()
{
    if (!window_) {
        return;
    }
    // The owner may have given up waiting and closed before the handle was published.
    if (monitor_.IsClosing()) {
        PostMessageW(window_.Get(), WM_CLOSE, 0, 0);
    }
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void StartupWindow::Paint()
{
    const std::uint64_t paintStart = GetTickCount64();
    const PaintScope paint(window_.Get());
    if (paint.Dc() == nullptr) {
        return;
    }
    std::optional<bool> backgroundDrawn;
    RECT client{};
    GetClientRect(window_.Get(), &client);
    const UniqueMemoryDc buffer(CreateCompatibleDC(paint.Dc()));
    const UniqueBitmap bufferBitmap(CreateCompatibleBitmap(paint.Dc(), client.right, client.bottom));
    if (buffer && bufferBitmap) {
        const GdiSelection selection(buffer.Get(), bufferBitmap.Get());
        const StartupDisplay display = monitor_.Display();
        StartupCard card;
        card.dpi = dpi_;
        card.chinese = display.chinese;
        card.showCancel = display.showCancel;
        card.elapsedMs = display.elapsedMs;
        card.phaseText = display.phaseText;
        card.cacheStatusText = display.cacheStatusText;
        card.background = background_.Get();
        card.logo = logo_.Get();
        card.fonts = &fonts_;
        const bool drawn = DrawStartupCard(buffer.Get(), card);
        if (card.background != nullptr) {
            backgroundDrawn = drawn;
        }
        BitBlt(paint.Dc(), 0, 0, client.right, client.bottom, buffer.Get(), 0, 0, SRCCOPY);
    }
    monitor_.NotePaint(GetTickCount64() - paintStart, backgroundDrawn);
}

void StartupWindow::FollowDpi(std::uint32_t dpi, const RECT& suggested)
{
    dpi_ = dpi;
    monitor_.NoteDpi(dpi);
    fonts_ = CreateStartupFonts(dpi);
    SetWindowPos(window_.Get(), nullptr, suggested.left, suggested.top, ScaleForDpi(kStartupCardWidth, dpi),
        ScaleForDpi(kStartupCardHeight, dpi), SWP_NOZORDER | SWP_NOACTIVATE);
    InvalidateRect(window_.Get(), nullptr, FALSE);
}

LRESULT CALLBACK StartupWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NCCREATE) {
        auto* self = static_cast<StartupWindow*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
        return DefWindowProcW(window, message, wParam, lParam);
    }
    auto* self = reinterpret_cast<StartupWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    // Messages before WM_NCCREATE, and the window's last ones while it is being made.
    if (self == nullptr || self->window_.Get() != window) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    return self->Handle(message, wParam, lParam);
}

LRESULT StartupWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam)
{
    const HWND window = window_.Get();
    switch (message) {
    case WM_TIMER:
    case WM_STARTUP_REFRESH:
        InvalidateRect(window, nullptr, FALSE);
        return 0;
    case WM_ERASEBKGND:
        return 1;  // the paint covers every pixel from its buffer
    case WM_PAINT:
        Paint();
        return 0;
    case WM_DPICHANGED:
        if (monitor_.Options().forcedDpi != 0) {
            break;
        }
        FollowDpi(HIWORD(wParam), *reinterpret_cast<const RECT*>(lParam));
        return 0;
    case WM_KEYDOWN:
        if (wParam == VK_ESCAPE) {
            monitor_.RequestCancel();
        }
        return 0;
    case WM_LBUTTONUP: {
        const POINT point{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
        const RECT button = CancelButtonRect(dpi_);
        if (PtInRect(&button, point)) {
            monitor_.RequestCancel();
        }
        return 0;
    }
    case WM_CLOSE:
        // While a cancel is possible, a close from the task bar is a cancel and the window
        // stays until its owner ends it.
        if (!monitor_.RequestCancel()) {
            DestroyWindow(window);
        }
        return 0;
    case WM_DESTROY:
        monitor_.PublishWindow(nullptr);
        PostQuitMessage(0);
        return 0;
    case WM_NCDESTROY:
        // The window is gone; the owner must not destroy it again.
        static_cast<void>(window_.Release());
        break;
    default:
        break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void StartupWindowThread(StartupMonitor& monitor)
{
    StartupWindow window(monitor);
    monitor.SignalReady();
    window.RunMessageLoop();
}

}  // namespace korvane
