#pragma once
// Where the editor install lies relative to the launcher, and which engine version it is.
// The editor can stand beside the launcher, in a "KorvaneEditor" folder of a game or project
// directory, or in a version folder below that.

#include "foundation/Text.h"

namespace korvane {

// The editor's culture folders, relative to an install.
inline constexpr wchar_t kEditorCultureFolder[] = L"Engine/Content/Localization/Editor";

// Major.Minor from the install's UnrealEditor.version, else from its Build.version; empty
// when neither file (of at most 1 MiB) holds both numbers. The range is not checked here.
Text ReadEngineVersion(TextView installDirectory);

// Walks up from `startDirectory` to the nearest install that holds the culture folder (and,
// when `version` is not empty, has that engine version). A ".uproject" file met on the way
// pins the version for the rest of the walk and, when `version` came in empty, is written
// back into it. Gives the start directory when nothing is found, empty for an empty start.
Text FindEditorInstall(TextView startDirectory, Text& version);

}  // namespace korvane
