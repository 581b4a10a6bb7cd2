#pragma once
// Values that several parts of the launcher must agree on: the process exit codes, where the
// editor lies in an install, and the code of a cancelled run.

#include "foundation/Text.h"

#include <cstdint>

namespace korvane {

// Exit codes of the launcher process. After a launch it exits with the editor's own code.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitCommandLine = 1;       // the command line could not be split
inline constexpr int kExitEditorMissing = 2;     // no UnrealEditor.exe below the install root
inline constexpr int kExitBadRequest = 3;        // no SDK, a .uproject, a bad host configuration or report path
inline constexpr int kExitCheckFailed = 4;       // -KorvaneLauncherCheck: the tool refused the SDK
inline constexpr int kExitLaunchFailed = 6;      // Direct edit: the editor could not be started
inline constexpr int kExitNoPickerWindow = 7;    // the picker's main window could not be made
inline constexpr int kExitNonAsciiRoot = 8;      // the install root holds a character outside ASCII
inline constexpr int kExitSessionInUse = 9;      // another editing session is open or still closing

// ERROR_CANCELLED: the exit code given to a tool run that was cancelled or timed out, and to
// an editor that was ended on a cancel.
inline constexpr std::uint32_t kCancelledExitCode = 1223;

// The editor below the install root.
inline constexpr wchar_t kEditorRelativePath[] = L"Engine\\Binaries\\Win64\\UnrealEditor.exe";

// JoinPath of the install root and kEditorRelativePath.
Text EditorExecutablePath(TextView editorRoot);

}  // namespace korvane
