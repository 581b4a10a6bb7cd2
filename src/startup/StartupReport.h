#pragma once
// The start-up report: what the start-up monitor measured and showed at one moment, as one
// JSON object in UTF-8 without blanks, line end or byte-order mark.

#include "foundation/Text.h"
#include "startup/StartupMonitor.h"

namespace korvane {

// The report's text, keys in their fixed order.
Bytes ComposeStartupReport(const StartupSnapshot& snapshot);

// Replaces the file at `path` with the report of this moment. An empty path does nothing; a
// file that cannot be written is not reported anywhere, since the report is a side effect.
void WriteStartupReport(StartupMonitor& monitor, TextView path);

}  // namespace korvane
