#include "tool/WorkspacePreparation.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "host/AuthoringLayout.h"
#include "host/LaunchSelection.h"
#include "launch/LaunchContext.h"
#include "tool/ModSource.h"
#include "tool/Preparation.h"
#include "tool/SelectionFile.h"
#include "tool/ToolMessages.h"

#include <windows.h>

namespace korvane {
namespace {

// An empty "KVD" file in the temporary folder, for the tool to overwrite with its answer.
Text CreateSelectionTempFile()
{
    wchar_t folder[MAX_PATH] = {};
    wchar_t path[MAX_PATH] = {};
    const DWORD length = GetTempPathW(MAX_PATH, folder);
    if (length == 0 || length >= MAX_PATH) {
        return {};
    }
    if (GetTempFileNameW(folder, L"KVD", 0, path) == 0) {
        return {};
    }
    return path;
}

}  // namespace

bool PrepareWorkspace(LaunchContext& context, const PreparationProgress& progress, Text& error)
{
    if (progress.phaseText) {
        progress.phaseText(kPreparingLine.Now());
    }
    if (context.preparationSdk.empty()) {
        error = kNoSdkMessage.Now();
        return false;
    }
    if (!ResolveModSource(context, error)) {
        return false;
    }
    const Text toolPath = ResolveToolPath(context.editorRoot);
    if (toolPath.empty() || !IsRegularFile(toolPath)) {
        error = kPreparationToolMissingMessage.Now();
        return false;
    }
    const TemporaryFile selectionFile(CreateSelectionTempFile());
    if (selectionFile.IsEmpty()) {
        error = kSelectionFileMessage.Now();
        return false;
    }

    Text arguments = L"prepare --sdk " + QuoteCommandArgument(context.preparationSdk) + L" --editor-root "
        + QuoteCommandArgument(context.editorRoot) + L" --selection-file " + QuoteCommandArgument(selectionFile.Path());
    if (!context.gameDirectory.empty()) {
        arguments += L" --game-root " + QuoteCommandArgument(context.gameDirectory);
    }
    arguments += L" --mod-file " + QuoteCommandArgument(context.modFile);

    // Without a name the run simply goes without live progress or timing.
    const TemporaryFile progressFile(CreateLauncherTempFile());
    const TemporaryFile timingFile(CreateLauncherTempFile());
    if (progress.cacheState) {
        progress.cacheState(-1, false);
    }
    arguments += L" --progress-file " + QuoteCommandArgument(progressFile.Path()) + L" --timing-report "
        + QuoteCommandArgument(timingFile.Path());

    const ToolResult result = RunPreparation(context.editorRoot, context.preparationSdk, context.modFile, arguments,
        &context.cancelRequested, progressFile.Path(), progress.phaseText, timingFile.Path());

    bool answered = false;
    if (result.exitCode == 0) {
        if (progress.cacheState) {
            progress.cacheState(result.cacheHit, true);
        }
        // Remembered before the answer is judged: a refused workspace still leaves the SDK
        // and game for the next start.
        SaveLaunchSelection(context, context.preparationSdk, context.gameDirectory);
        if (auto selection = JudgeSelectionFile(ReadSelectionFile(selectionFile.Path()), context.selectedMod)) {
            context.modProjectFile = std::move(selection->modProjectFile);
            context.launchTarget = std::move(selection->editorProject);
            context.selectedMod = std::move(selection->modId);
            answered = true;
        }
    }
    if (answered && !context.modProjectFile.empty()) {
        return true;
    }
    error = result.error.empty() ? kWorkspaceCheckMessage.Now() : result.error;
    return false;
}

}  // namespace korvane
