#include "tool/LauncherCheck.h"

#include "launch/LaunchContext.h"

namespace korvane {

bool RunLauncherCheck(const LaunchContext& /*context*/, TextView /*sdk*/)
{
    return false;
}

}  // namespace korvane
