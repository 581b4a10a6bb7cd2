#pragma once
// The stand-in editor's two windows: a splash (class "SplashScreenClass") while it loads, then
// the main window (class "UnrealWindow", 1024 x 720, visible and unowned) titled with the project.

#include "foundation/Text.h"

#include <windows.h>

namespace korvane::standins {

class EditorWindows {
public:
    explicit EditorWindows(HINSTANCE instance);
    ~EditorWindows();
    EditorWindows(const EditorWindows&) = delete;
    EditorWindows& operator=(const EditorWindows&) = delete;

    void ShowSplash(TextView text);
    void CloseSplash();
    void ShowMain(TextView title);
    void CloseMain();
    // The main window was shown and has been closed since.
    bool MainClosed() const noexcept { return mainShown_ && main_ == nullptr; }

    // Handles messages for `ms` milliseconds (INFINITE: until the main window is closed).
    // False when the main window was closed.
    bool PumpFor(DWORD ms);

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    HINSTANCE instance_;
    HWND splash_ = nullptr;
    HWND main_ = nullptr;
    bool mainShown_ = false;
};

}  // namespace korvane::standins
