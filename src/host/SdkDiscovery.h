#pragma once
// Tells game folders from other folders and finds the one SDK (.kvsdk) of a folder.

#include "foundation/Text.h"

namespace korvane {

// Turns the requested game directory and SDK into the validated pair the run goes on with.
// False with the KV4300 text in `message` when no SDK is settled.
bool ResolveSdkSelection(TextView requestedGameDirectory, TextView requestedSdk, Text& gameDirectory,
    Text& sdk, Text& message);

}  // namespace korvane
