#include "language/LanguageChoice.h"

#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"
#include "language/DirectoryEntries.h"
#include "language/EngineVersion.h"
#include "language/EngineVersionText.h"

#include <windows.h>

#include <algorithm>

namespace korvane {
namespace {

struct KnownDisplayName {
    const wchar_t* code;
    const wchar_t* displayName;
};

// The editor's own languages under the names the picker has always shown for them.
constexpr KnownDisplayName kKnownDisplayNames[] = {
    {L"en", L"English"},
    {L"es", L"Espa\u00F1ol"},
    {L"ja", L"\u65E5\u672C\u8A9E"},
    {L"ko", L"\uD55C\uAD6D\uC5B4"},
    {L"pt-BR", L"Portugu\u00EAs (Brasil)"},
    {L"zh-Hans", L"\u7B80\u4F53\u4E2D\u6587"},
};

constexpr wchar_t kEnglish[] = L"en";
constexpr LCTYPE kNativeLanguageName = LOCALE_SNATIVELANGUAGENAME;  // the language's own name
constexpr int kDisplayNameCapacity = 128;

Text DisplayNameOf(const Text& code)
{
    for (const KnownDisplayName& known : kKnownDisplayNames) {
        if (EqualsIgnoringCase(code, known.code)) {
            return known.displayName;
        }
    }
    wchar_t buffer[kDisplayNameCapacity] = {};
    if (GetLocaleInfoEx(code.c_str(), kNativeLanguageName, buffer, kDisplayNameCapacity) > 0) {
        return buffer;
    }
    return code;
}

// "en" first, the others by their code units, a prefix before what it begins.
bool ComesBefore(const LanguageRow& left, const LanguageRow& right)
{
    const bool leftIsEnglish = left.code == kEnglish;
    const bool rightIsEnglish = right.code == kEnglish;
    if (leftIsEnglish != rightIsEnglish) {
        return leftIsEnglish;
    }
    return left.code < right.code;
}

bool Contains(TextView text, TextView part) noexcept
{
    return text.find(part) != TextView::npos;
}

const LanguageRow* FindRowIgnoringCase(const std::vector<LanguageRow>& languages, TextView code)
{
    const auto found = std::find_if(languages.begin(), languages.end(),
        [code](const LanguageRow& row) { return EqualsIgnoringCase(row.code, code); });
    return found == languages.end() ? nullptr : &*found;
}

const LanguageRow* FindRowExactly(const std::vector<LanguageRow>& languages, TextView code)
{
    const auto found =
        std::find_if(languages.begin(), languages.end(), [code](const LanguageRow& row) { return row.code == code; });
    return found == languages.end() ? nullptr : &*found;
}

}  // namespace

std::vector<LanguageRow> ListEditorLanguages(TextView editorRoot, TextView version)
{
    std::vector<LanguageRow> rows;
    Text requiredVersion(version);
    const Text install = FindEditorInstall(editorRoot, requiredVersion);
    if (!install.empty()) {
        const Text cultures = JoinPath(install, kEditorCultureFolder);
        for (const DirectoryEntry& entry : ListDirectoryEntries(cultures)) {
            // A culture folder without the compiled texts would show the editor in English.
            if (entry.isDirectory && IsValidLocaleName(entry.name.c_str()) &&
                IsRegularFile(JoinPath(JoinPath(cultures, entry.name), L"Editor.locres"))) {
                rows.push_back(LanguageRow{entry.name, DisplayNameOf(entry.name)});
            }
        }
    }
    if (rows.empty()) {
        rows.push_back(LanguageRow{kEnglish, DisplayNameOf(kEnglish)});
    }
    std::sort(rows.begin(), rows.end(), ComesBefore);
    return rows;
}

Text ResolveLanguage(const std::vector<LanguageRow>& languages, TextView requested)
{
    if (const LanguageRow* row = FindRowIgnoringCase(languages, requested)) {
        return row->code;
    }
    Text spelled(requested);
    std::replace(spelled.begin(), spelled.end(), L'_', L'-');
    if (const LanguageRow* row = FindRowIgnoringCase(languages, spelled)) {
        return row->code;
    }
    const Text base = spelled.substr(0, spelled.find(L'-'));
    // Simplified Chinese goes by script or region; Traditional Chinese never maps to it.
    if (EqualsIgnoringCase(base, L"zh") && (EqualsIgnoringCase(spelled, L"zh") || Contains(spelled, L"Hans") ||
                                              Contains(spelled, L"CN") || Contains(spelled, L"SG"))) {
        if (const LanguageRow* row = FindRowExactly(languages, L"zh-Hans")) {
            return row->code;
        }
    }
    if (const LanguageRow* row = FindRowIgnoringCase(languages, base)) {
        return row->code;
    }
    return kEnglish;
}

Text EditorSettingsPath(TextView editorRoot)
{
    Text requiredVersion;
    const Text version = ReadEngineVersion(FindEditorInstall(editorRoot, requiredVersion));
    if (!IsSupportedEngineVersion(version)) {
        return {};
    }
    const Text localAppData = LocalAppDataFolder();
    if (localAppData.empty()) {
        return {};
    }
    return JoinPath(JoinPath(JoinPath(localAppData, L"UnrealEngine"), version),
        L"Saved/Config/WindowsEditor/EditorSettings.ini");
}

}  // namespace korvane
