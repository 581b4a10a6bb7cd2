#pragma once
// The marker texts of the editor's log that move the start-up window's phase line on.

#include "foundation/Text.h"

namespace korvane {

// The phase line for one log line (without its LF), or empty when the line holds no marker.
// Markers are found anywhere in the line, with case; the first matching row wins.
Text MatchStartupMarker(TextView line, bool chinese);

}  // namespace korvane
