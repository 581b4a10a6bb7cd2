#pragma once
// One editing session per logon session: the launcher's named event, the editor's named
// event, and the wait for an editor that is still closing.

#include "foundation/Text.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

namespace korvane {

struct LaunchContext;

// What the closing-editor wait needs to know of the run.
struct ClosingEditorWait {
    DWORD waitForEditorPid = 0;
    bool headless = false;
    bool previewMode = false;  // -KorvaneStartupPreview or -KorvanePickerPreview
};

// True to go on. False when the run must end with exit code 9; the closing message has
// then been shown unless `headless`.
bool WaitForClosingEditor(const LaunchContext& context, const ClosingEditorWait& wait);

// True when the gate is passed; `launcherEvent` then holds the launcher's event, which
// must stay open until the process ends. False when another session is in the way.
bool PassSessionGate(UniqueHandle& launcherEvent);

// The parent process id when the parent is this install's UnrealEditor.exe, else 0.
DWORD FindParentEditor(const LaunchContext& context);

}  // namespace korvane
