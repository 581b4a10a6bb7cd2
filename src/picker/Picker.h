#pragma once
// The picker: the launcher's main window.

namespace korvane {

struct LaunchContext;

// Runs the picker until it closes and gives the process exit code: 0 when closed without
// a launch, the editor's exit code after a launch, 7 when the window cannot be created.
int RunPicker(LaunchContext& context);

}  // namespace korvane
