#include "host/HostConfiguration.h"

#include "launch/LaunchContext.h"

namespace korvane {

void ApplyHostConfiguration(LaunchContext& /*context*/, Text& /*requestedGameDirectory*/)
{
}

}  // namespace korvane
