#include "foundation/KnownFolders.h"

#include <windows.h>
#include <shlobj.h>

namespace korvane {

Text LocalAppDataFolder()
{
    PWSTR folder = nullptr;
    const HRESULT result = SHGetKnownFolderPath(FOLDERID_LocalAppData, 0, nullptr, &folder);
    Text path;
    if (SUCCEEDED(result) && folder != nullptr) {
        path = folder;
    }
    CoTaskMemFree(folder);
    return path;
}

int CreateFolderTree(TextView folder)
{
    return SHCreateDirectoryExW(nullptr, Text(folder).c_str(), nullptr);
}

}  // namespace korvane
