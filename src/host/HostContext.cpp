#include "host/HostContext.h"

#include "launch/LaunchContext.h"

namespace korvane {

void ResolveHostContext(LaunchContext& /*context*/, Text& /*requestedGameDirectory*/)
{
}

}  // namespace korvane
