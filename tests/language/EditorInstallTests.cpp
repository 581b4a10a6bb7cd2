// Finding the editor install from where the launcher stands, its engine version, the languages
// it offers, the mapping of a requested code, and the settings path of its version.
#include "LanguageTestFiles.h"

#include "language/EngineVersion.h"
#include "language/EngineVersionText.h"
#include "language/LanguageChoice.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace korvane {
namespace {

using testing::MakeEditorInstall;
using testing::ScratchDirectory;
using testing::WriteFileBytes;

constexpr wchar_t kEditorVersionFile[] = L"Engine\\Binaries\\Win64\\UnrealEditor.version";
constexpr wchar_t kBuildVersionFile[] = L"Engine\\Build\\Build.version";

TEST(EngineVersion, TheSearchesBehaveAsTheirPatternsAndTheFirstFileWithBothNumbersWins)
{
    const std::pair<Bytes, Bytes> cases[] = {
        {FindMajorVersion("{\"MajorVersion\"\t \r\n\v\f:\n  05,"), "05"},  // all six blanks, digits as written
        {FindMajorVersion("\"MajorVersion\": \"5\", \"MajorVersion\":12x"), "12"},  // the first place that matches
        {FindMajorVersion("\"majorversion\": 5"), ""}, {FindMajorVersion("\"MajorVersion\" - 5"), ""},
        {FindMajorVersion("\"MajorVersion\":\xC2\xA0" "5"), ""},  // no blank outside ASCII
        {FindMinorVersion("\"MinorVersion\":3,\"MajorVersion\":5"), "3"},
        {FindProjectEngineVersion("{\"EngineAssociation\" :\t\"5.3\"}"), "5.3"},
        {FindProjectEngineVersion("\"EngineAssociation\": \"5.9\", \"EngineAssociation\": \"5.0\""), "5.0"},
    };
    for (size_t index = 0; index < std::size(cases); ++index) {
        EXPECT_EQ(cases[index].first, cases[index].second) << "case " << index;
    }
    for (const char* outside : {"\"4.27\"", "\"5.10\"", "5.3", "\"5,3\""}) {
        EXPECT_EQ(FindProjectEngineVersion("\"EngineAssociation\": " + Bytes(outside)), "") << outside;
    }
    // A run of blanks or digits as long as the largest version file must not exhaust the stack.
    const Bytes blanks(1048000, ' ');
    EXPECT_EQ(FindMajorVersion("\"MajorVersion\"" + blanks + ":" + blanks + Bytes(500, '7')), Bytes(500, '7'));

    EXPECT_TRUE(IsSupportedEngineVersion(L"5.0") && IsSupportedEngineVersion(L"5.8"));
    for (const wchar_t* outside : {L"5.9", L"4.27", L"5.10", L"5,3", L""}) {
        EXPECT_FALSE(IsSupportedEngineVersion(outside)) << TextToUtf8(outside);
    }

    // The version of an install: the first of the two files that holds both numbers, here real
    // ones of each kind, and the editor's file in its forms.
    ScratchDirectory scratch(L"engine-version");
    const Text install = scratch / L"install";
    WriteFileBytes(JoinPath(install, kBuildVersionFile),
        testing::ReadRealData(L"build_version\\ue4.16.3_sphills__LootTheRoom\\Build.version"));
    Bytes largest = "{\"MajorVersion\": 5, \"MinorVersion\": 2, \"Pad\": \"";
    largest.append(1048576 - largest.size() - 2, 'x');
    largest += "\"}";
    const std::pair<Bytes, const wchar_t*> editorFiles[] = {
        {testing::ReadRealData(L"binaries_version\\ue4.27_engine_caobin2019__UnrealEngine\\UE4Editor.version"),
            L"4.27"},
        {"{\"MajorVersion\": 5, \"PatchVersion\": 1}", L"4.16"},  // the major number alone passes on
        {"{\"MajorVersion\": 5, \"MinorVersion\": 9}", L"5.9"},   // the range is the caller's business
        {largest, L"5.2"},                                         // 1 MiB is read
        {largest + " ", L"4.16"},                                  // one byte more is passed over
    };
    for (const auto& [bytes, version] : editorFiles) {
        WriteFileBytes(JoinPath(install, kEditorVersionFile), bytes);
        EXPECT_EQ(ReadEngineVersion(install), version) << bytes.substr(0, 60);
    }
}

TEST(EditorInstall, NearestWholeInstallWinsAndAProjectFilePinsTheVersion)
{
    ScratchDirectory scratch(L"install-walk");
    // Installs by folder and version ("" for none).
    const std::pair<const wchar_t*, const wchar_t*> installs[] = {{L"beside", L""}, {L"beside\\KorvaneEditor", L"5.3"},
        {L"game\\KorvaneEditor", L"5.1"}, {L"game\\KorvaneEditor\\5.2", L"5.2"},
        {L"versioned\\KorvaneEditor\\5.2", L"5.2"},
        {L"versioned\\KorvaneEditor\\5.9", L"5.9"},    // outside the range
        {L"versioned\\Mods\\KorvaneEditor\\5.3", L"5.4"},  // its files name another version
        {L"versioned\\two\\KorvaneEditor\\5.3", L"5.3"}, {L"versioned\\two\\KorvaneEditor\\5.4", L"5.4"},
        {L"root\\KorvaneEditor", L"5.4"}, {L"root\\KorvaneEditor\\5.3", L"5.3"}};
    for (const auto& [folder, version] : installs) {
        MakeEditorInstall(scratch / folder, version);
    }
    testing::MakeDirectories(scratch / L"root\\Game\\Source");
    // Only C names a version in range; A is passed over.
    const Text game = scratch / L"root\\Game";
    WriteFileBytes(JoinPath(game, L"A.uproject"), "{\"EngineAssociation\": \"5.9\"}");
    WriteFileBytes(JoinPath(game, L"C.uproject"),
        testing::ReadRealData(L"uproject\\ue5.3_02020fan__FirstGame\\FPS.uproject"));
    // A project file of 1 MiB is too large, and one in capitals is no project file.
    WriteFileBytes(scratch / L"root\\Other\\Upper.UPROJECT", "{\"EngineAssociation\": \"5.3\"}");
    Bytes oversized = "{\"EngineAssociation\": \"5.3\", \"Pad\": \"";
    oversized.append(1048576 - oversized.size() - 2, 'x');
    WriteFileBytes(scratch / L"root\\Other\\Big.uproject", oversized + "\"}");

    const struct {
        const wchar_t* start;
        const wchar_t* versionIn;
        const wchar_t* found;
        const wchar_t* versionOut;
    } walks[] = {
        {L"beside", L"", L"beside", L""},  // the start itself, before its KorvaneEditor folder
        {L"game", L"", L"game\\KorvaneEditor", L""},  // the KorvaneEditor folder before its version folder
        // Only one whole version folder counts, and it does not pin the version; the nearest install wins.
        {L"versioned\\Mods", L"", L"versioned\\KorvaneEditor\\5.2", L""},
        {L"versioned\\two", L"", L"versioned\\KorvaneEditor\\5.2", L""},  // two: neither is taken
        {L"game", L"5.2", L"game\\KorvaneEditor\\5.2", L"5.2"},  // a required version passes over others
        {L"game", L"5.7", L"game", L"5.7"},                      // nothing found: the start comes back
        {L"root\\Game\\Source", L"", L"root\\KorvaneEditor\\5.3", L"5.3"},  // pinned: passes over the nearer 5.4
        {L"root\\Game", L"5.4", L"root\\KorvaneEditor", L"5.4"},  // a version that came in stays
        {L"root\\Other", L"", L"root\\KorvaneEditor", L""},
    };
    for (const auto& walk : walks) {
        Text version = walk.versionIn;
        EXPECT_EQ(FindEditorInstall(scratch / walk.start, version), scratch / walk.found) << TextToUtf8(walk.start);
        EXPECT_EQ(version, walk.versionOut) << TextToUtf8(walk.start);
    }
    Text version;
    WriteFileBytes(scratch / L"root\\Other\\Big.uproject", oversized + "}");
    EXPECT_EQ(FindEditorInstall(scratch / L"root\\Other", version), scratch / L"root\\KorvaneEditor\\5.3")
        << "one byte less than 1 MiB is read";
    EXPECT_EQ(version, L"5.3");
}

// The rows as "code=name;" each.
Text Rows(const std::vector<LanguageRow>& rows)
{
    Text text;
    for (const LanguageRow& row : rows) {
        text += row.code + L"=" + row.displayName + L";";
    }
    return text;
}

TEST(EditorLanguages, CultureFoldersWithEditorTextsSortedWithTheirNames)
{
    ScratchDirectory scratch(L"languages-list");
    const Text install = scratch / L"all";
    MakeEditorInstall(install, L"5.3", {L"zh-Hans", L"fr", L"JA", L"es", L"en"});
    const Text cultures = JoinPath(install, L"Engine\\Content\\Localization\\Editor");
    WriteFileBytes(JoinPath(cultures, L"de\\Editor.manifest"), "only the manifest");
    WriteFileBytes(JoinPath(cultures, L"Fonts\\Editor.locres"), "no locale name");
    testing::MakeDirectories(JoinPath(cultures, L"it\\Editor.locres"));  // a folder, not the file
    WriteFileBytes(JoinPath(cultures, L"ru"), "a file named like a culture");
    // "en" first, the others by their code units (capitals first); the editor's own names in any
    // letter case, else the system's.
    wchar_t name[128] = {};
    ASSERT_GT(GetLocaleInfoEx(L"fr", LOCALE_SNATIVELANGUAGENAME, name, 128), 0);
    const Text french = L"fr=" + Text(name) + L";";
    EXPECT_EQ(Rows(ListEditorLanguages(install)),
        L"en=English;JA=\u65E5\u672C\u8A9E;es=Espa\u00F1ol;" + french + L"zh-Hans=\u7B80\u4F53\u4E2D\u6587;");

    // Without culture folders only English; without "en" nothing is added.
    MakeEditorInstall(scratch / L"empty", L"5.3", {});
    EXPECT_EQ(Rows(ListEditorLanguages(scratch / L"empty")), L"en=English;");
    MakeEditorInstall(scratch / L"other", L"5.3", {L"fr"});
    EXPECT_EQ(Rows(ListEditorLanguages(scratch / L"other")), french);

    // The list comes from the install the walk finds for the version asked; the walk itself has its own cases.
    const Text game = scratch / L"game";
    MakeEditorInstall(JoinPath(game, L"KorvaneEditor\\5.3"), L"5.3", {L"en", L"es"});
    MakeEditorInstall(JoinPath(game, L"KorvaneEditor\\5.4"), L"5.4", {L"en", L"fr"});
    EXPECT_EQ(Rows(ListEditorLanguages(game, L"5.4")), L"en=English;" + french);
}

TEST(ResolveLanguage, MapsTheRequestedCodeOntoTheRows)
{
    using Cases = std::initializer_list<std::pair<const wchar_t*, const wchar_t*>>;
    const auto expect = [](const std::vector<LanguageRow>& rows, Cases cases) {
        for (const auto& [requested, expected] : cases) {
            EXPECT_EQ(ResolveLanguage(rows, requested), expected) << TextToUtf8(requested);
        }
    };
    expect({{L"en", L"English"}, {L"es", L""}, {L"ja", L""}, {L"pt-BR", L""}, {L"zh-Hans", L""}},
        {{L"JA", L"ja"}, {L"PT_br", L"pt-BR"}, {L"zh", L"zh-Hans"}, {L"zh_CN", L"zh-Hans"}, {L"zh-SG", L"zh-Hans"},
            {L"zh-cn", L"en"},       // the region is case-sensitive
            {L"zh-Hant-HK", L"en"},  // never Simplified
            {L"pt-PT", L"en"},       // the base "pt" is no row
            {L"es_MX", L"es"}, {L"ja-JP-u-ca-japanese", L"ja"}, {L"fr", L"en"}, {L"-", L"en"}});
    expect({{L"en", L""}, {L"zh", L""}}, {{L"zh-TW", L"zh"}});  // no zh-Hans row: the base decides
    // The Simplified Chinese rule and the English fallback want exactly "zh-Hans" and "en".
    expect({{L"EN", L""}, {L"Zh-hans", L""}}, {{L"fr", L"en"}, {L"zh-CN", L"en"}, {L"zh_hans", L"Zh-hans"}});
}

// An install in range, found below the launcher, is the launcher language test's case.
TEST(EditorSettingsPath, AnEngineVersionOutsideTheRangeHasNone)
{
    ScratchDirectory scratch(L"settings-path");
    MakeEditorInstall(scratch / L"newer", L"5.9");
    EXPECT_EQ(EditorSettingsPath(scratch / L"newer"), L"");
}

}  // namespace
}  // namespace korvane
