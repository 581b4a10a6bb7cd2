#pragma once
// What the picker does with its commands and with the results of its tasks. It holds no business
// logic: it keeps a few flags, decides which command is open, hands slow work to a task and turns
// the task's result back into rows and status. All of it runs on the window thread.

#include "foundation/Text.h"
#include "tool/WorkResult.h"

#include <windows.h>

#include <memory>

namespace korvane {

struct LaunchContext;
struct ModEntry;

inline constexpr COLORREF kStatusInfo = RGB(164, 185, 206);
inline constexpr COLORREF kStatusError = RGB(244, 137, 129);
inline constexpr COLORREF kStatusNotice = RGB(244, 184, 111);

void SetStatus(LaunchContext& context, TextView text, COLORREF colour);
void UpdateCommandStates(LaunchContext& context);
// The command texts, the search hint and the language row in the language of the moment; the
// Mod count again when it is what the status line shows.
void RefreshPickerTexts(LaunchContext& context);
// Settles the SDK of the two path edits and starts reading it; an SDK that cannot be settled
// leaves the rows as they were and says why in the status line.
void BeginSdkLoad(LaunchContext& context);
// Moves a finished preview into the picker's rows and status.
void ApplyPreview(LaunchContext& context, WorkResult& result);
// Refills the visible rows and the list from the search text; an empty `preferred` keeps the
// Mod selected now, else that package is selected.
void RebuildModList(LaunchContext& context, TextView preferred);
// The Mod of the list's selection when it is one of the visible rows.
const ModEntry* SelectedMod(const LaunchContext& context);

// WM_COMMAND of the picker window.
void OnPickerCommand(LaunchContext& context, int id, int notification);
// WM_TASK_FINISHED: takes the result over and deletes it on every path.
void OnTaskFinished(LaunchContext& context, std::unique_ptr<WorkResult> result);
// WM_CLOSE: closes at once when idle; during a task, cancels it and closes when it ends.
void OnPickerClose(LaunchContext& context);

// The text of an edit.
Text WindowTextOf(HWND window);

}  // namespace korvane
