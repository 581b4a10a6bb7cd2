#pragma once
// KorvaneUpdate.config.json beside the launcher: which game the install belongs to.

#include "foundation/Text.h"

namespace korvane {

struct LaunchContext;

// May fill `requestedGameDirectory` and `requestedSdk` and append one host environment
// argument. Throws std::runtime_error for a bad file; a missing file changes nothing.
void ApplyHostConfiguration(LaunchContext& context, Text& requestedGameDirectory);

}  // namespace korvane
