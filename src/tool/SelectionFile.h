#pragma once
// The tool's answer to `prepare`: a small UTF-8 file of three lines that names the prepared
// workspace's Mod project, its editor project and the Mod id.

#include "foundation/Text.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace korvane {

// A valid answer is 21 to 4095 bytes long; one read of 4096 bytes tells a longer file.
inline constexpr std::uint32_t kSelectionFileMinimum = 21;
inline constexpr std::uint32_t kSelectionFileReadSize = 4096;

struct WorkspaceSelection {
    Text modProjectFile;   // ...\Mod.kmodproject
    Text editorProject;    // ...\KorvaneSDK.uproject
    Text modId;            // "mod." and 32 more units
};

// The lines that count: split at LF, one CR before an LF dropped, empty lines and lines that
// are not valid UTF-8 left out; text after the last LF is a line too.
std::vector<Text> SelectionFileLines(BytesView content);

// The answer in `content`, or nothing when any rule is broken: the size, exactly three lines,
// the two file names (existing regular files), the id's form, and, when `selectedMod` is not
// empty, the id being exactly that one.
std::optional<WorkspaceSelection> JudgeSelectionFile(BytesView content, TextView selectedMod);

// One read of at most 4096 bytes; empty when the file cannot be opened or read.
Bytes ReadSelectionFile(TextView path);

}  // namespace korvane
