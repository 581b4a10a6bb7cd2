#pragma once
// The picker's slow work runs as tasks, one at a time, on one worker thread. A task gives a
// WorkResult, which reaches the window thread by WM_TASK_FINISHED with its ownership in lParam.
// The window thread never waits for the tool, an image decoder or the recycle bin.

#include "foundation/Text.h"
#include "tool/PreviewLoading.h"
#include "tool/WorkResult.h"

#include <windows.h>

#include <functional>

namespace korvane {

struct LaunchContext;

// A task owns copies of everything it reads, taken on the window thread; only LaunchTask holds
// the run-wide record itself.
using PickerTask = std::function<WorkResult()>;

// On the window thread: drops the task without a trace while another runs; otherwise marks the
// picker busy, clears the cancel flag, shows `firstStatus` and starts the worker.
void StartBackgroundTask(LaunchContext& context, PickerTask task, TextView firstStatus);

// What a load of the picker works with, copied from the record.
PreviewRequest PreviewRequestOf(const LaunchContext& context, TextView sdk, TextView gameDirectory);

PickerTask PreviewTask(const LaunchContext& context, TextView sdk, TextView gameDirectory);
PickerTask InitialPreviewTask(const LaunchContext& context, TextView sdk, TextView gameDirectory, TextView fixture);
PickerTask ModCommandTask(const LaunchContext& context, TextView sdk, TextView gameDirectory, TextView editorRoot,
    TextView toolArguments, TextView fallbackModProject);
PickerTask LaunchTask(LaunchContext& context);
// Moves the package to the Recycle Bin and reads the SDK again; `owner` is the picker window.
PickerTask RemoveModTask(const LaunchContext& context, TextView sdk, TextView gameDirectory, TextView modProject, HWND owner);

}  // namespace korvane
