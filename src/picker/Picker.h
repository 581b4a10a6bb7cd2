#pragma once
// The picker: the launcher's main window, in which the author loads an SDK, finds a Mod and
// starts editing it.

#include <windows.h>

namespace korvane {

struct LaunchContext;

// Runs the picker until it closes and gives the process exit code: 0 when closed without a
// launch, the editor's exit code after a launch, 7 when the window cannot be created.
int RunPicker(LaunchContext& context);

// Registers the class and makes the window with its controls, shown unless the preview hides
// it; null when it cannot be made. RunPicker's first step, on the calling thread.
HWND CreatePickerWindow(LaunchContext& context);

}  // namespace korvane
