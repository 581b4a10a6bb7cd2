#pragma once
// One editing session per logon session: the launcher's named event, the editor's named
// event, and the wait for an editor that is still closing. The events are used for their
// existence alone; nobody signals them and nobody waits on them.

#include "context/UiLanguage.h"
#include "foundation/Text.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

namespace korvane {

// Exists while an interactive Mod editor runs; the editor creates it.
inline constexpr wchar_t kEditorSessionEventName[] = L"Local\\Korvane.AuthorEditor.Interactive";
// Exists while an interactive launcher runs, showing the picker or waiting for its editor.
inline constexpr wchar_t kLauncherSessionEventName[] = L"Local\\Korvane.AuthorLauncher.Interactive";

inline constexpr DWORD kClosingEditorWaitMs = 300000;
inline constexpr DWORD kEarlierLauncherWaitMs = 15000;
inline constexpr DWORD kEarlierLauncherPollMs = 50;

inline constexpr LocalizedText kSessionClosingMessage{
    L"The previous editing session is still closing. Finish saving and close it before retrying.",
    L"上一编辑会话尚未关闭。请完成保存并关闭后重试。"};

// What the closing-editor wait needs to know of the run.
struct ClosingEditorWait {
    DWORD waitForEditorPid = 0;  // -KorvaneWaitForEditorPid=, 0 when not given
    bool headless = false;
    bool previewMode = false;  // -KorvaneStartupPreview or -KorvanePickerPreview
};

// The limits of the wait. Tests shorten them; the launcher always runs with these values.
struct ClosingEditorLimits {
    DWORD editorWaitMs = kClosingEditorWaitMs;
    DWORD launcherWaitMs = kEarlierLauncherWaitMs;
    DWORD launcherPollMs = kEarlierLauncherPollMs;
};

// Stands by until the editor this launcher was started from has ended and the launcher that
// had started that editor is gone. The editor is the explicit pid, or for an ordinary start
// the parent process when it is this install's editor. True to go on. False when the run
// must end with exit code 9; the closing message has then been shown unless `headless`.
bool WaitForClosingEditor(TextView editorRoot, const ClosingEditorWait& wait, const ClosingEditorLimits& limits = {});

// True when the gate is passed; `launcherEvent` then holds the launcher's event, which must
// stay open for as long as this launcher's session lasts. False when an editor or another
// launcher is in the way; the caller reports KV1830 with exit code 9.
bool PassSessionGate(UniqueHandle& launcherEvent);

// Whether a named event exists in this logon session.
bool SessionEventExists(const wchar_t* name);

// The parent process id when the parent is the UnrealEditor.exe of the install at
// `editorRoot`, else 0.
// Letter case and slash direction of the two paths do not matter.
DWORD FindParentEditor(TextView editorRoot);

}  // namespace korvane
