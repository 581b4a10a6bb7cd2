// Game folders told from other folders, and the one SDK of a folder, on real trees.
#include "HostFixtures.h"

#include "context/UiLanguage.h"
#include "foundation/Paths.h"
#include "host/SdkDiscovery.h"

#include <gtest/gtest.h>

namespace korvane::hosttest {
namespace {

using testing::ScratchDirectory;

TEST(GameDirectoryTests, InstallAndProjectFolders)
{
    ScratchDirectory scratch(L"game-dirs");
    const Text ini = L"Config\\DefaultGame.ini", contract = L"Content\\Korvane\\DA_KorvaneContract.uasset";
    const struct {
        const wchar_t* name;
        std::vector<Text> entries;
        bool install, project;
    } rows[] = {
        {L"OnlyLauncher", {L"KorvaneEditor.exe"}, false, false},
        {L"WithSetup", {L"korvaneeditor.exe", L"Setup.exe"}, true, false},
        {L"ExeFolder", {L"Tools.exe\\"}, false, false},
        {L"Title", {L"Binaries\\Win64\\Title-Win64-Shipping.exe"}, true, false},
        {L"Renamed", {L"Binaries\\Win64\\Title-Win64-Shipping.exe"}, false, false},
        {L"TemplateOnly", {ini, contract, L"KorvaneSDK.uproject", L"Folder.uproject\\"}, false, false},
        {L"Project", {ini, contract, L"KorvaneSDK.uproject", L"Game.uproject"}, false, true},
        {L"NoContract", {ini, contract + L"\\", L"Game.uproject"}, false, false},
        {L"NoConfig", {contract, L"Game.uproject"}, false, false},
    };
    for (const auto& row : rows) {
        MakeTree(scratch / row.name, row.entries);
        EXPECT_EQ(IsGameInstallDirectory(scratch / row.name), row.install) << TextToUtf8(row.name);
        EXPECT_EQ(IsGameProjectDirectory(scratch / row.name), row.project) << TextToUtf8(row.name);
    }
    EXPECT_FALSE(IsGameInstallDirectory(scratch / L"Missing"));
    EXPECT_FALSE(IsGameInstallDirectory(L""));
    EXPECT_FALSE(IsGameProjectDirectory(L""));
}

TEST(FindSdk, InAFolderOneLevelBelowItOrByAnExplicitPath)
{
    ScratchDirectory scratch(L"sdk-find");
    // Each row is a fresh folder holding `entries`: the answers in it, and one level below it.
    const struct {
        const wchar_t* name;
        std::vector<Text> entries;
        const wchar_t *inFolder, *below;  // relative to the folder; "" for no answer
    } rows[] = {
        // The case of the built name, not the one on disk; the fixed names end the search.
        {L"Title", {L"TITLE.KVSDK", L"KorvaneSDK.kvsdk", L"Other.kvsdk"}, L"Title.kvsdk", L"Title.kvsdk"},
        {L"Fixed", {L"KorvaneSDK.kvsdk", L"Other.kvsdk"}, L"KorvaneSDK.kvsdk", L"KorvaneSDK.kvsdk"},
        {L"One", {L"A.kvsdk"}, L"A.kvsdk", L"A.kvsdk"},
        {L"Two", {L"A.kvsdk", L"B.kvsdk"}, L"", L""},
        {L"Folders", {L"a.kvsdk\\", L"b.kvsdk"}, L"b.kvsdk", L"b.kvsdk"},  // folders never count
        {L"None", {L"readme.txt"}, L"", L""},
        // An ambiguous subfolder gives nothing and does not count; nor do dot-folders and the second level.
        {L"B1", {L"Sub1\\One.kvsdk", L"Sub2\\A.kvsdk", L"Sub2\\B.kvsdk"}, L"", L"Sub1\\One.kvsdk"},
        {L"B2", {L"Sub1\\One.kvsdk", L".cache\\C.kvsdk", L"Deep\\Deeper\\D.kvsdk"}, L"", L"Sub1\\One.kvsdk"},
        {L"B3", {L"Sub1\\One.kvsdk", L"Sub3\\Sub3.kvsdk"}, L"", L""},
        {L"B4", {L"Sub1\\One.kvsdk", L"Sub3\\Sub3.kvsdk", L"Own.kvsdk"}, L"Own.kvsdk", L"Own.kvsdk"},
        {L"B5", {L".cache\\C.kvsdk"}, L"", L""},
    };
    const auto answer = [&](const wchar_t* name, const wchar_t* relative) {
        return *relative == 0 ? Text() : JoinPath(scratch / name, relative);
    };
    for (const auto& row : rows) {
        MakeTree(scratch / row.name, row.entries);
        EXPECT_EQ(FindSdkFile(scratch / row.name + L"\\", L""), answer(row.name, row.inFolder)) << TextToUtf8(row.name);
        EXPECT_EQ(FindSdkBelowDirectory(scratch / row.name), answer(row.name, row.below)) << TextToUtf8(row.name);
    }
    EXPECT_EQ(FindSdkFile(scratch / L"Missing", L""), L"");
    EXPECT_EQ(FindSdkFile(L"", L""), L"");
    EXPECT_EQ(FindSdkBelowDirectory(L""), L"");

    // An explicit path is taken or refused without a search; the game plays no part.
    MakeTree(scratch / L"x", {L"y.KVSDK", L"y.kvsdk.bak", L"kvsdk", L"folder.kvsdk\\"});
    EXPECT_EQ(FindSdkFile(L"", scratch / L"x\\sub\\..\\y.KVSDK"), scratch / L"x\\y.KVSDK");
    EXPECT_EQ(FindSdkFile(scratch / L"One", scratch / L"x/y.KVSDK"), scratch / L"x\\y.KVSDK");
    for (const wchar_t* refused : {L"x\\y.kvsdk.bak", L"x\\kvsdk", L"x\\folder.kvsdk", L"x\\missing.kvsdk"}) {
        EXPECT_EQ(FindSdkFile(scratch / L"One", scratch / refused), L"") << "no fall-back on the game's own SDK";
    }
}

TEST(FindSdk, FolderLinksNeitherRivalNorAreSearched)
{
    ScratchDirectory scratch(L"sdk-link");
    MakeTree(scratch.Path(), {L"Folder\\a.kvsdk", L"Target\\Linked.kvsdk", L"Root\\"});
    FolderLink beside(scratch / L"Folder\\b.kvsdk", scratch / L"Target");
    FolderLink below(scratch / L"Root\\Linked", scratch / L"Target");
    if (!beside.IsMade() || !below.IsMade()) {
        GTEST_SKIP() << "this system cannot make folder links";
    }
    EXPECT_EQ(FindSdkFile(scratch / L"Folder", L""), scratch / L"Folder\\a.kvsdk");
    EXPECT_EQ(FindSdkBelowDirectory(scratch / L"Root"), L"");
    Touch(scratch / L"Root\\Plain\\Plain.kvsdk");
    EXPECT_EQ(FindSdkBelowDirectory(scratch / L"Root"), scratch / L"Root\\Plain\\Plain.kvsdk");
}

TEST(ResolveSdkSelection, SettlesThePairOrGivesKV4300InTheUiLanguage)
{
    ScratchDirectory scratch(L"sdk-selection");
    const Text game = scratch / L"Game";
    Touch(JoinPath(game, L"Game.kvsdk"));
    Text gameDirectory = L"old", sdk = L"old", message = L"untouched";
    EXPECT_TRUE(ResolveSdkSelection(game + L"\\", L"", gameDirectory, sdk, message));
    EXPECT_EQ(std::tie(gameDirectory, sdk, message),
        std::make_tuple(game, JoinPath(game, L"Game.kvsdk"), Text(L"untouched")));
    EXPECT_FALSE(ResolveSdkSelection(L"", L"", gameDirectory, sdk, message));
    EXPECT_EQ(std::tie(gameDirectory, sdk, message), std::make_tuple(Text(), Text(), kNoSdkSelectedMessage.In(false)));
    // The game directory stays set while the SDK is refused, in the other language too.
    const testing::ScopedUiLanguage chinese(L"zh-Hans");
    EXPECT_FALSE(ResolveSdkSelection(game, scratch / L"Missing.kvsdk", gameDirectory, sdk, message));
    EXPECT_EQ(std::tie(gameDirectory, sdk, message), std::make_tuple(game, Text(), kNoSdkSelectedMessage.In(true)));
}

}  // namespace
}  // namespace korvane::hosttest
