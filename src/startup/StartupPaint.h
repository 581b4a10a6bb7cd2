#pragma once
// Drawing of the start-up card: 720 by 370 at 96 DPI, every value scaled on its own with
// MulDiv(value, dpi, 96). All GDI here runs on the window thread.

#include "foundation/Text.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

#include <cstdint>

namespace korvane {

inline constexpr int kStartupCardWidth = 720;
inline constexpr int kStartupCardHeight = 370;

int ScaleForDpi(int value, std::uint32_t dpi) noexcept;
// A rectangle given at 96 DPI, each side scaled.
RECT ScaledRect(int left, int top, int right, int bottom, std::uint32_t dpi) noexcept;
// Where the Cancel button lies, in client coordinates.
RECT CancelButtonRect(std::uint32_t dpi) noexcept;

struct StartupFonts {
    UniqueFont title;
    UniqueFont subtitle;
    UniqueFont detail;
};
StartupFonts CreateStartupFonts(std::uint32_t dpi);

// "Waited 12 s", then " · " and the cache state when there is one.
Text StartupDetailText(std::uint64_t elapsedMs, TextView cacheStatus, bool chinese);

// One column of the moving bar, on the 96 DPI grid: column `index` (0 tail to 95 head) of
// the bar at `elapsedMs`. One pass over the 636-unit track takes 2400 ms; the bar wraps.
struct BarColumn {
    int x;  // offset from the track's left end
    COLORREF colour;
};
inline constexpr int kBarColumns = 96;
BarColumn MovingBarColumn(std::uint64_t elapsedMs, int index) noexcept;

struct StartupCard {
    std::uint32_t dpi = 96;
    bool chinese = false;
    bool showCancel = false;
    std::uint64_t elapsedMs = 0;
    Text phaseText;
    Text cacheStatusText;
    HBITMAP background = nullptr;
    HICON logo = nullptr;
    const StartupFonts* fonts = nullptr;
};

// Draws the whole card into `dc`. Gives true when the background art was drawn.
bool DrawStartupCard(HDC dc, const StartupCard& card);

}  // namespace korvane
