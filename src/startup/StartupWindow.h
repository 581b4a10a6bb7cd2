#pragma once
// The start-up progress window: a borderless card on a thread of its own that shows the
// monitor's state and can set the cancel flag. Other threads reach it only through posted
// WM_STARTUP_REFRESH and WM_CLOSE.

#include <windows.h>

namespace korvane {

class StartupMonitor;

inline constexpr wchar_t kStartupWindowClass[] = L"KorvaneStartupProgress";

// Body of the monitor's window thread: makes the window, signals the monitor's ready event
// (also when the window could not be made), runs the message loop and releases the assets.
void StartupWindowThread(StartupMonitor& monitor);

LRESULT CALLBACK StartupWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace korvane
