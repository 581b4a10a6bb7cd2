#include "launch/EditorCommandLine.h"

#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"
#include "launch/EditorEnvironment.h"

#include <windows.h>

#include <exception>
#include <utility>

namespace korvane {
namespace {

constexpr TextView kAbsLogOption = L"-ABSLOG=";

void AppendQuoted(Text& commandLine, TextView optionName, TextView value)
{
    commandLine.push_back(L' ');
    commandLine.append(QuoteCommandArgument(Text(optionName).append(value)));
}

// <folder of the project>\Saved\Logs\KorvaneLauncher-<pid>-<tick>.log, or empty when the
// folder can neither be made nor found.
Text MakeLauncherLogPath(TextView project)
{
    const Text folder = JoinPath(ParentPath(project), L"Saved\\Logs");
    if (CreateFolderTree(folder) != ERROR_SUCCESS && !IsDirectory(folder)) {
        return {};
    }
    return JoinPath(folder, LauncherLogFileName(GetCurrentProcessId(), GetTickCount64()));
}

}  // namespace

std::optional<Text> UserLogPath(std::span<const Text> passThroughArguments)
{
    std::optional<Text> logPath;
    for (const Text& argument : passThroughArguments) {
        if (StartsWithIgnoringCase(argument, kAbsLogOption)) {
            logPath = NormalizePath(TextView(argument).substr(kAbsLogOption.size()));
        }
    }
    return logPath;
}

Text LauncherLogFileName(std::uint32_t processId, std::uint64_t tickCount)
{
    return L"KorvaneLauncher-" + DecimalText(processId) + L"-" + DecimalText(tickCount) + L".log";
}

Text AssembleEditorCommandLine(const EditorCommandInputs& inputs, TextView madeLogPath)
{
    Text commandLine = QuoteCommandArgument(inputs.editorPath);
    AppendQuoted(commandLine, {}, inputs.workspaceProject);
    if (!inputs.gameDirectory.empty()) {
        AppendQuoted(commandLine, L"-KorvaneGameDir=", inputs.gameDirectory);
    }
    commandLine.append(L" -KorvaneSDKOffline");
    AppendQuoted(commandLine, L"-KorvaneSelectedMod=", inputs.selectedMod);
    AppendQuoted(commandLine, L"-KorvaneProject=", inputs.modProjectFile);
    commandLine.append(L" -NoSplash");
    AppendQuoted(commandLine, L"-culture=", inputs.editorCulture);
    for (const Text& argument : inputs.passThroughArguments) {
        AppendQuoted(commandLine, {}, argument);
    }
    if (!madeLogPath.empty()) {
        AppendQuoted(commandLine, kAbsLogOption, madeLogPath);
    }
    commandLine.append(L" -KorvaneLauncherSession");
    return commandLine;
}

void AppendCacheArguments(Text& commandLine, TextView cacheDirectory, TextView majorMinor)
{
    if (commandLine.find(L"-LocalDataCachePath=") == Text::npos) {
        AppendQuoted(commandLine, L"-LocalDataCachePath=", cacheDirectory);
    }
    if (majorMinor == L"5.8" && commandLine.find(L"-DDC=") == Text::npos) {
        commandLine.append(L" -DDC=(Local)");
    }
}

EditorCommand BuildEditorCommandLine(const EditorCommandInputs& inputs, TextView editorRoot)
{
    EditorCommand command;
    Text madeLogPath;
    if (std::optional<Text> userLogPath = UserLogPath(inputs.passThroughArguments)) {
        command.logPath = std::move(*userLogPath);
    } else {
        madeLogPath = MakeLauncherLogPath(inputs.workspaceProject);
        command.logPath = madeLogPath;
    }
    command.commandLine = AssembleEditorCommandLine(inputs, madeLogPath);

    RemoveSdksRootFromEnvironment();
    try {
        const Text majorMinor = ReadReceiptMajorMinor(editorRoot);
        if (!majorMinor.empty()) {
            if (const Text cacheDirectory = PrepareLocalDataCache(majorMinor); !cacheDirectory.empty()) {
                AppendCacheArguments(command.commandLine, cacheDirectory, majorMinor);
            }
        }
    } catch (const std::exception&) {
        // No receipt, or one that cannot be read: the editor runs without the shared cache.
    }
    return command;
}

}  // namespace korvane
