#pragma once
// What a window shows on the screen, taken from the screen itself as a person would see it,
// with pixel look-ups and a PNG of it.

#include "foundation/Text.h"

#include <windows.h>

#include <cstdint>
#include <vector>

namespace korvane::testing {

struct Colour {
    int red = 0;
    int green = 0;
    int blue = 0;
    bool operator==(const Colour&) const = default;
};

class ScreenImage {
public:
    // The screen's pixels inside the window's rectangle.
    static ScreenImage OfWindow(HWND window);
    // The window's pixels once `shown` holds for them. A window's paint reaches the screen a
    // little after the paint itself, and there is nothing to wait on for that, so this takes
    // the picture again every 20 ms, for up to `timeoutMs`, and then gives the last one.
    // The window is raised above all others first: test programs share one display.
    template <typename Predicate>
    static ScreenImage OfWindowOnceShown(HWND window, Predicate shown, DWORD timeoutMs = 5000)
    {
        SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
        const ULONGLONG deadline = GetTickCount64() + timeoutMs;
        ScreenImage image = OfWindow(window);
        while (!shown(image) && GetTickCount64() < deadline) {
            Sleep(20);
            image = OfWindow(window);
        }
        return image;
    }

    int Width() const noexcept { return width_; }
    int Height() const noexcept { return height_; }
    Colour At(int x, int y) const;
    // Saves as PNG through GDI+; false when that fails.
    bool SavePng(TextView path) const;

private:
    int width_ = 0;
    int height_ = 0;
    std::vector<std::uint32_t> pixels_;  // top-down rows of 0x00RRGGBB
};

}  // namespace korvane::testing
