#pragma once
// -KorvaneStartupPreview: the start-up progress window for a fixed time, with a report.

#include "foundation/Text.h"

#include <cstdint>

namespace korvane {

struct StartupPreviewOptions {
    std::uint32_t dpi = 96;
    bool noBackground = false;
    bool chinese = false;
    std::uint32_t durationMs = 3000;
    Text phaseText;
    Text reportPath;
};

// Shows the window, writes the report twice, and gives the exit code (0).
int RunStartupPreview(const StartupPreviewOptions& options);

}  // namespace korvane
