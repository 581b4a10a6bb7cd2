#pragma once
// The shell's file and folder choosers, each with its own COM apartment for the length of the
// call, on the window thread.

#include "foundation/Text.h"

#include <windows.h>

namespace korvane {

// A file chosen in the open or save dialog, or empty when cancelled or failed. One filter;
// saving asks before overwriting, opening wants an existing file.
Text ChooseFilePath(HWND owner, TextView title, TextView filterName, TextView filterPattern, TextView defaultExtension,
    bool save, TextView presetName);

// A folder of the file system, or empty when cancelled or failed.
Text ChooseGameFolder(HWND owner);

}  // namespace korvane
