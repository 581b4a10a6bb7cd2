#include "host/SdkDiscovery.h"

namespace korvane {

bool ResolveSdkSelection(TextView /*requestedGameDirectory*/, TextView /*requestedSdk*/, Text& /*gameDirectory*/,
    Text& /*sdk*/, Text& /*message*/)
{
    return false;
}

}  // namespace korvane
