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
