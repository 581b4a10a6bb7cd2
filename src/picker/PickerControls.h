#pragma once
// The picker's controls reached through the handles it keeps: GetDlgItem asks the window manager
// for the list of children on every call, which under Wine is a server round trip each time.

#include "context/PickerState.h"

#include <windows.h>

#include <vector>

namespace korvane {

// Every control but the tooltip.
std::vector<HWND> PickerControls(const PickerState& picker);

// The control with this identifier, or null.
HWND FindPickerControl(const PickerState& picker, int id);

}  // namespace korvane
