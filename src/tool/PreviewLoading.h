#pragma once
// The loads behind the picker's tasks: the SDK preview with its images and the editor build
// check, the first load of a run, and the Mod commands that end in a fresh preview. They run on
// the worker thread; a tool failure is told in the result, while a document that is no JSON or
// not of the preview's shape throws std::runtime_error for the worker to answer.

#include "foundation/Json.h"
#include "foundation/Text.h"
#include "tool/WorkResult.h"

#include <atomic>

namespace korvane {

// What a load works with, copied by the window thread when the task is made.
struct PreviewRequest {
    Text editorRoot;
    Text sdk;
    Text gameDirectory;
    const std::atomic<bool>* cancelFlag = nullptr;  // the run's one cancel flag
    bool pickerPreview = false;                      // a preview run touches no stored selection
};

// `sdk-preview` through the tool, the schema test, the editor build check, the stored selection
// when the build fits and nothing was cancelled, and the images.
WorkResult LoadSdkPreview(const PreviewRequest& request);

// The picker's first load: the fixture in a preview run with one; else the SDK found for the
// request, or, when none is found, an otherwise empty result that keeps the game directory.
WorkResult LoadInitialPreview(const PreviewRequest& request, TextView fixturePath);

// A Mod command (`create`, `translations create`, `import-source`) with `toolArguments`, then a
// fresh preview that selects the Mod the tool named, or `fallbackModProject` when it named none.
WorkResult RunModCommand(const PreviewRequest& request, TextView toolArguments, TextView fallbackModProject);

// Whether an SDK of this preview document fits the editor of the install: the module list's
// BuildId, the receipt's engine build against the document's engine version, and, unless the
// document switches the binding off, its build id. Any file that cannot be read makes it false.
bool EditorBuildMatches(TextView editorRoot, const JsonValue& preview) noexcept;

// The game icon and the first cover of each `modProject` of the result's document.
void LoadPreviewImages(WorkResult& result);

}  // namespace korvane
