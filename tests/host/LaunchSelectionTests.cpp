// The per-user selection: where it lives for an install, and what a save writes or refuses.
#include "HostFixtures.h"

#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"
#include "host/LaunchSelection.h"

#include <gtest/gtest.h>

namespace korvane::hosttest {
namespace {

TEST(LaunchSelectionPath, IsKeyedByTheFoldedNormalisedRoot)
{
    for (const wchar_t* root : {L"c:\\editor", L"C:\\EDITOR", L"c:/editor/", L"c:\\editor\\x\\.."}) {
        EXPECT_EQ(InstallKey(root), 8760405274452771557ull) << TextToUtf8(root);
    }
    EXPECT_NE(InstallKey(L"c:\\editor2"), 8760405274452771557ull);
    // Only A to Z fold; the whole UTF-16 unit is one step of the hash, not its low byte.
    EXPECT_NE(InstallKey(L"c:\\\x00C9"), InstallKey(L"c:\\\x00E9"));
    EXPECT_EQ(InstallKey(L"c:\\\x00C9"), InstallKey(L"C:\\\x00C9"));
    EXPECT_NE(InstallKey(L"c:\\\x0100"), InstallKey(L"c:\\\x0001"));
    EXPECT_EQ(LaunchSelectionPath(L"C:\\Editor\\"),
        LocalAppDataFolder() + L"\\Korvane\\Launchers\\8760405274452771557\\selection.json");
}

TEST(SaveLaunchSelection, RefusesWithoutWritingAndOtherwiseWritesTheRecordByteForByte)
{
    testing::ScratchDirectory scratch(L"save");
    const Text root = scratch / L"Install", game = scratch / L"\x6E38\x620F Q", any = scratch / L"Elsewhere\\Any.kvsdk";
    const SelectionStore store(root);
    const Text storeFolder = ParentPath(store.Path());
    MakeGameInstall(game);
    MakeGameProject(scratch / L"Project");
    MakeTree(scratch.Path(), {L"Install\\", L"Plain\\P.kvsdk", L"Elsewhere\\Any.kvsdk", L"Folder.kvsdk\\",
        L"\x6E38\x620F QX\\x.kvsdk", L"\x6E38\x620F Q\\\x00C9.kvsdk"});
    EXPECT_FALSE(SaveLaunchSelection(root, any, game)) << "packaged SDK outside its game";
    EXPECT_FALSE(testing::FileExists(storeFolder)) << "a refused save creates no folder";
    // The first save makes the folders it needs.
    EXPECT_TRUE(SaveLaunchSelection(root, any, L""));
    EXPECT_EQ(store.Read(), SelectionBytes(root, L"standalone", L"", any));

    const Bytes older = "{\"schemaVersion\":1,\"older\":true}";
    store.Write(older);
    FolderLink link(JoinPath(game, L"Sdk"), scratch / L"Elsewhere");
    ASSERT_TRUE(link.IsMade());
    ASSERT_TRUE(IsRegularFile(JoinPath(game, L"Sdk\\Any.kvsdk"))) << "the SDK behind the link must exist";
    const std::pair<Text, Text> refusals[] = {
        {L"", L""},
        {scratch / L"Missing.kvsdk", L""},
        {scratch / L"Folder.kvsdk", L""},
        {JoinPath(game, L"..\\Elsewhere\\Any.kvsdk"), game},  // the step back leads out
        {scratch / L"\x6E38\x620F QX\\x.kvsdk", game},      // a sibling sharing the game's name
        {any, scratch / L"Missing"},                           // packaged, though missing
        {JoinPath(game, L"Sdk\\Any.kvsdk"), game},            // behind a link
    };
    for (const auto& [sdk, host] : refusals) {
        EXPECT_FALSE(SaveLaunchSelection(root, sdk, host)) << TextToUtf8(sdk);
    }
    EXPECT_EQ(store.Read(), older);

    // Paths are stored normalised, non-ASCII text as UTF-8, and no sibling is left behind.
    EXPECT_TRUE(SaveLaunchSelection(root, game + L"\\sub\\..\\\x00C9.kvsdk", game + L"/"));
    EXPECT_EQ(store.Read(), SelectionBytes(root, L"packaged", game, game + L"\\\x00C9.kvsdk"));
    EXPECT_NE(store.Read().find("\xE6\xB8\xB8\xE6\x88\x8F Q\\\\\xC3\x89.kvsdk\"}"), Bytes::npos);
    EXPECT_EQ(SnapshotTree(storeFolder).size(), 1u);
    EXPECT_TRUE(SaveLaunchSelection(root, any, scratch / L"Project")) << "a developer's SDK may lie anywhere";
    EXPECT_EQ(store.Read(), SelectionBytes(root, L"developer", scratch / L"Project", any));
    EXPECT_TRUE(SaveLaunchSelection(root, any, L""));
    EXPECT_EQ(store.Read(), SelectionBytes(root, L"standalone", L"", any));
    // The save does not judge the game: a folder that is no game is written all the same.
    EXPECT_TRUE(SaveLaunchSelection(root, scratch / L"Plain\\P.kvsdk", scratch / L"Plain"));
    EXPECT_EQ(store.Read(), SelectionBytes(root, L"packaged", scratch / L"Plain", scratch / L"Plain\\P.kvsdk"));
}

}  // namespace
}  // namespace korvane::hosttest
