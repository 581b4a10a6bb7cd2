#pragma once
// Works out game and SDK when neither the command line nor the host configuration named
// them: from the stored selection, then from the folder the install lies in.

#include "foundation/Text.h"

namespace korvane {

struct LaunchContext;

// Lets no exception out.
void ResolveHostContext(LaunchContext& context, Text& requestedGameDirectory);

}  // namespace korvane
