#include "language/DirectoryEntries.h"

#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

namespace korvane {

std::vector<DirectoryEntry> ListDirectoryEntries(TextView folder)
{
    std::vector<DirectoryEntry> entries;
    if (folder.empty()) {
        return entries;  // never the current directory by accident
    }
    const Text pattern = JoinPath(folder, L"*");
    WIN32_FIND_DATAW data{};
    UniqueFindHandle find(
        FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &data, FindExSearchNameMatch, nullptr, 0));
    if (!find) {
        return entries;
    }
    do {
        const TextView name(data.cFileName);
        if (name == L"." || name == L"..") {
            continue;
        }
        DirectoryEntry entry;
        entry.name = Text(name);
        entry.isDirectory = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        entry.size = entry.isDirectory
            ? 0
            : (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
        entries.push_back(std::move(entry));
    } while (FindNextFileW(find.Get(), &data));
    return entries;
}

}  // namespace korvane
