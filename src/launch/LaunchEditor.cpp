#include "launch/LaunchEditor.h"

#include "foundation/Paths.h"
#include "language/EditorSettingsFile.h"
#include "language/LanguageChoice.h"
#include "launch/EditorCommandLine.h"
#include "launch/LaunchContext.h"
#include "launch/LaunchErrors.h"
#include "launch/UiLanguage.h"
#include "startup/StartupMonitor.h"
#include "startup/StartupReport.h"
#include "startup/WatchEditorStart.h"
#include "tool/WorkspacePreparation.h"

#include <windows.h>

#include <vector>

namespace korvane {
namespace {

inline constexpr LocalizedText kLaunchCancelledMessage{L"Editor launch cancelled.", L"编辑器启动已取消。"};
inline constexpr LocalizedText kEditorStartRefusedMessage{
    L"The official Unreal Editor could not be started.", L"无法启动 Unreal Editor。"};
inline constexpr LocalizedText kStartFailedBefore{L"Editor startup failed (exit code ", L"编辑器启动失败（退出码 "};
inline constexpr LocalizedText kStartFailedAfter{
    L"). Check the startup log in Saved/Logs.", L"）。请查看 Saved/Logs 中的启动日志。"};

// The language the user asked for: the run's, else the saved one, else English, and then
// the last -culture= (or, without one, the last -language=) among the pass-through words.
Text RequestedLanguage(const LaunchContext& context)
{
    Text requested = context.language;
    if (requested.empty()) {
        requested = ReadEditorLanguageSetting(EditorSettingsPath(context.editorRoot));
    }
    if (requested.empty()) {
        requested = L"en";
    }
    const Text* culture = nullptr;
    const Text* language = nullptr;
    for (const Text& argument : context.passThroughArguments) {
        if (StartsWithIgnoringCase(argument, L"-culture=")) {
            culture = &argument;
        } else if (StartsWithIgnoringCase(argument, L"-language=")) {
            language = &argument;
        }
    }
    if (culture != nullptr) {
        return culture->substr(9);
    }
    if (language != nullptr) {
        return language->substr(10);
    }
    return requested;
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

Text StartFailureText(DWORD exitCode, TextView logPath)
{
    Text text = kStartFailedBefore.Now() + DecimalText(exitCode) + kStartFailedAfter.Now();
    if (!logPath.empty()) {
        text += L'\n';
        text += logPath;
    }
    return text;
}

bool StartEditor(LaunchContext& context, const Text& editorPath, const Text& commandLine)
{
    std::vector<wchar_t> writable(commandLine.begin(), commandLine.end());
    writable.push_back(L'\0');
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    // No job and no inherited handles: the editor is the author's program and outlives us.
    if (!CreateProcessW(editorPath.c_str(), writable.data(), nullptr, nullptr, FALSE, 0, nullptr,
            context.editorRoot.c_str(), &startup, &started)) {
        return false;
    }
    context.editorProcess.process.Reset(started.hProcess);
    context.editorProcess.thread.Reset(started.hThread);
    context.editorProcess.processId = started.dwProcessId;
    context.editorProcess.threadId = started.dwThreadId;
    context.editorStarted = true;
    return true;
}

// The editor ended, or was ended on a cancel, before its window stood.
void ForgetEditor(LaunchContext& context, DWORD& exitCode)
{
    exitCode = 1;
    if (!GetExitCodeProcess(context.editorProcess.process.Get(), &exitCode)) {
        exitCode = 1;
    }
    context.editorProcess.Reset();
    context.editorStarted = false;
}

}  // namespace

bool LaunchEditor(LaunchContext& context, Text& error)
{
    StartupMonitor monitor(0, false, IsChineseUi(), &context.cancelRequested);

    const Text culture = ResolveLanguage(ListEditorLanguages(context.editorRoot), RequestedLanguage(context));
    // From here the progress window speaks the editor's language.
    SetUiLanguage(culture);
    monitor.SetEditorCulture(culture);
    WriteStartupReport(monitor, context.startupReport);

    const Text editorPath = JoinPath(context.editorRoot, L"Engine\\Binaries\\Win64\\UnrealEditor.exe");
    if (!IsRegularFile(editorPath)) {
        error = kEditorNotFoundMessage.Now();
        return false;
    }
    context.preparationSdk = context.launchTarget;

    PreparationProgress progress;
    progress.phaseText = [&monitor](TextView text) { monitor.SetPhaseText(text); };
    progress.cacheState = [&monitor](std::int32_t cacheHit, bool verified) { monitor.SetCacheState(cacheHit, verified); };
    if (!PrepareWorkspace(context, progress, error)) {
        return false;
    }
    if (context.cancelRequested.load()) {
        error = kLaunchCancelledMessage.Now();
        return false;
    }

    const EditorCommand command = BuildEditorCommandLine(context, editorPath, culture);
    const std::uint64_t startTime = CurrentFileTime();
    if (!StartEditor(context, editorPath, command.commandLine)) {
        error = kEditorStartRefusedMessage.Now();
        return false;
    }

    if (!RunsUnwatched(context.passThroughArguments) &&
        !WatchEditorStart(monitor, context.editorProcess.process.Get(), context.editorProcess.processId,
            context.cancelRequested, command.logPath, startTime)) {
        DWORD exitCode = 1;
        ForgetEditor(context, exitCode);
        error = context.cancelRequested.load() ? kLaunchCancelledMessage.Now() : StartFailureText(exitCode, command.logPath);
        return false;
    }
    WriteStartupReport(monitor, context.startupReport);
    return true;
}

}  // namespace korvane
