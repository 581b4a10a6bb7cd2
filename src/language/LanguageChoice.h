#pragma once
// Which languages the installed editor can show, which one a request maps to, and where
// the per-user editor settings file that remembers the choice lies.

#include "context/LanguageRow.h"
#include "foundation/Text.h"

#include <vector>

namespace korvane {

// The culture folders of the install that hold Editor.locres, "en" first; never empty.
std::vector<LanguageRow> ListEditorLanguages(TextView editorRoot, TextView version = {});
// Maps a requested code to one of `languages` (or to "en"); never fails.
Text ResolveLanguage(const std::vector<LanguageRow>& languages, TextView requested);
// The per-user EditorSettings.ini of the install's engine version (5.0 to 5.8), or empty.
Text EditorSettingsPath(TextView editorRoot);

}  // namespace korvane
