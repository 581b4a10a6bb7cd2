// The per-user selection: where it lives for an install, and what a save writes or refuses.
#include "HostFixtures.h"

#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"
#include "host/LaunchSelection.h"
#include "launch/LaunchContext.h"

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

// An install root with its own per-user store, and a context pointing at it.
struct SaveSetup {
    explicit SaveSetup(TextView label) : scratch(label), root(scratch / L"Install"), store(root)
    {
        testing::MakeDirectories(root);
        context.editorRoot = root;
        MakeGameInstall(game);
        MakeGameProject(scratch / L"Project");
        MakeTree(
            scratch.Path(), {L"Plain\\P.kvsdk", L"Elsewhere\\Any.kvsdk", L"Folder.kvsdk\\", L"\x6E38\x620F QX\\x.kvsdk"});
    }
    Text operator/(TextView relative) const { return scratch / relative; }
    Text StoreFolder() const { return ParentPath(store.Path()); }

    testing::ScratchDirectory scratch;
    Text root;
    SelectionStore store;
    LaunchContext context;
    Text game = scratch / L"\x6E38\x620F Q";
};

TEST(SaveLaunchSelection, WritesTheRecordByteForByteAndCreatesItsFolders)
{
    SaveSetup setup(L"save-written");
    const Text sdk = JoinPath(setup.game, L"\x00C9.kvsdk");
    Touch(sdk);
    ASSERT_FALSE(testing::FileExists(setup.StoreFolder()));
    // Paths are stored normalised, non-ASCII text as UTF-8, and no sibling is left behind.
    EXPECT_TRUE(SaveLaunchSelection(setup.context, setup.game + L"\\sub\\..\\\x00C9.kvsdk", setup.game + L"/"));
    EXPECT_EQ(setup.store.Read(), SelectionBytes(setup.root, L"packaged", setup.game, sdk));
    EXPECT_NE(setup.store.Read().find("\xE6\xB8\xB8\xE6\x88\x8F Q\\\\\xC3\x89.kvsdk\"}"), Bytes::npos);
    EXPECT_EQ(SnapshotTree(setup.StoreFolder()).size(), 1u);

    const Text any = setup / L"Elsewhere\\Any.kvsdk";
    EXPECT_TRUE(SaveLaunchSelection(setup.context, any, setup / L"Project")) << "a developer's SDK may lie anywhere";
    EXPECT_EQ(setup.store.Read(), SelectionBytes(setup.root, L"developer", setup / L"Project", any));
    EXPECT_TRUE(SaveLaunchSelection(setup.context, any, L""));
    EXPECT_EQ(setup.store.Read(), SelectionBytes(setup.root, L"standalone", L"", any));
    // The save does not judge the game: a folder that is no game is written all the same.
    EXPECT_TRUE(SaveLaunchSelection(setup.context, setup / L"Plain\\P.kvsdk", setup / L"Plain"));
    EXPECT_EQ(setup.store.Read(), SelectionBytes(setup.root, L"packaged", setup / L"Plain", setup / L"Plain\\P.kvsdk"));
}

TEST(SaveLaunchSelection, RefusalsWriteNothingAndKeepAnOlderFile)
{
    SaveSetup setup(L"save-refused");
    const Text outside = setup / L"Elsewhere\\Any.kvsdk";
    EXPECT_FALSE(SaveLaunchSelection(setup.context, outside, setup.game)) << "packaged SDK outside its game";
    EXPECT_FALSE(testing::FileExists(setup.StoreFolder())) << "a refused save creates no folder";

    const Bytes older = "{\"schemaVersion\":1,\"older\":true}";
    setup.store.Write(older);
    FolderLink link(JoinPath(setup.game, L"Sdk"), setup / L"Elsewhere");
    const std::pair<Text, Text> refusals[] = {
        {outside, setup.game},
        {L"", L""},
        {setup / L"Missing.kvsdk", L""},
        {setup / L"Folder.kvsdk", L""},
        {JoinPath(setup.game, L"..\\Elsewhere\\Any.kvsdk"), setup.game},  // the step back leads out
        {setup / L"\x6E38\x620F QX\\x.kvsdk", setup.game},               // a sibling sharing the game's name
        {outside, setup / L"Missing"},                                    // packaged, though missing
        {JoinPath(setup.game, L"Sdk\\Any.kvsdk"), setup.game},            // behind a link, when one could be made
    };
    for (const auto& [sdk, game] : refusals) {
        EXPECT_FALSE(SaveLaunchSelection(setup.context, sdk, game)) << TextToUtf8(sdk);
    }
    setup.context.pickerPreview = true;
    EXPECT_FALSE(SaveLaunchSelection(setup.context, outside, L"")) << "a preview never touches the store";
    EXPECT_EQ(setup.store.Read(), older);
    EXPECT_EQ(SnapshotTree(setup.StoreFolder()).size(), 1u);
}

}  // namespace
}  // namespace korvane::hosttest
