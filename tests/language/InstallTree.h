#pragma once
// Scratch editor installs for the language tests: culture folders and version files as an
// engine lays them out.

#include "foundation/Text.h"

#include <initializer_list>

namespace korvane::testing {

// Engine/Binaries/Win64/UnrealEditor.version of `install` naming `version` ("5.3").
void WriteEditorVersionFile(TextView install, TextView version);
// Engine/Content/Localization/Editor/<code>/Editor.locres for each code.
void WriteEditorCultures(TextView install, std::initializer_list<const wchar_t*> codes);
// A whole install: the culture folder with `codes` and, unless empty, the version file.
void MakeEditorInstall(TextView install, TextView version, std::initializer_list<const wchar_t*> codes = {L"en"});

}  // namespace korvane::testing
