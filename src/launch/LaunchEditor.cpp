#include "launch/LaunchEditor.h"

#include "context/LaunchContext.h"
#include "context/SharedConstants.h"
#include "context/UiLanguage.h"
#include "foundation/Paths.h"
#include "foundation/Process.h"
#include "language/EditorSettingsFile.h"
#include "language/LanguageChoice.h"
#include "launch/EditorCommandLine.h"
#include "launch/EditorLanguage.h"
#include "launch/LaunchErrors.h"
#include "startup/StartupMonitor.h"
#include "startup/StartupReport.h"
#include "startup/WatchEditorStart.h"
#include "tool/WorkspacePreparation.h"

#include <windows.h>

#include <vector>

namespace korvane {
namespace {

// The culture the editor starts with: the language asked for, mapped onto the install's list.
Text ChooseEditorCulture(const LaunchContext& context)
{
    const Text saved = context.language.empty() ? ReadEditorLanguageSetting(EditorSettingsPath(context.editorRoot)) : Text();
    return ResolveLanguage(ListEditorLanguages(context.editorRoot),
        RequestedEditorLanguage(context.language, saved, context.passThroughArguments));
}

// Switches under which the editor runs without a window worth waiting for.
bool RunsUnwatched(const std::vector<Text>& passThroughArguments)
{
    for (const Text& argument : passThroughArguments) {
        if (EqualsIgnoringCase(argument, L"-unattended") || EqualsIgnoringCase(argument, L"-RenderOffscreen")) {
            return true;
        }
    }
    return false;
}

std::uint64_t CurrentFileTime()
{
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return (static_cast<std::uint64_t>(now.dwHighDateTime) << 32) | now.dwLowDateTime;
}

// The editor ended, or was ended on a cancel, before its window stood: its exit code, and the
// record forgets it.
DWORD ForgetEditor(LaunchContext& context)
{
    DWORD exitCode = 1;
    if (!GetExitCodeProcess(context.editorProcess.Process(), &exitCode)) {
        exitCode = 1;
    }
    context.editorProcess.Reset();
    context.editorStarted = false;
    return exitCode;
}

}  // namespace

bool LaunchEditor(LaunchContext& context, Text& error)
{
    StartupMonitor monitor({.chinese = IsChineseUi(), .cancelFlag = &context.cancelRequested});

    const Text culture = ChooseEditorCulture(context);
    monitor.SetEditorCulture(culture);
    // From here the launcher and its progress window speak the editor's language.
    SetUiLanguage(culture);
    monitor.SetChinese(IsChineseLanguageCode(culture));
    WriteStartupReport(monitor, context.startupReport);

    const Text editorPath = EditorExecutablePath(context.editorRoot);
    if (!IsRegularFile(editorPath)) {
        error = kEditorNotFoundMessage.Now();
        return false;
    }
    context.preparationSdk = context.launchTarget;

    PreparationProgress progress;
    progress.phaseText = [&monitor](TextView text) { monitor.SetPhaseText(text); };
    progress.cacheState = [&monitor](std::int32_t cacheHit, bool verified) { monitor.SetCacheState(cacheHit, verified); };
    PreparationOutcome prepared;
    const bool ready = PrepareWorkspace(
        {
            .editorRoot = context.editorRoot,
            .sdk = context.preparationSdk,
            .gameDirectory = context.gameDirectory,
            .modFile = context.modFile,
            .selectedMod = context.selectedMod,
            .cancelFlag = &context.cancelRequested,
        },
        progress, prepared, error);
    context.modFile = std::move(prepared.modFile);
    if (!ready) {
        return false;
    }
    context.modProjectFile = std::move(prepared.workspace->modProjectFile);
    context.workspaceProject = std::move(prepared.workspace->editorProject);
    context.selectedMod = std::move(prepared.workspace->modId);
    if (context.cancelRequested.load()) {
        error = kLaunchCancelledMessage.Now();
        return false;
    }

    const EditorCommand command = BuildEditorCommandLine(
        {
            .editorPath = editorPath,
            .workspaceProject = context.workspaceProject,
            .gameDirectory = context.gameDirectory,
            .selectedMod = context.selectedMod,
            .modProjectFile = context.modProjectFile,
            .editorCulture = culture,
            .passThroughArguments = context.passThroughArguments,
        },
        context.editorRoot);
    const std::uint64_t startTime = CurrentFileTime();
    // No job and no inherited handles: the editor is the author's program and outlives us.
    if (!StartProcess({.application = editorPath, .commandLine = command.commandLine, .directory = context.editorRoot},
            context.editorProcess)) {
        error = kEditorStartRefusedMessage.Now();
        return false;
    }
    context.editorStarted = true;

    if (!RunsUnwatched(context.passThroughArguments) &&
        !WatchEditorStart(monitor, context.editorProcess.Process(), context.editorProcess.Id(), context.cancelRequested,
            command.logPath, startTime)) {
        const DWORD exitCode = ForgetEditor(context);
        error = context.cancelRequested.load() ? kLaunchCancelledMessage.Now() : StartFailureText(exitCode, command.logPath);
        return false;
    }
    WriteStartupReport(monitor, context.startupReport);
    return true;
}

}  // namespace korvane
