#pragma once
// The command line given to UnrealEditor.exe. The editor build reads these words, so their
// order, letter case and quoting are a contract: every value is quoted together with its
// option name, and the bare switches stand exactly as written.

#include "foundation/Text.h"

#include <cstdint>
#include <optional>
#include <span>

namespace korvane {

struct EditorCommand {
    Text commandLine;
    Text logPath;  // the log the editor writes, for the start-up watch and messages; may be empty
};

// The plain values the command line is assembled from; views into the caller's data.
struct EditorCommandInputs {
    TextView editorPath{};
    TextView workspaceProject{};  // the workspace's KorvaneSDK.uproject
    TextView gameDirectory{};  // may be empty
    TextView selectedMod{};
    TextView modProjectFile{};
    TextView editorCulture{};
    std::span<const Text> passThroughArguments{};
};

// The log path of the user's own "-ABSLOG=" (letter case ignored, the last one wins),
// normalised; nullopt when the user gave none. Such an argument is passed on as it is and
// stops the launcher from making a log path of its own.
std::optional<Text> UserLogPath(std::span<const Text> passThroughArguments);

// "KorvaneLauncher-<process id>-<tick count>.log": two launches of one workspace never
// share a log file.
Text LauncherLogFileName(std::uint32_t processId, std::uint64_t tickCount);

// Everything up to and including " -KorvaneLauncherSession". `madeLogPath`, when not empty,
// is appended as "-ABSLOG=" behind the pass-through arguments.
Text AssembleEditorCommandLine(const EditorCommandInputs& inputs, TextView madeLogPath);

// Appends "-LocalDataCachePath=" unless the command line holds that text anywhere, then
// " -DDC=(Local)" for engine 5.8 unless it holds "-DDC=" anywhere.
void AppendCacheArguments(Text& commandLine, TextView cacheDirectory, TextView majorMinor);

// The whole command line and log path for one start of the editor, from the inputs and the
// receipt of the install at `editorRoot`. Also prepares the environment the editor inherits:
// removes UE_SDKS_ROOT and, when the receipt names an engine build, sets UE-LocalDataCachePath.
// Call it right before the editor is started with an inherited environment. Never fails: an
// argument that cannot be made is left out.
EditorCommand BuildEditorCommandLine(const EditorCommandInputs& inputs, TextView editorRoot);

}  // namespace korvane
