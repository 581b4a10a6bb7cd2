#include "language/EditorSettingsFile.h"

#include "foundation/Files.h"
#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"
#include "language/EditorSettingsText.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>

namespace korvane {
namespace {

constexpr std::uint32_t kSettingsFileLimit = 2097152;  // inclusive

// The file's state before a rewrite: absent, or present with its decoded text. A file that
// is there but cannot be read or decoded must not be replaced.
enum class Existing { Absent, Read, Unusable };

Existing ReadExistingSettings(TextView path, SettingsText& settings)
{
    const Text target(path);
    if (GetFileAttributesW(target.c_str()) == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? Existing::Absent : Existing::Unusable;
    }
    // Oversized, empty, locked and unreadable files all come back without bytes.
    const Bytes bytes = ReadWholeFile(path, kSettingsFileLimit);
    if (bytes.empty() || !DecodeSettingsBytes(bytes, settings)) {
        return Existing::Unusable;
    }
    return Existing::Read;
}

// SHCreateDirectoryExW splits at backslashes only, and the settings path ends in forward ones.
bool EnsureFolder(TextView folder)
{
    Text windowsForm(folder);
    std::replace(windowsForm.begin(), windowsForm.end(), L'/', L'\\');
    if (IsDirectory(windowsForm)) {
        return true;
    }
    CreateFolderTree(windowsForm);
    return IsDirectory(windowsForm);
}

}  // namespace

Text ReadEditorLanguageSetting(TextView path)
{
    if (path.empty() || !IsRegularFile(path)) {
        return {};
    }
    SettingsText settings;
    DecodeSettingsBytes(ReadWholeFile(path, kSettingsFileLimit), settings);
    return FindLanguageSetting(settings.text);
}

bool SaveEditorLanguageSetting(TextView path, TextView languageCode)
{
    if (path.empty()) {
        return false;
    }
    if (!languageCode.empty() && !IsValidLocaleName(Text(languageCode).c_str())) {
        return false;
    }
    SettingsText settings;
    if (ReadExistingSettings(path, settings) == Existing::Unusable) {
        return false;
    }
    settings.text = RewriteLanguageSetting(settings.text, languageCode);
    const Text folder = ParentPath(path);
    if (!folder.empty() && !EnsureFolder(folder)) {
        return false;
    }
    const Text sibling = Text(path) + L".korvane-" + DecimalText(GetCurrentProcessId()) + L".tmp";
    return ReplaceFileFromSibling(path, sibling, EncodeSettingsText(settings));
}

}  // namespace korvane
