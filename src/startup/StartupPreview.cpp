#include "startup/StartupPreview.h"

namespace korvane {

int RunStartupPreview(const StartupPreviewOptions& /*options*/)
{
    return 0;
}

}  // namespace korvane
