#pragma once
// The Mod list: its rows drawn as cards, and a subclass that gives it a thin scroll mark, wheel
// scrolling by three rows, thumb dragging and the empty-list text, since the control has no
// system scroll bar.

#include <windows.h>

namespace korvane {

struct LaunchContext;

// WM_DRAWITEM of the list: the card of one Mod.
void DrawModRow(const LaunchContext& context, const DRAWITEMSTRUCT& item);

// Takes over the list's scrolling and the drawing on top of its rows.
void SubclassModList(LaunchContext& context);

// The number of visible rows that fit, the top row the list can scroll to, for the list now.
struct ModListPage {
    int rows = 0;
    int page = 1;
    int maxTop = 0;
};
ModListPage ModListPageOf(const LaunchContext& context);

}  // namespace korvane
