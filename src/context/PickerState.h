#pragma once
// The picker's part of the LaunchContext: window handles, the loaded SDK's texts and the
// Mod list. Only the picker touches it.

namespace korvane {

struct PickerState {
};

}  // namespace korvane
