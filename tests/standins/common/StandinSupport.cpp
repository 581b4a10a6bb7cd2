#include "common/StandinSupport.h"

#include "foundation/Files.h"
#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"

#include <shellapi.h>

#include <cwchar>

namespace korvane::standins {

Text ExecutableFolder()
{
    wchar_t buffer[32768] = {};
    const DWORD length = GetModuleFileNameW(nullptr, buffer, static_cast<DWORD>(std::size(buffer)));
    return ParentPath(TextView(buffer, length));
}

std::optional<Text> EnvironmentValue(TextView name)
{
    const Text key(name);
    SetLastError(ERROR_SUCCESS);
    const DWORD needed = GetEnvironmentVariableW(key.c_str(), nullptr, 0);
    if (needed == 0) {
        if (GetLastError() == ERROR_ENVVAR_NOT_FOUND) {
            return std::nullopt;
        }
        return Text();
    }
    Text value(needed, L'\0');
    const DWORD length = GetEnvironmentVariableW(key.c_str(), value.data(), needed);
    value.resize(length < needed ? length : 0);
    return value;
}

Text CurrentFolder()
{
    wchar_t buffer[32768] = {};
    const DWORD length = GetCurrentDirectoryW(static_cast<DWORD>(std::size(buffer)), buffer);
    return Text(buffer, length < std::size(buffer) ? length : 0);
}

bool MakeFolders(TextView folder)
{
    if (folder.empty() || IsDirectory(folder)) {
        return true;
    }
    const int result = CreateFolderTree(NormalizePath(folder));
    return result == 0 || result == ERROR_ALREADY_EXISTS || result == ERROR_FILE_EXISTS || IsDirectory(folder);
}

bool AppendLine(TextView path, BytesView line)
{
    MakeFolders(ParentPath(path));
    UniqueFileHandle file(CreateFileW(Text(path).c_str(), FILE_APPEND_DATA,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return false;
    }
    Bytes bytes(line);
    bytes += '\n';
    return WriteAll(file.Get(), bytes);
}

std::optional<JsonValue> ReadJsonFile(TextView path, std::uint32_t limit)
{
    const Bytes bytes = ReadWholeFile(path, limit);
    if (bytes.empty()) {
        return std::nullopt;
    }
    try {
        return ParseJson(bytes);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

bool WriteAll(HANDLE handle, BytesView bytes)
{
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    size_t offset = 0;
    while (offset < bytes.size()) {
        const DWORD chunk = static_cast<DWORD>(std::min<size_t>(bytes.size() - offset, 1u << 20));
        DWORD written = 0;
        if (!WriteFile(handle, bytes.data() + offset, chunk, &written, nullptr) || written == 0) {
            return false;
        }
        offset += written;
    }
    return true;
}

std::vector<Text> CommandLineArguments()
{
    std::vector<Text> arguments;
    int count = 0;
    UniqueLocalMemory memory(reinterpret_cast<HLOCAL>(CommandLineToArgvW(GetCommandLineW(), &count)));
    if (!memory) {
        return arguments;
    }
    wchar_t** items = reinterpret_cast<wchar_t**>(memory.Get());
    for (int index = 0; index < count; ++index) {
        arguments.emplace_back(items[index]);
    }
    return arguments;
}

Text JsonStringArray(const std::vector<Text>& items)
{
    Text text = L"[";
    for (size_t index = 0; index < items.size(); ++index) {
        if (index != 0) {
            text += L',';
        }
        text += QuoteJsonText(items[index]);
    }
    return text + L"]";
}

Text JsonStringOrNull(const std::optional<Text>& value)
{
    return value ? QuoteJsonText(*value) : Text(L"null");
}

std::uint64_t JsonUnsigned(const JsonValue& value, TextView key, std::uint64_t fallback)
{
    const Text& text = FindJsonMember(value, key).text;
    if (text.empty()) {
        return fallback;
    }
    wchar_t* end = nullptr;
    const unsigned long long number = std::wcstoull(text.c_str(), &end, 10);
    if (end == text.c_str() || text[0] == L'-') {
        return fallback;
    }
    return number;
}

bool JsonTrue(const JsonValue& value, TextView key)
{
    return FindJsonMember(value, key).text == L"true";
}

}  // namespace korvane::standins
