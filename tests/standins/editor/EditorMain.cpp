// Stand-in for UnrealEditor.exe. It records what it was given, one line per run
// {"commandLine":"...","cwd":"...","UE-LocalDataCachePath":value-or-null,"UE_SDKS_ROOT":value-or-null,"pid":N}
// in the file named by KORVANE_STANDIN_EDITOR_RECORD, or else "UnrealEditor.record.jsonl" beside
// the editor. Unless started with -unattended it holds the event
// Local\Korvane.AuthorEditor.Interactive while it runs. It writes the log named by -ABSLOG= (the
// last one wins; without one, Saved\Logs\<project>.log beside the project), shows a splash, then
// its main window, and ends with the scenario's exit code. Scenarios: see editor/EditorScenario.h.
#include "editor/EditorLog.h"
#include "editor/EditorScenario.h"
#include "editor/EditorWindows.h"

#include "common/StandinSupport.h"

#include "foundation/Paths.h"
#include "foundation/Process.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

namespace korvane::standins {
namespace {

constexpr wchar_t kEditorEvent[] = L"Local\\Korvane.AuthorEditor.Interactive";

Text InstallRoot()
{
    return ParentPath(ParentPath(ParentPath(ExecutableFolder())));
}

Text EngineVersion()
{
    const std::optional<JsonValue> version =
        ReadJsonFile(JoinPath(ExecutableFolder(), L"UnrealEditor.version"), 1048576);
    if (!version) {
        return L"5.6";
    }
    return FindJsonMember(*version, L"MajorVersion").text + L"." + FindJsonMember(*version, L"MinorVersion").text;
}

struct ParsedCommandLine {
    EditorRun run;
    Text logPath;
    bool unattended = false;
};

ParsedCommandLine ParseCommandLine()
{
    ParsedCommandLine parsed;
    parsed.run.commandLine = GetCommandLineW();
    parsed.run.engineVersion = EngineVersion();
    const std::vector<Text> arguments = CommandLineArguments();
    for (size_t index = 1; index < arguments.size(); ++index) {
        const Text& argument = arguments[index];
        const auto valueOf = [&](TextView prefix) { return argument.substr(prefix.size()); };
        if (StartsWithIgnoringCase(argument, L"-ABSLOG=")) {
            parsed.logPath = valueOf(L"-ABSLOG=");
        } else if (argument.starts_with(L"-KorvaneSelectedMod=")) {
            parsed.run.selectedMod = valueOf(L"-KorvaneSelectedMod=");
        } else if (argument.starts_with(L"-KorvaneProject=")) {
            parsed.run.modProject = valueOf(L"-KorvaneProject=");
        } else if (EqualsIgnoringCase(argument, L"-unattended")) {
            parsed.unattended = true;
        } else if (!argument.starts_with(L"-") && parsed.run.project.empty()) {
            parsed.run.project = argument;
        }
    }
    if (parsed.logPath.empty() && !parsed.run.project.empty()) {
        Text name = LastPathComponent(parsed.run.project);
        name = name.substr(0, name.rfind(L'.'));
        parsed.logPath = JoinPath(ParentPath(parsed.run.project), L"Saved\\Logs\\" + name + L".log");
    }
    return parsed;
}

void RecordRun()
{
    const std::optional<Text> named = EnvironmentValue(L"KORVANE_STANDIN_EDITOR_RECORD");
    const Text record = named && !named->empty() ? *named : JoinPath(ExecutableFolder(), L"UnrealEditor.record.jsonl");
    const Text line = L"{\"commandLine\":" + QuoteJsonText(GetCommandLineW()) + L",\"cwd\":" +
        QuoteJsonText(CurrentFolder()) + L",\"UE-LocalDataCachePath\":" +
        JsonStringOrNull(EnvironmentValue(L"UE-LocalDataCachePath")) + L",\"UE_SDKS_ROOT\":" +
        JsonStringOrNull(EnvironmentValue(L"UE_SDKS_ROOT")) + L",\"pid\":" + DecimalText(GetCurrentProcessId()) + L"}";
    AppendLine(record, TextToUtf8(line));
}

// Starts the launcher of this install as a child, as the editor does when the author switches Mods.
void StartLauncher(const EditorScenario& scenario, bool namingSelf)
{
    const Text root = InstallRoot();
    const Text launcher = JoinPath(root, L"KorvaneEditor.exe");
    Text commandLine = QuoteCommandArgument(launcher);
    for (const Text& argument : scenario.launcherArguments) {
        commandLine += L" " + QuoteCommandArgument(argument);
    }
    if (namingSelf) {
        commandLine += L" " + QuoteCommandArgument(L"-KorvaneWaitForEditorPid=" + DecimalText(GetCurrentProcessId()));
    }
    StartedProcess started;
    StartProcess({.application = launcher, .commandLine = commandLine, .directory = root}, started);
}

DWORD Run(HINSTANCE instance)
{
    const EditorScenario scenario = LoadEditorScenario();
    const ParsedCommandLine parsed = ParseCommandLine();
    RecordRun();
    UniqueHandle interactive;
    if (!parsed.unattended) {
        interactive.Reset(CreateEventW(nullptr, TRUE, FALSE, kEditorEvent));
    }
    EngineLog log(parsed.logPath);

    if (scenario.mode == L"crashBeforeWindow" || scenario.mode == L"exitBeforeWindow") {
        log.SetPause([](DWORD ms) { Sleep(ms); });
        log.WriteEarlyLines(parsed.run, scenario);
        if (scenario.mode == L"crashBeforeWindow") {
            TerminateProcess(GetCurrentProcess(), scenario.exitCodeGiven ? scenario.exitCode : 0xC0000005);
        }
        log.WriteExitLines(scenario.exitCode);
        return scenario.exitCode;
    }

    EditorWindows windows(instance);
    log.SetPause([&windows](DWORD ms) { windows.PumpFor(ms); });
    const ULONGLONG splashShown = GetTickCount64();
    windows.ShowSplash(L"Unreal Editor " + parsed.run.engineVersion + L" - starting");
    log.WriteEarlyLines(parsed.run, scenario);
    log.WriteInitialisedLines(parsed.run, scenario);
    if (scenario.mode == L"noWindow") {
        windows.PumpFor(scenario.runMs > 0 ? scenario.runMs : INFINITE);
        return scenario.exitCode;
    }
    const ULONGLONG elapsed = GetTickCount64() - splashShown;
    if (elapsed < scenario.splashMs) {
        windows.PumpFor(static_cast<DWORD>(scenario.splashMs - elapsed));
    }
    Text name = LastPathComponent(parsed.run.project);
    name = name.substr(0, name.rfind(L'.'));
    windows.ShowMain((name.empty() ? Text(L"Untitled") : name) + L" - Unreal Editor");
    windows.CloseSplash();
    log.WriteReadyLines();
    if (scenario.mode == L"startLauncher" || scenario.mode == L"waitForSelf") {
        StartLauncher(scenario, scenario.mode == L"waitForSelf");
    }
    windows.PumpFor(scenario.runMs > 0 ? scenario.runMs : INFINITE);
    windows.CloseMain();
    log.WriteExitLines(scenario.exitCode);
    return scenario.exitCode;
}

}  // namespace
}  // namespace korvane::standins

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int)
{
    ExitProcess(korvane::standins::Run(instance));
}
