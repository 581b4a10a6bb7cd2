#pragma once
// Files for the language tests: scratch editor installs laid out as an engine lays them out,
// and settings files in UTF-16 LE.

#include "TestSupport.h"

#include "foundation/Paths.h"

#include <initializer_list>
#include <string_view>

namespace korvane::testing {

// Engine/Content/Localization/Editor/<code>/Editor.locres for each code and, unless `version`
// ("5.3") is empty, Engine/Binaries/Win64/UnrealEditor.version naming it (real files of the
// kind are the version tests' own).
inline void MakeEditorInstall(TextView install, TextView version, std::initializer_list<const wchar_t*> codes = {L"en"})
{
    MakeDirectories(JoinPath(install, L"Engine\\Content\\Localization\\Editor"));
    for (const wchar_t* code : codes) {
        WriteFileBytes(JoinPath(install, Text(L"Engine\\Content\\Localization\\Editor\\") + code + L"\\Editor.locres"),
            "LOCRES");
    }
    if (const size_t dot = version.find(L'.'); dot != TextView::npos) {
        WriteFileBytes(JoinPath(install, L"Engine\\Binaries\\Win64\\UnrealEditor.version"), "{\"MajorVersion\": " +
            TextToUtf8(version.substr(0, dot)) + ", \"MinorVersion\": " + TextToUtf8(version.substr(dot + 1)) + "}");
    }
}

// The UTF-16 LE bytes of `text`, without a mark.
inline Bytes Utf16Bytes(std::u16string_view text)
{
    Bytes bytes;
    for (const char16_t unit : text) {
        bytes += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    }
    return bytes;
}

}  // namespace korvane::testing
