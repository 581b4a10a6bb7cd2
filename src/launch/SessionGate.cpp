#include "launch/SessionGate.h"

#include "launch/LaunchContext.h"

namespace korvane {

bool WaitForClosingEditor(const LaunchContext& /*context*/, const ClosingEditorWait& /*wait*/)
{
    return true;
}

bool PassSessionGate(UniqueHandle& /*launcherEvent*/)
{
    return true;
}

DWORD FindParentEditor(const LaunchContext& /*context*/)
{
    return 0;
}

}  // namespace korvane
