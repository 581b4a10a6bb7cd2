#pragma once
// The picker's controls reached through the handles it keeps: GetDlgItem asks the window manager
// for the list of children on every call, which under Wine is a server round trip each time.

#include "context/PickerState.h"

#include <windows.h>

namespace korvane {

// The control with this identifier (any but the tooltip, which has none), or null.
HWND FindPickerControl(const PickerState& picker, int id);

}  // namespace korvane
