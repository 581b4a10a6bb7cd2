#pragma once
// The entries of one folder, as the file system lists them.

#include "foundation/Text.h"

#include <cstdint>
#include <vector>

namespace korvane {

struct DirectoryEntry {
    Text name;
    bool isDirectory = false;
    std::uint64_t size = 0;  // bytes; 0 for folders
};

// The entries of `folder` without "." and "..", in the order in which the file system gives
// them. A folder that cannot be listed (missing, denied) gives no entries.
std::vector<DirectoryEntry> ListDirectoryEntries(TextView folder);

}  // namespace korvane
