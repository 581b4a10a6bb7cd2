#pragma once
// -KorvaneLauncherCheck: a silent self-test of an install, answered by exit code alone.

#include "foundation/Text.h"

#include <cstdint>

namespace korvane {

inline constexpr std::uint32_t kLauncherCheckTimeLimitMs = 180000;

// Runs `sdk-info` for the settled SDK with the install's tool, hidden and without reading its
// output; true when the tool exits 0 within the limit. A tool over the limit is killed and
// counts as a failure. `timeLimitMs` exists for tests; the product always runs with the constant.
bool RunLauncherCheck(TextView editorRoot, TextView sdk, std::uint32_t timeLimitMs = kLauncherCheckTimeLimitMs);

}  // namespace korvane
