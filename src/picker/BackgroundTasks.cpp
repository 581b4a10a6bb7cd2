#include "picker/BackgroundTasks.h"

#include "context/LaunchContext.h"
#include "launch/LaunchEditor.h"
#include "picker/ModRemoval.h"
#include "picker/PickerCommands.h"
#include "picker/PickerIds.h"
#include "picker/PickerTexts.h"

#include <memory>
#include <system_error>
#include <thread>

namespace korvane {
namespace {

// What the worker thread starts with; it owns its copy of the task.
struct TaskStart {
    HWND window;
    PickerTask task;
};

void RunBackgroundTask(std::unique_ptr<TaskStart> start)
{
    auto result = std::make_unique<WorkResult>();
    try {
        *result = start->task();
    } catch (...) {
        // The one answer to any failure inside a task: its own words are internal.
        *result = WorkResult();
        result->errorText = kToolJsonMessage.Now();
    }
    if (PostMessageW(start->window, WM_TASK_FINISHED, 0, reinterpret_cast<LPARAM>(result.get()))) {
        static_cast<void>(result.release());  // the window owns it now
    }
}

}  // namespace

void StartBackgroundTask(LaunchContext& context, PickerTask task, TextView firstStatus)
{
    PickerState& picker = context.picker;
    if (picker.taskRunning) {
        return;
    }
    picker.taskRunning = true;
    context.cancelRequested.exchange(false);
    UpdateCommandStates(context);
    SetStatus(context, firstStatus, kStatusInfo);
    auto start = std::make_unique<TaskStart>(TaskStart{picker.pickerWindow, std::move(task)});
    try {
        context.workerThread = std::thread(RunBackgroundTask, std::move(start));
    } catch (const std::system_error&) {
        // No worker: the task ends at once, through the same door as any failed task.
        auto result = std::make_unique<WorkResult>();
        result->errorText = kToolJsonMessage.Now();
        if (PostMessageW(picker.pickerWindow, WM_TASK_FINISHED, 0, reinterpret_cast<LPARAM>(result.get()))) {
            static_cast<void>(result.release());
        }
    }
}

PreviewRequest PreviewRequestOf(const LaunchContext& context, TextView sdk, TextView gameDirectory)
{
    return PreviewRequest{
        context.editorRoot, Text(sdk), Text(gameDirectory), &context.cancelRequested, context.pickerPreview};
}

PickerTask PreviewTask(const LaunchContext& context, TextView sdk, TextView gameDirectory)
{
    return [request = PreviewRequestOf(context, sdk, gameDirectory)] { return LoadSdkPreview(request); };
}

PickerTask InitialPreviewTask(const LaunchContext& context, TextView sdk, TextView gameDirectory, TextView fixture)
{
    return [request = PreviewRequestOf(context, sdk, gameDirectory), fixture = Text(fixture)] {
        return LoadInitialPreview(request, fixture);
    };
}

PickerTask ModCommandTask(const LaunchContext& context, TextView sdk, TextView gameDirectory, TextView editorRoot,
    TextView toolArguments, TextView fallbackModProject)
{
    PreviewRequest request = PreviewRequestOf(context, sdk, gameDirectory);
    request.editorRoot = editorRoot;
    return [request = std::move(request), arguments = Text(toolArguments), fallback = Text(fallbackModProject)] {
        return RunModCommand(request, arguments, fallback);
    };
}

PickerTask LaunchTask(LaunchContext& context)
{
    return [&context] {
        WorkResult result;
        result.launched = LaunchEditor(context, result.errorText);
        return result;
    };
}

PickerTask RemoveModTask(const LaunchContext& context, TextView sdk, TextView gameDirectory, TextView modProject, HWND owner)
{
    return [request = PreviewRequestOf(context, sdk, gameDirectory), modProject = Text(modProject), owner] {
        WorkResult result;
        if (!MoveModToRecycleBin(owner, modProject, result.errorText)) {
            return result;
        }
        result = LoadSdkPreview(request);
        if (result.errorText.empty()) {
            result.noticeText = kRemovedNotice.Now();
        }
        return result;
    };
}

}  // namespace korvane
