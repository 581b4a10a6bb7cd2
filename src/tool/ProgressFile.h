#pragma once
// The two files through which a running `prepare` reports: the progress file, read on every
// poll while the tool runs, and the timing report, read once after it has ended. Both only
// ever add to what the launcher shows; a broken file costs a line, never the run.

#include "foundation/Text.h"

#include <cstdint>
#include <optional>

namespace korvane {

inline constexpr std::uint32_t kProgressFileLimit = 65536;

// Remembers the content it last applied, so that an unchanged file is shown once and a file
// caught half written is looked at again on the next poll.
class ProgressFileFollower {
public:
    // The line for the progress callback (stage text and, once the cache state is known,
    // " · " and that state), or nothing when these bytes change nothing. Updates `cacheHit`
    // from the file's `cacheHit` value `true` or `false`.
    std::optional<Text> Take(BytesView content, std::int32_t& cacheHit);

private:
    Bytes lastApplied_;
};

// Walks `stages` of a timing report in order; the last row whose `cacheHit` is `true` or
// `false` decides `cacheHit`. A report that does not parse changes nothing.
void ApplyTimingReport(BytesView content, std::int32_t& cacheHit);

}  // namespace korvane
