#pragma once
// KorvaneUpdate.config.json beside the launcher: which game the install belongs to, which
// SDK it uses and which host environment the editor is told. A missing file is normal; a
// bad one ends the run (the entry point turns every exception into its own message).

#include "foundation/Text.h"
#include "host/HostEnvironment.h"

namespace korvane {

inline constexpr wchar_t kHostConfigurationFile[] = L"KorvaneUpdate.config.json";

// A path of the file, normalised: relative to `editorRoot`, or absolute when the word is
// exactly "developer". Throws std::runtime_error for an absolute path under any other word.
Text ResolveHostPath(TextView environment, TextView editorRoot, TextView value);

// Changes nothing when the request names a game directory. Otherwise the file of the install
// may name the game directory and the SDK, and the environment argument unless the arguments
// already hold one. Throws std::runtime_error for a bad file.
HostChoice ApplyHostConfiguration(const HostRequest& request);

}  // namespace korvane
