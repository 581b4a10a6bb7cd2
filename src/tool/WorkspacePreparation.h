#pragma once
// The preparation stretch of an editor launch: the tool's `prepare` builds the Mod's
// workspace and names it in a selection file, while its progress reaches the start-up
// window through two callbacks. Shows no window of its own; the one question it may ask is
// the source-conflict box.

#include "foundation/Text.h"

#include <cstdint>
#include <functional>

namespace korvane {

struct LaunchContext;

struct PreparationProgress {
    std::function<void(TextView)> phaseText;                          // the start-up phase line
    std::function<void(std::int32_t cacheHit, bool verified)> cacheState;  // the SDK cache line
};

// Prepares the workspace for `preparationSdk` and the Mod in `modFile` or `selectedMod`.
// True: `modProjectFile`, `launchTarget` (the workspace's KorvaneSDK.uproject) and
// `selectedMod` hold the tool's answer, and `modFile` may have been filled from the Mod id.
// False: `error` holds the user's message. The launch selection is saved whenever the tool
// succeeded, even when its answer is then refused. No temporary file outlives the call.
bool PrepareWorkspace(LaunchContext& context, const PreparationProgress& progress, Text& error);

}  // namespace korvane
