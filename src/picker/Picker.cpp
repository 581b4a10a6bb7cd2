#include "picker/Picker.h"

#include "launch/LaunchContext.h"

namespace korvane {

int RunPicker(LaunchContext& /*context*/)
{
    // The picker window is not part of this build yet; report that no main window stood.
    return 7;
}

}  // namespace korvane
