// The language list from the install's culture folders, the mapping of a requested code,
// and the settings path of the install's engine version.
#include "InstallTree.h"
#include "TestSupport.h"

#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"
#include "language/LanguageChoice.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace korvane {
namespace {

using testing::MakeEditorInstall;
using testing::ScratchDirectory;

std::vector<Text> Codes(const std::vector<LanguageRow>& rows)
{
    std::vector<Text> codes;
    for (const LanguageRow& row : rows) {
        codes.push_back(row.code);
    }
    return codes;
}

Text NativeLanguageName(const wchar_t* code)
{
    wchar_t buffer[128] = {};
    EXPECT_GT(GetLocaleInfoEx(code, LOCALE_SNATIVELANGUAGENAME, buffer, 128), 0);
    return buffer;
}

TEST(EditorLanguages, OnlyCultureFoldersWithEditorTextsAreOffered)
{
    ScratchDirectory scratch(L"languages-list");
    const Text install = scratch.Path();
    MakeEditorInstall(install, L"5.3", {L"zh-Hans", L"pt-BR", L"ko", L"fr", L"ja", L"es", L"en", L"es-419"});
    const Text cultures = JoinPath(install, L"Engine\\Content\\Localization\\Editor");
    testing::WriteFileBytes(JoinPath(cultures, L"de\\Editor.manifest"), "only the manifest");
    testing::WriteFileBytes(JoinPath(cultures, L"Fonts\\Editor.locres"), "no locale name");
    testing::WriteFileBytes(JoinPath(cultures, L"xx-YY\\Editor.locres"), "no locale name");
    testing::MakeDirectories(JoinPath(cultures, L"it\\Editor.locres"));  // a folder, not the file
    testing::WriteFileBytes(JoinPath(cultures, L"ru"), "a file named like a culture");

    const std::vector<LanguageRow> rows = ListEditorLanguages(install);
    EXPECT_EQ(Codes(rows), (std::vector<Text>{L"en", L"es", L"es-419", L"fr", L"ja", L"ko", L"pt-BR", L"zh-Hans"}));
    ASSERT_EQ(rows.size(), 8u);
    EXPECT_EQ(rows[0].displayName, L"English");
    EXPECT_EQ(rows[1].displayName, L"Espa\u00F1ol");
    EXPECT_EQ(rows[2].displayName, NativeLanguageName(L"es-419")) << "codes outside the table ask the system";
    EXPECT_EQ(rows[3].displayName, NativeLanguageName(L"fr"));
    EXPECT_EQ(rows[4].displayName, L"\u65E5\u672C\u8A9E");
    EXPECT_EQ(rows[5].displayName, L"\uD55C\uAD6D\uC5B4");
    EXPECT_EQ(rows[6].displayName, L"Portugu\u00EAs (Brasil)");
    EXPECT_EQ(rows[7].displayName, L"\u7B80\u4F53\u4E2D\u6587");
}

TEST(EditorLanguages, FallsBackToEnglishAndSortsByCodeUnits)
{
    ScratchDirectory scratch(L"languages-fallback");
    const Text empty = scratch / L"empty";
    MakeEditorInstall(empty, L"5.3", {});
    const std::vector<LanguageRow> english = ListEditorLanguages(empty);
    ASSERT_EQ(english.size(), 1u);
    EXPECT_EQ(english[0].code, L"en");
    EXPECT_EQ(english[0].displayName, L"English");
    EXPECT_EQ(Codes(ListEditorLanguages(scratch / L"nothing-here")), std::vector<Text>{L"en"});
    EXPECT_EQ(Codes(ListEditorLanguages(L"")), std::vector<Text>{L"en"});

    // Without "en" nothing is added; upper case sorts before lower case; "EN" is not "en".
    const Text others = scratch / L"others";
    MakeEditorInstall(others, L"5.3", {L"ko", L"EN", L"ja"});
    const std::vector<LanguageRow> rows = ListEditorLanguages(others);
    EXPECT_EQ(Codes(rows), (std::vector<Text>{L"EN", L"ja", L"ko"}));
    EXPECT_EQ(rows[0].displayName, L"English") << "the table is looked up without regard to case";
}

TEST(EditorLanguages, ListComesFromTheInstallTheWalkFinds)
{
    ScratchDirectory scratch(L"languages-walk");
    const Text game = scratch / L"game";
    MakeEditorInstall(JoinPath(game, L"KorvaneEditor\\5.3"), L"5.3", {L"en", L"ja"});
    MakeEditorInstall(JoinPath(game, L"KorvaneEditor\\5.4"), L"5.4", {L"en", L"ko"});
    EXPECT_EQ(Codes(ListEditorLanguages(game)), std::vector<Text>{L"en"}) << "two versions and no project";
    EXPECT_EQ(Codes(ListEditorLanguages(game, L"5.4")), (std::vector<Text>{L"en", L"ko"}));
    testing::WriteFileBytes(JoinPath(game, L"Game.uproject"), "{\"EngineAssociation\": \"5.3\"}");
    EXPECT_EQ(Codes(ListEditorLanguages(game)), (std::vector<Text>{L"en", L"ja"}));
}

TEST(ResolveLanguage, FollowsItsSevenSteps)
{
    const std::vector<LanguageRow> all = {
        {L"en", L"English"}, {L"es", L""}, {L"ja", L""}, {L"ko", L""}, {L"pt-BR", L""}, {L"zh-Hans", L""}};
    const struct {
        const wchar_t* requested;
        const wchar_t* expected;
    } cases[] = {
        {L"ja", L"ja"},
        {L"JA", L"ja"},                  // the row's spelling comes back
        {L"PT_br", L"pt-BR"},            // step 2
        {L"zh", L"zh-Hans"},
        {L"ZH", L"zh-Hans"},
        {L"zh_CN", L"zh-Hans"},
        {L"zh-Hans-CN", L"zh-Hans"},
        {L"zh-SG", L"zh-Hans"},
        {L"zh-cn", L"en"},               // the region is case-sensitive
        {L"zh-TW", L"en"},               // Traditional Chinese never maps to Simplified
        {L"zh-Hant", L"en"},
        {L"zh-Hant-HK", L"en"},
        {L"pt-PT", L"en"},               // the base "pt" is no row
        {L"ko-KR", L"ko"},
        {L"es_MX", L"es"},
        {L"ja-JP-u-ca-japanese", L"ja"},
        {L"fr", L"en"},
        {L"", L"en"},
        {L"-", L"en"},
    };
    for (const auto& sample : cases) {
        EXPECT_EQ(ResolveLanguage(all, sample.requested), sample.expected) << TextToUtf8(sample.requested);
    }

    const std::vector<LanguageRow> withPlainZh = {{L"en", L""}, {L"zh", L""}};
    EXPECT_EQ(ResolveLanguage(withPlainZh, L"zh-CN"), L"zh") << "no zh-Hans row: the base decides";
    EXPECT_EQ(ResolveLanguage(withPlainZh, L"zh-TW"), L"zh");
    const std::vector<LanguageRow> noChinese = {{L"en", L""}, {L"ja", L""}};
    EXPECT_EQ(ResolveLanguage(noChinese, L"zh"), L"en");
    const std::vector<LanguageRow> noEnglish = {{L"ja", L""}, {L"ko", L""}};
    EXPECT_EQ(ResolveLanguage(noEnglish, L"fr"), L"en") << "step 7 gives \"en\" even when it is not listed";
    EXPECT_EQ(ResolveLanguage({}, L"ja"), L"en");
    const std::vector<LanguageRow> oddSpelling = {{L"EN", L""}, {L"Zh-hans", L""}};
    EXPECT_EQ(ResolveLanguage(oddSpelling, L"fr"), L"en") << "step 6 wants exactly \"en\"";
    EXPECT_EQ(ResolveLanguage(oddSpelling, L"zh-CN"), L"en") << "step 4 wants exactly \"zh-Hans\"";
    EXPECT_EQ(ResolveLanguage(oddSpelling, L"zh_hans"), L"Zh-hans");
}

TEST(EditorSettingsPath, OnlyEngineVersionsFiveZeroToFiveEightHaveOne)
{
    ScratchDirectory scratch(L"settings-path");
    const Text localAppData = LocalAppDataFolder();
    ASSERT_FALSE(localAppData.empty());

    const Text beside = scratch / L"beside";
    MakeEditorInstall(beside, L"5.3");
    EXPECT_EQ(EditorSettingsPath(beside),
        localAppData + L"\\UnrealEngine\\5.3\\Saved/Config/WindowsEditor/EditorSettings.ini");

    const Text versioned = scratch / L"game";
    MakeEditorInstall(JoinPath(versioned, L"KorvaneEditor\\5.8"), L"5.8");
    EXPECT_EQ(EditorSettingsPath(versioned),
        localAppData + L"\\UnrealEngine\\5.8\\Saved/Config/WindowsEditor/EditorSettings.ini");

    for (const wchar_t* outside : {L"5.9", L"4.27", L"5.10", L"6.0"}) {
        const Text install = scratch / (Text(L"v") + outside);
        MakeEditorInstall(install, outside);
        EXPECT_EQ(EditorSettingsPath(install), L"") << TextToUtf8(outside);
    }
    const Text unversioned = scratch / L"unversioned";
    MakeEditorInstall(unversioned, L"");
    EXPECT_EQ(EditorSettingsPath(unversioned), L"");
    EXPECT_EQ(EditorSettingsPath(L""), L"");
}

}  // namespace
}  // namespace korvane
