#include "startup/StartupPreview.h"

#include "startup/StartupMonitor.h"
#include "startup/StartupReport.h"

#include <windows.h>

namespace korvane {

int RunStartupPreview(const StartupPreviewOptions& options)
{
    // No cancel flag: the preview's window has no Cancel button and a close ends it.
    StartupMonitor monitor({.forcedDpi = options.dpi, .noBackground = options.noBackground, .chinese = options.chinese});
    if (!options.phaseText.empty()) {
        monitor.SetPhaseText(options.phaseText);
    }
    WriteStartupReport(monitor, options.reportPath);
    Sleep(options.durationMs);
    WriteStartupReport(monitor, options.reportPath);
    monitor.Close();
    return 0;
}

}  // namespace korvane
