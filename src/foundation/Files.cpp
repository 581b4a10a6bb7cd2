#include "foundation/Files.h"

#include "foundation/UniqueResource.h"

#include <windows.h>

namespace korvane {

Bytes ReadWholeFile(TextView path, std::uint32_t limit)
{
    UniqueFileHandle file(CreateFileW(Text(path).c_str(), GENERIC_READ,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
        FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return {};
    }
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(file.Get(), &size) || size.QuadPart <= 0 ||
        static_cast<unsigned long long>(size.QuadPart) > limit) {
        return {};
    }
    Bytes bytes(static_cast<size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr) ||
        read != bytes.size()) {
        return {};
    }
    return bytes;
}

bool WriteWholeFile(TextView path, BytesView bytes)
{
    UniqueFileHandle file(CreateFileW(Text(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
        FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return false;
    }
    if (bytes.size() > MAXDWORD) {
        return false;
    }
    DWORD written = 0;
    return WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
        written == bytes.size();
}

bool ReplaceFileFromSibling(TextView target, TextView sibling, BytesView bytes)
{
    if (!WriteWholeFile(sibling, bytes)) {
        return false;
    }
    const Text siblingPath(sibling);
    if (!MoveFileExW(siblingPath.c_str(), Text(target).c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        DeleteFileW(siblingPath.c_str());
        return false;
    }
    return true;
}

Text CreateLauncherTempFile()
{
    wchar_t folder[MAX_PATH] = {};
    wchar_t path[MAX_PATH] = {};
    const DWORD length = GetTempPathW(MAX_PATH, folder);
    if (length == 0 || length >= MAX_PATH) {
        return {};
    }
    if (GetTempFileNameW(folder, L"KVL", 0, path) == 0) {
        return {};
    }
    return path;
}

TemporaryFile& TemporaryFile::operator=(TemporaryFile&& other) noexcept
{
    if (this != &other) {
        Delete();
        path_ = std::move(other.path_);
        other.path_.clear();
    }
    return *this;
}

void TemporaryFile::Delete() noexcept
{
    if (!path_.empty()) {
        DeleteFileW(path_.c_str());
        path_.clear();
    }
}

}  // namespace korvane
