#pragma once
// The host environment: "developer" (a game's project folder without the bundle marker),
// "packaged" (any other game folder) or "standalone" (no game at all). The word travels
// through the run as one pass-through argument.

#include "foundation/Text.h"

#include <vector>

namespace korvane {

inline constexpr wchar_t kHostEnvironmentOption[] = L"-KorvaneHostEnvironment=";
inline constexpr wchar_t kDeveloperEnvironment[] = L"developer";
inline constexpr wchar_t kPackagedEnvironment[] = L"packaged";
inline constexpr wchar_t kStandaloneEnvironment[] = L"standalone";
// A project folder that carries this file is shipped as a packaged game.
inline constexpr wchar_t kHostBundleMarker[] = L".korvane-host-bundle.json";

// Whether an element begins with the option, case-sensitive, at its first unit.
bool HasHostEnvironmentArgument(const std::vector<Text>& passThroughArguments);
// The word of the last such element, or empty.
Text LastHostEnvironmentWord(const std::vector<Text>& passThroughArguments);

// "developer" or "packaged" for a project folder, by the marker; "packaged" for any other
// folder, whether or not it exists.
Text EnvironmentOfGameDirectory(TextView gameDirectory);
// As EnvironmentOfGameDirectory, and "standalone" for the empty text.
Text HostEnvironmentOf(TextView gameDirectory);

// Whether `target` (normalised) lies below `hostDirectory` (normalised) without passing a
// reparse point on the way: the target and every folder between it and the host are tested,
// the host itself is not. Paths that do not exist pass.
bool LiesPlainlyInside(TextView target, TextView hostDirectory);
// Only a packaged host constrains its SDK: it must lie plainly inside the game directory.
bool SdkBelongsToHost(TextView sdk, TextView gameDirectory);

}  // namespace korvane
