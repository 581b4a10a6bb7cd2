#include "foundation/Paths.h"

#include <windows.h>

#include <vector>

namespace korvane {

Text NormalizePath(TextView path)
{
    const Text input(path);
    const DWORD needed = GetFullPathNameW(input.c_str(), 0, nullptr, nullptr);
    if (needed == 0) {
        return {};
    }
    std::vector<wchar_t> buffer(static_cast<size_t>(needed) + 1, L'\0');
    const DWORD length = GetFullPathNameW(input.c_str(), static_cast<DWORD>(buffer.size()), buffer.data(), nullptr);
    if (length == 0 || length >= buffer.size()) {
        return {};
    }
    Text result(buffer.data(), length);
    while (result.size() > 3 && IsPathSeparator(result.back())) {
        result.pop_back();
    }
    return result;
}

Text JoinPath(TextView left, TextView right)
{
    Text joined(left);
    if (!left.empty() && left.back() != L'\\') {
        joined.push_back(L'\\');
    }
    joined.append(right);
    return joined;
}

namespace {

size_t LastSeparator(TextView path) noexcept
{
    return path.find_last_of(L"\\/");
}

}  // namespace

Text ParentPath(TextView path)
{
    const size_t separator = LastSeparator(path);
    return separator == TextView::npos ? Text() : Text(path.substr(0, separator));
}

Text LastPathComponent(TextView path)
{
    const size_t separator = LastSeparator(path);
    return separator == TextView::npos ? Text(path) : Text(path.substr(separator + 1));
}

bool IsRegularFile(TextView path)
{
    const DWORD attributes = GetFileAttributesW(Text(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool IsDirectory(TextView path)
{
    const DWORD attributes = GetFileAttributesW(Text(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool IsAbsoluteInForm(TextView path) noexcept
{
    return (!path.empty() && IsPathSeparator(path[0])) || (path.size() >= 2 && path[1] == L':');
}

bool IsReparsePoint(TextView path)
{
    const DWORD attributes = GetFileAttributesW(Text(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

}  // namespace korvane
