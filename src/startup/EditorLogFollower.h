#pragma once
// Follows the log file that the editor writes while it starts: each pass opens the file
// afresh (so the editor is never kept from it), reads at most one block from where the last
// pass stopped, and hands on every line that its LF completed.

#include "foundation/Text.h"

#include <cstdint>
#include <functional>

namespace korvane {

// One pass reads at most this much; a faster-growing log is followed with a delay.
inline constexpr std::uint32_t kLogReadBlockBytes = 65536;
// An unfinished line longer than this is dropped whole; what follows its LF is a line again.
inline constexpr std::size_t kLongestLogLineBytes = 65536;

class EditorLogFollower {
public:
    // `notBefore`: FILETIME as a 100-ns count; a file last written earlier belongs to an
    // earlier run and is not read. 0 means no limit.
    EditorLogFollower(Text path, std::uint64_t notBefore);

    // One pass. `onLine` gets each completed line without its LF (a CR before the LF stays),
    // decoded from UTF-8; a line that is not valid UTF-8 comes as the empty text. Any failing
    // file call ends the pass quietly: the file may not exist yet.
    void FollowOnce(const std::function<void(TextView line)>& onLine);

    std::uint64_t Position() const noexcept { return position_; }
    std::size_t PendingBytes() const noexcept { return carry_.size(); }

private:
    Text path_;
    std::uint64_t notBefore_;
    std::uint64_t position_ = 0;
    Bytes carry_;  // the unfinished last line
};

}  // namespace korvane
