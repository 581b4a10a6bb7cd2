#pragma once
// The start-up progress window: a borderless card on a thread of its own that shows the
// monitor's state and can set the cancel flag. Other threads reach it only through posted
// WM_STARTUP_REFRESH and WM_CLOSE.

#include "foundation/UniqueResource.h"
#include "startup/StartupPaint.h"

#include <windows.h>

#include <cstdint>

namespace korvane {

class StartupMonitor;

inline constexpr wchar_t kStartupWindowClass[] = L"KorvaneStartupProgress";

// The window with everything it draws with. It lives on the window thread, which alone
// touches it; the monitor is its only link to the rest of the run.
class StartupWindow {
public:
    // Loads the fonts and images, makes the window and shows it without activating it, painted
    // once. Tells the monitor what it measured on the way; IsOpen says whether the window stands.
    explicit StartupWindow(StartupMonitor& monitor);
    ~StartupWindow() = default;
    StartupWindow(const StartupWindow&) = delete;
    StartupWindow& operator=(const StartupWindow&) = delete;

    bool IsOpen() const noexcept { return window_.IsValid(); }
    // Pumps messages until the window is gone.
    void RunMessageLoop();

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
    void Paint();
    void FollowDpi(std::uint32_t dpi, const RECT& suggested);
    void LoadAssets();
    void Create();

    StartupMonitor& monitor_;
    std::uint32_t dpi_ = 96;
    StartupFonts fonts_;
    UniqueBitmap background_;
    UniqueIcon logo_;
    UniqueWindow window_;  // last, so that the window goes before what it draws with
};

// Body of the monitor's window thread: makes the window, signals the monitor (also when the
// window could not be made), and runs the message loop until the window is gone.
void StartupWindowThread(StartupMonitor& monitor);

}  // namespace korvane
