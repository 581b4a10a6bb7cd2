#include "context/LaunchContext.h"

#include "foundation/Paths.h"

#include <windows.h>

#include <vector>

namespace korvane {

Text LocateEditorRoot()
{
    std::vector<wchar_t> buffer(MAX_PATH);
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
        if (length == 0) {
            return {};
        }
        if (length < buffer.size() - 1) {
            return ParentPath(TextView(buffer.data(), length));
        }
        buffer.resize(buffer.size() * 2);
    }
}

}  // namespace korvane
