#pragma once
// The host environment: "developer" (a game's project folder without the bundle marker),
// "packaged" (any other game folder) or "standalone" (no game at all). The word travels
// through the run as one pass-through argument.

#include "foundation/Text.h"

#include <span>
#include <vector>

namespace korvane {

inline constexpr wchar_t kHostEnvironmentOption[] = L"-KorvaneHostEnvironment=";
inline constexpr wchar_t kDeveloperEnvironment[] = L"developer";
inline constexpr wchar_t kPackagedEnvironment[] = L"packaged";
inline constexpr wchar_t kStandaloneEnvironment[] = L"standalone";
// A project folder that carries this file is shipped as a packaged game.
inline constexpr wchar_t kHostBundleMarker[] = L".korvane-host-bundle.json";

// What a host step was given: the install, what the run asks for so far, and the arguments that
// reach the editor (where an earlier step or the command line may have named the environment).
struct HostRequest {
    TextView editorRoot{};
    TextView gameDirectory{};
    TextView sdk{};
    std::span<const Text> passThroughArguments{};
};

// What a host step decided: the game directory and SDK the run goes on with (the requested ones
// when the step changed nothing), and the environment argument to hand the editor, if any.
struct HostChoice {
    Text gameDirectory;
    Text sdk;
    Text environmentArgument;  // "-KorvaneHostEnvironment=<word>", or empty for none to add
};

// The choice that leaves the request as it stands.
HostChoice Unchanged(const HostRequest& request);
// The whole argument for the editor: the option and the word.
Text HostEnvironmentArgument(TextView word);

// Whether an element begins with the option, case-sensitive, at its first unit.
bool HasHostEnvironmentArgument(std::span<const Text> passThroughArguments);
// The word of the last such element, or empty.
Text LastHostEnvironmentWord(std::span<const Text> passThroughArguments);

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
