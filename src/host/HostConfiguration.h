#pragma once
// KorvaneUpdate.config.json beside the launcher: which game the install belongs to, which
// SDK it uses and which host environment the editor is told. A missing file is normal; a
// bad one ends the run (the entry point turns every exception into its own message).

#include "foundation/Text.h"

namespace korvane {

struct LaunchContext;

inline constexpr wchar_t kHostConfigurationFile[] = L"KorvaneUpdate.config.json";

// A path of the file, normalised: relative to `editorRoot`, or absolute when the word is
// exactly "developer". Throws std::runtime_error for an absolute path under any other word.
Text ResolveHostPath(TextView environment, TextView editorRoot, TextView value);

// Does nothing when the command line named a game directory. Otherwise may fill
// `requestedGameDirectory` and `requestedSdk` and append one host environment argument.
// Throws std::runtime_error for a bad file.
void ApplyHostConfiguration(LaunchContext& context, Text& requestedGameDirectory);

}  // namespace korvane
