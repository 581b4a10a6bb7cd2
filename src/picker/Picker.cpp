#include "picker/Picker.h"

#include "context/LaunchContext.h"
#include "context/SharedConstants.h"

namespace korvane {

int RunPicker(LaunchContext& /*context*/)
{
    // The picker window is not part of this build yet; report that no main window stood.
    return kExitNoPickerWindow;
}

}  // namespace korvane
