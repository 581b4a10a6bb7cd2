#include "tool/WorkspacePreparation.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "host/AuthoringLayout.h"
#include "host/LaunchSelection.h"
#include "tool/ModSource.h"
#include "tool/Preparation.h"
#include "tool/ToolCommand.h"
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

bool PrepareWorkspace(const WorkspaceRequest& request, const PreparationProgress& progress, PreparationOutcome& outcome,
    Text& error)
{
    outcome = {Text(request.modFile), std::nullopt};
    if (progress.phaseText) {
        progress.phaseText(kPreparingLine.Now());
    }
    if (request.sdk.empty()) {
        error = kNoSdkMessage.Now();
        return false;
    }
    const ModSourceRequest lookup{
        request.editorRoot, request.sdk, request.gameDirectory, request.selectedMod, request.cancelFlag};
    if (!ResolveModSource(lookup, outcome.modFile, error)) {
        return false;
    }
    const Text toolPath = ResolveToolPath(request.editorRoot);
    if (toolPath.empty() || !IsRegularFile(toolPath)) {
        error = kPreparationToolMissingMessage.Now();
        return false;
    }
    const TemporaryFile selectionFile(CreateSelectionTempFile());
    if (selectionFile.IsEmpty()) {
        error = kSelectionFileMessage.Now();
        return false;
    }
    // Without a name the run simply goes without live progress or timing.
    const TemporaryFile progressFile(CreateLauncherTempFile());
    const TemporaryFile timingFile(CreateLauncherTempFile());
    if (progress.cacheState) {
        progress.cacheState(-1, false);
    }
    const Text arguments = BuildToolCommand(ToolCommandKind::Prepare,
        {
            .sdk = request.sdk,
            .gameRoot = request.gameDirectory,
            .editorRoot = request.editorRoot,
            .selectionFile = selectionFile.Path(),
            .modFile = outcome.modFile,
            .progressFile = progressFile.Path(),
            .timingReport = timingFile.Path(),
        });

    const ToolResult result = RunPreparation(request.editorRoot, request.sdk, outcome.modFile, arguments,
        request.cancelFlag, progressFile.Path(), progress.phaseText, timingFile.Path());

    if (result.exitCode == 0) {
        if (progress.cacheState) {
            progress.cacheState(result.cacheHit, true);
        }
        // Remembered before the answer is judged: a refused workspace still leaves the SDK
        // and game for the next start.
        SaveLaunchSelection(request.editorRoot, request.sdk, request.gameDirectory);
        outcome.workspace = JudgeSelectionFile(ReadSelectionFile(selectionFile.Path()), request.selectedMod);
    }
    if (outcome.workspace && !outcome.workspace->modProjectFile.empty()) {
        return true;
    }
    outcome.workspace.reset();
    error = result.error.empty() ? kWorkspaceCheckMessage.Now() : result.error;
    return false;
}

}  // namespace korvane
