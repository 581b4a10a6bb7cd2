// Game folders told from other folders, and the one SDK of a folder, on real trees.
#include "HostFixtures.h"
#include "TestSupport.h"

#include "foundation/Paths.h"
#include "host/SdkDiscovery.h"
#include "launch/UiLanguage.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using hosttest::Touch;
using testing::ScratchDirectory;

TEST(GameDirectoryTests, InstallFolderIsAnyOtherExecutableOrTheShippingBinary)
{
    ScratchDirectory scratch(L"game-install");
    const Text onlyLauncher = scratch / L"OnlyLauncher";
    Touch(JoinPath(onlyLauncher, L"KorvaneEditor.exe"));
    EXPECT_FALSE(IsGameInstallDirectory(onlyLauncher));

    const Text withSetup = scratch / L"WithSetup";
    Touch(JoinPath(withSetup, L"korvaneeditor.exe"));
    Touch(JoinPath(withSetup, L"Setup.exe"));
    EXPECT_TRUE(IsGameInstallDirectory(withSetup));

    const Text exeFolder = scratch / L"ExeFolder";
    testing::MakeDirectories(JoinPath(exeFolder, L"Tools.exe"));
    EXPECT_FALSE(IsGameInstallDirectory(exeFolder)) << "a folder named like an executable is none";

    const Text title = scratch / L"Title";
    Touch(JoinPath(title, L"Binaries\\Win64\\Title-Win64-Shipping.exe"));
    EXPECT_TRUE(IsGameInstallDirectory(title));
    const Text renamed = scratch / L"Renamed";
    Touch(JoinPath(renamed, L"Binaries\\Win64\\Title-Win64-Shipping.exe"));
    EXPECT_FALSE(IsGameInstallDirectory(renamed)) << "the binary must carry the folder's name";

    EXPECT_FALSE(IsGameInstallDirectory(scratch / L"Missing"));
    EXPECT_FALSE(IsGameInstallDirectory(L""));
}

TEST(GameDirectoryTests, ProjectFolderNeedsBothFilesAndAGameProject)
{
    ScratchDirectory scratch(L"game-project");
    const Text project = scratch / L"Project";
    Touch(JoinPath(project, L"Config\\DefaultGame.ini"));
    Touch(JoinPath(project, L"Content\\Korvane\\DA_KorvaneContract.uasset"));
    Touch(JoinPath(project, L"KorvaneSDK.uproject"));
    EXPECT_FALSE(IsGameProjectDirectory(project)) << "the authoring template alone is no game project";
    testing::MakeDirectories(JoinPath(project, L"Folder.uproject"));
    EXPECT_FALSE(IsGameProjectDirectory(project));
    Touch(JoinPath(project, L"Game.uproject"));
    EXPECT_TRUE(IsGameProjectDirectory(project));
    EXPECT_FALSE(IsGameInstallDirectory(project)) << "the two tests are independent";

    DeleteFileW(JoinPath(project, L"Content\\Korvane\\DA_KorvaneContract.uasset").c_str());
    EXPECT_FALSE(IsGameProjectDirectory(project));
    testing::MakeDirectories(JoinPath(project, L"Content\\Korvane\\DA_KorvaneContract.uasset"));
    EXPECT_FALSE(IsGameProjectDirectory(project)) << "a folder of the contract's name";

    const Text noConfig = scratch / L"NoConfig";
    Touch(JoinPath(noConfig, L"Content\\Korvane\\DA_KorvaneContract.uasset"));
    Touch(JoinPath(noConfig, L"Game.uproject"));
    EXPECT_FALSE(IsGameProjectDirectory(noConfig));
    EXPECT_FALSE(IsGameProjectDirectory(L""));
}

TEST(FindSdkFile, TheTwoFixedNamesComeBeforeTheListing)
{
    ScratchDirectory scratch(L"sdk-names");
    const Text title = scratch / L"Title";
    Touch(JoinPath(title, L"TITLE.KVSDK"));
    Touch(JoinPath(title, L"KorvaneSDK.kvsdk"));
    Touch(JoinPath(title, L"Other.kvsdk"));
    // The case of the built name, not the one on disk.
    EXPECT_EQ(FindSdkFile(title, L""), JoinPath(title, L"Title.kvsdk"));
    EXPECT_EQ(FindSdkFile(title + L"\\", L""), JoinPath(title, L"Title.kvsdk")) << "the folder is normalised";

    DeleteFileW(JoinPath(title, L"TITLE.KVSDK").c_str());
    EXPECT_EQ(FindSdkFile(title, L""), JoinPath(title, L"KorvaneSDK.kvsdk"));

    DeleteFileW(JoinPath(title, L"KorvaneSDK.kvsdk").c_str());
    EXPECT_EQ(FindSdkFile(title, L""), JoinPath(title, L"Other.kvsdk"));
    Touch(JoinPath(title, L"Another.kvsdk"));
    EXPECT_EQ(FindSdkFile(title, L""), L"") << "two candidates: no answer";

    // Folders never count, neither as a candidate nor as a rival.
    const Text folders = scratch / L"Folders";
    testing::MakeDirectories(JoinPath(folders, L"a.kvsdk"));
    Touch(JoinPath(folders, L"b.kvsdk"));
    EXPECT_EQ(FindSdkFile(folders, L""), JoinPath(folders, L"b.kvsdk"));

    EXPECT_EQ(FindSdkFile(scratch / L"Missing", L""), L"");
    EXPECT_EQ(FindSdkFile(L"", L""), L"");
    const Text empty = scratch / L"Empty";
    Touch(JoinPath(empty, L"readme.txt"));
    EXPECT_EQ(FindSdkFile(empty, L""), L"");
}

TEST(FindSdkFile, ALinkBesideTheOnlySdkDoesNotMakeItAmbiguous)
{
    ScratchDirectory scratch(L"sdk-link");
    const Text folder = scratch / L"Folder";
    Touch(JoinPath(folder, L"a.kvsdk"));
    testing::MakeDirectories(scratch / L"Target");
    hosttest::FolderLink link(JoinPath(folder, L"b.kvsdk"), scratch / L"Target");
    if (!link.IsMade()) {
        GTEST_SKIP() << "this system cannot make folder links";
    }
    EXPECT_EQ(FindSdkFile(folder, L""), JoinPath(folder, L"a.kvsdk"));
}

TEST(FindSdkFile, AnExplicitPathIsTakenOrRefusedWithoutASearch)
{
    ScratchDirectory scratch(L"sdk-explicit");
    const Text game = scratch / L"Game";
    Touch(JoinPath(game, L"Game.kvsdk"));
    Touch(scratch / L"x\\y.KVSDK");
    Touch(scratch / L"x\\y.kvsdk.bak");
    Touch(scratch / L"x\\kvsdk");
    testing::MakeDirectories(scratch / L"x\\folder.kvsdk");

    EXPECT_EQ(FindSdkFile(L"", scratch / L"x\\sub\\..\\y.KVSDK"), scratch / L"x\\y.KVSDK");
    EXPECT_EQ(FindSdkFile(game, scratch / L"x/y.KVSDK"), scratch / L"x\\y.KVSDK") << "the game plays no part";
    EXPECT_EQ(FindSdkFile(L"", scratch / L"x\\y.kvsdk.bak"), L"");
    EXPECT_EQ(FindSdkFile(L"", scratch / L"x\\kvsdk"), L"");
    EXPECT_EQ(FindSdkFile(L"", scratch / L"x\\folder.kvsdk"), L"");
    EXPECT_EQ(FindSdkFile(game, scratch / L"x\\missing.kvsdk"), L"") << "no fall-back on the game's own SDK";
}

TEST(FindSdkBelowDirectory, LooksOneLevelDownAndOnlyForASingleAnswer)
{
    ScratchDirectory scratch(L"sdk-below");
    const Text root = scratch / L"Root";
    Touch(JoinPath(root, L"Sub1\\One.kvsdk"));
    EXPECT_EQ(FindSdkBelowDirectory(root), JoinPath(root, L"Sub1\\One.kvsdk"));

    // A subfolder that is itself ambiguous gives nothing and does not count.
    Touch(JoinPath(root, L"Sub2\\A.kvsdk"));
    Touch(JoinPath(root, L"Sub2\\B.kvsdk"));
    EXPECT_EQ(FindSdkBelowDirectory(root), JoinPath(root, L"Sub1\\One.kvsdk"));

    // Dot-folders and the second level are not searched.
    Touch(JoinPath(root, L".cache\\Cached.kvsdk"));
    Touch(JoinPath(root, L"Deep\\Deeper\\Deep.kvsdk"));
    EXPECT_EQ(FindSdkBelowDirectory(root), JoinPath(root, L"Sub1\\One.kvsdk"));

    Touch(JoinPath(root, L"Sub3\\Sub3.kvsdk"));
    EXPECT_EQ(FindSdkBelowDirectory(root), L"") << "two subfolders with an SDK each";

    // The folder's own SDK wins over every subfolder.
    Touch(JoinPath(root, L"Own.kvsdk"));
    EXPECT_EQ(FindSdkBelowDirectory(root), JoinPath(root, L"Own.kvsdk"));

    const Text dotOnly = scratch / L"DotOnly";
    Touch(JoinPath(dotOnly, L".cache\\Cached.kvsdk"));
    EXPECT_EQ(FindSdkBelowDirectory(dotOnly), L"");
    EXPECT_EQ(FindSdkBelowDirectory(L""), L"");
}

TEST(FindSdkBelowDirectory, LinkedSubfoldersAreNotSearched)
{
    ScratchDirectory scratch(L"sdk-below-link");
    const Text root = scratch / L"Root";
    testing::MakeDirectories(root);
    Touch(scratch / L"Elsewhere\\Linked.kvsdk");
    hosttest::FolderLink link(JoinPath(root, L"Linked"), scratch / L"Elsewhere");
    if (!link.IsMade()) {
        GTEST_SKIP() << "this system cannot make folder links";
    }
    EXPECT_EQ(FindSdkBelowDirectory(root), L"");
    Touch(JoinPath(root, L"Plain\\Plain.kvsdk"));
    EXPECT_EQ(FindSdkBelowDirectory(root), JoinPath(root, L"Plain\\Plain.kvsdk"));
}

// Restores the process's language when a test has changed it.
struct UiLanguageScope {
    ~UiLanguageScope() { SetUiLanguage(L"en"); }
};

TEST(ResolveSdkSelection, SettlesThePairOrGivesKV4300InTheUiLanguage)
{
    ScratchDirectory scratch(L"sdk-selection");
    const Text game = scratch / L"Game";
    Touch(JoinPath(game, L"Game.kvsdk"));
    const Text english = L"KV4300: Select the matching .kvsdk file or the game directory containing its SDK.";

    Text gameDirectory = L"old";
    Text sdk = L"old";
    Text message = L"untouched";
    EXPECT_TRUE(ResolveSdkSelection(game + L"\\", L"", gameDirectory, sdk, message));
    EXPECT_EQ(gameDirectory, game);
    EXPECT_EQ(sdk, JoinPath(game, L"Game.kvsdk"));
    EXPECT_EQ(message, L"untouched");

    EXPECT_FALSE(ResolveSdkSelection(L"", L"", gameDirectory, sdk, message));
    EXPECT_EQ(gameDirectory, L"");
    EXPECT_EQ(sdk, L"");
    EXPECT_EQ(message, english);

    // The game directory stays set while the SDK is refused.
    EXPECT_FALSE(ResolveSdkSelection(game, scratch / L"Missing.kvsdk", gameDirectory, sdk, message));
    EXPECT_EQ(gameDirectory, game);
    EXPECT_EQ(sdk, L"");

    UiLanguageScope restore;
    SetUiLanguage(L"zh-Hans");
    EXPECT_FALSE(ResolveSdkSelection(scratch / L"Nothing", L"", gameDirectory, sdk, message));
    EXPECT_EQ(message, L"KV4300: \x8BF7\x9009\x62E9\x5339\x914D\x7684 .kvsdk \x6587\x4EF6\xFF0C\x6216\x5305\x542B\x6E38\x620F SDK \x7684\x76EE\x5F55\x3002");
}

}  // namespace
}  // namespace korvane
