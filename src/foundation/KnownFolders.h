#pragma once
// The user's local application data folder, the root of every per-user file the launcher
// keeps or reads: the selection store, the editor's settings, the derived data cache.

#include "foundation/Text.h"

namespace korvane {

// SHGetKnownFolderPath(FOLDERID_LocalAppData); empty when the folder cannot be had.
Text LocalAppDataFolder();

// SHCreateDirectoryExW with no window and all missing levels. Gives the call's own result
// (0, ERROR_ALREADY_EXISTS, ERROR_FILE_EXISTS or a failure), since callers differ in which
// results they accept.
int CreateFolderTree(TextView folder);

}  // namespace korvane
