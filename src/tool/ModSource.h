#pragma once
// Turns a Mod id from the command line into the Mod's source package, by asking the tool
// for the SDK's list of sources.

#include "foundation/Text.h"

#include <atomic>

namespace korvane {

struct ModSourceRequest {
    TextView editorRoot{};
    TextView sdk{};
    TextView gameDirectory{};  // may be empty
    TextView selectedMod{};    // the Mod id; empty when the package is known
    const std::atomic<bool>* cancelFlag = nullptr;
};

// True when the launch can go on: `modFile` was given, no Mod id was, or the id was found and
// `modFile` now holds its package. False with the user's message in `error`.
bool ResolveModSource(const ModSourceRequest& request, Text& modFile, Text& error);

// The `modProject` of the first row of `mods` whose `id` equals `modId` exactly, or empty.
// Throws std::runtime_error when `listing` is no JSON.
Text FindModSourceInListing(BytesView listing, TextView modId);

}  // namespace korvane
