#pragma once
// -KorvaneResolveHostContext: what the two host steps decided, as a one-line JSON file.

#include "foundation/Text.h"

namespace korvane {

// {"game":…,"sdk":…,"environment":…} in UTF-8: no blanks, no line end, no byte-order mark.
Bytes ComposeHostContextReport(TextView gameDirectory, TextView sdk, TextView environment);

// Writes the report in one write; false for an empty path, a file that cannot be created
// or a short write.
bool WriteHostContextReport(TextView path, BytesView report);

}  // namespace korvane
