#include "startup/EditorLogFollower.h"

#include "foundation/UniqueResource.h"

#include <windows.h>

#include <cstring>
#include <utility>

namespace korvane {

EditorLogFollower::EditorLogFollower(Text path, std::uint64_t notBefore)
    : path_(std::move(path)), notBefore_(notBefore)
{
}

void EditorLogFollower::FollowOnce(const std::function<void(TextView line)>& onLine)
{
    // Every kind of sharing, so that the editor can write, rename or delete its log meanwhile.
    UniqueFileHandle file(CreateFileW(path_.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return;
    }
    if (notBefore_ != 0) {
        FILETIME lastWrite{};
        if (!GetFileTime(file.Get(), nullptr, nullptr, &lastWrite)) {
            return;
        }
        const std::uint64_t written = (static_cast<std::uint64_t>(lastWrite.dwHighDateTime) << 32) | lastWrite.dwLowDateTime;
        if (written < notBefore_) {
            return;
        }
    }
    LARGE_INTEGER size{};
    // A shrunken file is not read again from its start: reading resumes once it has grown
    // past the old position.
    if (!GetFileSizeEx(file.Get(), &size) || static_cast<std::uint64_t>(size.QuadPart) < position_) {
        return;
    }
    LARGE_INTEGER offset{};
    offset.QuadPart = static_cast<LONGLONG>(position_);
    if (!SetFilePointerEx(file.Get(), offset, nullptr, FILE_BEGIN)) {
        return;
    }

    // The block is read straight behind the carried bytes.
    const std::size_t carried = carry_.size();
    carry_.resize(carried + kLogReadBlockBytes);
    DWORD read = 0;
    if (!ReadFile(file.Get(), carry_.data() + carried, kLogReadBlockBytes, &read, nullptr) || read == 0) {
        carry_.resize(carried);
        return;
    }
    carry_.resize(carried + read);
    position_ += read;
    file.Reset();

    std::size_t lineStart = 0;
    // Only the new bytes can hold a new LF; the carry has none.
    std::size_t searchFrom = carried;
    while (searchFrom < carry_.size()) {
        const void* found = std::memchr(carry_.data() + searchFrom, '\n', carry_.size() - searchFrom);
        if (found == nullptr) {
            break;
        }
        const std::size_t lineFeed = static_cast<std::size_t>(static_cast<const char*>(found) - carry_.data());
        onLine(Utf8ToText(BytesView(carry_.data() + lineStart, lineFeed - lineStart)));
        lineStart = lineFeed + 1;
        searchFrom = lineStart;
    }
    carry_.erase(0, lineStart);
    if (carry_.size() > kLongestLogLineBytes) {
        carry_.clear();
    }
}

}  // namespace korvane
