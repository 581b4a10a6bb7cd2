#pragma once
// The words for the state of the SDK cache, shown on the start-up window's detail line and
// behind the preparation's stage lines.

#include "foundation/Text.h"

#include <cstdint>

namespace korvane {

// `cacheHit`: negative not reported, 0 the cache was created, positive a hit. `verified`:
// the preparation has ended.
Text CacheStatusText(std::int32_t cacheHit, bool verified, bool chinese);

}  // namespace korvane
