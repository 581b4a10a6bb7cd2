#pragma once
// The picker window's own surface: the SDK panel with the game's icon and texts, and the
// headings over the Mod list. The controls draw themselves on top.

#include <windows.h>

namespace korvane {

struct LaunchContext;

// Draws the whole client area into `dc` through one off-screen bitmap, so nothing flickers.
void PaintPicker(const LaunchContext& context, HDC dc);

}  // namespace korvane
