#pragma once
// Turns a Mod id from the command line into the Mod's source package, by asking the tool
// for the SDK's list of sources.

#include "foundation/Text.h"

namespace korvane {

struct LaunchContext;

// True when the launch can go on: `modFile` was given, no Mod id was, or the id was found
// and `modFile` now holds its package. False with the user's message in `error`.
bool ResolveModSource(LaunchContext& context, Text& error);

// The `modProject` of the first row of `mods` whose `id` equals `modId` exactly, or empty.
// Throws std::runtime_error when `listing` is no JSON.
Text FindModSourceInListing(BytesView listing, TextView modId);

}  // namespace korvane
