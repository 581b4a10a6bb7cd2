#pragma once
// The one rounded surface of the launcher's windows.

#include <windows.h>

#include <cstdint>

namespace korvane {

// Fills `rectangle` with `corner` first (what shows outside the rounding), then draws a
// rounded rectangle filled with `fill` and edged with a solid `border` pen. Pen width and
// corner diameter follow `dpi` (1 and 8 at 96, never below 1 and 4).
void DrawRoundedPanel(HDC dc, const RECT& rectangle, COLORREF fill, COLORREF border, std::uint32_t dpi, COLORREF corner);

}  // namespace korvane
