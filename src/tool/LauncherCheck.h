#pragma once
// -KorvaneLauncherCheck: a silent self-test of an install, answered by exit code alone.

#include "foundation/Text.h"

namespace korvane {

struct LaunchContext;

// Runs `sdk-info` for the settled SDK; true when the tool accepted it.
bool RunLauncherCheck(const LaunchContext& context, TextView sdk);

}  // namespace korvane
