#pragma once
// The editor's per-user EditorSettings.ini, section [Internationalization]: the launcher's
// memory of the language, read at start and rewritten without harming the rest of the file.

#include "foundation/Text.h"

namespace korvane {

// The stored Language (or, when that is empty, Culture) value; empty when none.
Text ReadEditorLanguageSetting(TextView path);
// True when the file now says Language= with `languageCode`.
bool SaveEditorLanguageSetting(TextView path, TextView languageCode);

}  // namespace korvane
