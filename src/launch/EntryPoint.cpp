#include "launch/EntryPoint.h"

#include "context/LaunchContext.h"
#include "context/SharedConstants.h"
#include "context/UiLanguage.h"
#include "foundation/GdiplusSession.h"
#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"
#include "host/HostConfiguration.h"
#include "host/HostContext.h"
#include "host/HostEnvironment.h"
#include "host/SdkDiscovery.h"
#include "language/EditorSettingsFile.h"
#include "language/LanguageChoice.h"
#include "launch/EntryOptions.h"
#include "launch/HostContextReport.h"
#include "launch/LaunchEditor.h"
#include "launch/LaunchErrors.h"
#include "launch/SessionGate.h"
#include "picker/Picker.h"
#include "startup/StartupPreview.h"
#include "tool/LauncherCheck.h"

#include <windows.h>
#include <shellapi.h>

#include <exception>
#include <vector>

namespace korvane {
namespace {

bool ReadArguments(std::vector<Text>& arguments)
{
    int count = 0;
    UniqueLocalMemory list(reinterpret_cast<HLOCAL>(CommandLineToArgvW(GetCommandLineW(), &count)));
    if (!list) {
        return false;
    }
    const auto* argv = static_cast<const LPWSTR*>(list.Get());
    for (int index = 1; index < count; ++index) {
        arguments.emplace_back(argv[index]);
    }
    return true;
}

bool IsAscii(TextView text) noexcept
{
    for (const wchar_t unit : text) {
        if (unit >= 128) {
            return false;
        }
    }
    return true;
}

// Both install checks; 0 when they pass, else the exit code after the message.
int CheckInstall(const LaunchContext& context, bool headless)
{
    if (!IsRegularFile(EditorExecutablePath(context.editorRoot))) {
        return ShowLaunchError(kEditorNotFoundMessage.Now(), headless, kExitEditorMissing);
    }
    if (!IsAscii(context.editorRoot)) {
        return ShowLaunchError(kNonAsciiRootMessage.Now(), headless, kExitNonAsciiRoot);
    }
    return kExitSuccess;
}

// Direct edit has handed over to the editor: wait for it without limit and pass its code on.
int WaitForEditorExit(LaunchContext& context)
{
    DWORD exitCode = 1;
    WaitForSingleObject(context.editorProcess.Process(), INFINITE);
    GetExitCodeProcess(context.editorProcess.Process(), &exitCode);
    context.editorProcess.Reset();
    context.editorStarted = false;
    return static_cast<int>(exitCode);
}

// The host configuration, then the host context: each step sees what the one before decided.
// Throws what the configuration throws.
void RunHostSteps(LaunchContext& context, Text& requestedGameDirectory)
{
    for (const auto step : {ApplyHostConfiguration, ResolveHostContext}) {
        HostChoice choice = step({context.editorRoot, requestedGameDirectory, context.requestedSdk,
            context.passThroughArguments});
        requestedGameDirectory = std::move(choice.gameDirectory);
        context.requestedSdk = std::move(choice.sdk);
        if (!choice.environmentArgument.empty()) {
            context.passThroughArguments.push_back(std::move(choice.environmentArgument));
        }
    }
}

// The language of the run is the one saved in the editor's settings, else English, mapped
// onto the languages the install has; the system's UI language plays no part. Only the
// picker's language list saves a change; -KorvanePickerPreviewLanguage= overrides it later
// for this run alone.
void ChooseStartLanguage(LaunchContext& context)
{
    context.languages = ListEditorLanguages(context.editorRoot, {});
    context.editorSettingsFile = EditorSettingsPath(context.editorRoot);
    const Text savedLanguage = ReadEditorLanguageSetting(context.editorSettingsFile);
    context.language = ResolveLanguage(context.languages, savedLanguage.empty() ? Text(L"en") : savedLanguage);
    SetUiLanguage(context.language);
}

int Run(LaunchContext& context)
{
    context.editorRoot = LocateEditorRoot();
    ChooseStartLanguage(context);

    std::vector<Text> arguments;
    if (!ReadArguments(arguments)) {
        return kExitCommandLine;
    }
    EntryOptions options;
    options.startupPreviewOptions.chinese = IsChineseUi();
    if (ParseEntryArguments(arguments, options, context) == ArgumentsOutcome::ProjectFileGiven) {
        return ShowLaunchError(kProjectFileRemovedMessage.Now(), options.headless, kExitBadRequest);
    }
    arguments.clear();

    if (options.emptyHost) {
        options.requestedGameDirectory.clear();
        context.requestedSdk.clear();
        context.selectedMod.clear();
        context.modFile.clear();
    } else if (!context.pickerPreview && !options.startupPreview && !options.instanceCheck) {
        try {
            RunHostSteps(context, options.requestedGameDirectory);
        } catch (const std::exception&) {
            return ShowLaunchError(kInvalidHostConfigurationMessage.Now(), options.headless, kExitBadRequest);
        }
    }
    context.startupReport = options.startupPreviewOptions.reportPath;

    if (options.resolveHostContext) {
        const Bytes report = ComposeHostContextReport(options.requestedGameDirectory, context.requestedSdk,
            LastHostEnvironmentWord(context.passThroughArguments));
        return WriteHostContextReport(options.hostContextReportPath, report) ? kExitSuccess : kExitBadRequest;
    }

    const ClosingEditorWait closingWait{
        options.waitForEditorPid, options.headless, options.startupPreview || context.pickerPreview};
    if (!WaitForClosingEditor(context.editorRoot, closingWait)) {
        return kExitSessionInUse;
    }

    UniqueHandle launcherEvent;  // held until the process ends, so later launchers see this session
    if (options.instanceCheck) {
        if (!PassSessionGate(launcherEvent)) {
            return ShowLaunchError(kSessionInUseMessage.Now(), options.headless, kExitSessionInUse);
        }
        return kExitSuccess;
    }
    if (options.startupPreview) {
        return RunStartupPreview(options.startupPreviewOptions);
    }
    if (context.pickerPreview) {
        return RunPicker(context);
    }
    if (!options.headless && !PassSessionGate(launcherEvent)) {
        return ShowLaunchError(kSessionInUseMessage.Now(), options.headless, kExitSessionInUse);
    }

    if (const int installResult = CheckInstall(context, options.headless); installResult != kExitSuccess) {
        return installResult;
    }

    if (!options.requestedGameDirectory.empty() || !context.requestedSdk.empty()) {
        Text message;
        if (!ResolveSdkSelection(options.requestedGameDirectory, context.requestedSdk, context.gameDirectory,
                context.launchTarget, message)) {
            return ShowLaunchError(message, options.headless, kExitBadRequest);
        }
        if (options.headless) {
            return RunLauncherCheck(context.editorRoot, context.launchTarget) ? kExitSuccess : kExitCheckFailed;
        }
        if (!context.selectedMod.empty() || !context.modFile.empty()) {
            Text error;
            if (!LaunchEditor(context, error)) {
                return ShowLaunchError(error, false, kExitLaunchFailed);
            }
            return WaitForEditorExit(context);
        }
        return RunPicker(context);
    }

    if (options.headless) {
        return options.emptyHost ? kExitSuccess : kExitBadRequest;
    }
    return RunPicker(context);
}

}  // namespace

int RunLauncher()
{
    // The launcher's folder is often writable by users: load no DLL from it, nor from the PATH.
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    const std::uint64_t startTick = GetTickCount64();
    // Declared before the context so that the context goes first and GDI+ shuts down last.
    GdiplusSession gdiplus;
    LaunchContext context;
    context.startTick = startTick;
    return Run(context);
}

}  // namespace korvane
