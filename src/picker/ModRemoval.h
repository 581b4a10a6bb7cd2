#pragma once
// Import of an editable Mod package, and its removal: to the Windows Recycle Bin only, done by
// the launcher itself and checked by looking at the file afterwards.

#include "foundation/Text.h"

#include <windows.h>

namespace korvane {

// import-source with the SDK, game directory, install and the chosen package, each quoted once.
Text BuildImportCommand(TextView modFile, TextView sdk, TextView gameDirectory, TextView editorRoot);

// The question asked before a removal: the package's name and normalised path between the two
// fixed parts.
Text RemovalQuestion(TextView name, TextView modProject);

// Moves a package to the Recycle Bin without any dialog of the shell's. False with the user's
// message in `error` for anything that is no plain ".umod" file (a folder, a link or junction of
// that name, a missing file), for a shell that fails or aborts, and when the file is still there
// afterwards. Runs on the worker, with a COM apartment of its own.
bool MoveModToRecycleBin(HWND owner, TextView modFile, Text& error);

}  // namespace korvane
