// The per-user selection: where it lives for an install, and what a save writes or refuses.
#include "HostFixtures.h"
#include "TestSupport.h"

#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"
#include "host/LaunchSelection.h"
#include "launch/LaunchContext.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using testing::ScratchDirectory;

TEST(LaunchSelectionPath, IsKeyedByTheFoldedNormalisedRoot)
{
    EXPECT_EQ(InstallKey(L"c:\\editor"), 8760405274452771557ull);
    EXPECT_EQ(InstallKey(L"C:\\EDITOR"), 8760405274452771557ull) << "A to Z fold";
    EXPECT_EQ(InstallKey(L"c:/editor/"), 8760405274452771557ull) << "the root is normalised first";
    EXPECT_EQ(InstallKey(L"c:\\editor\\x\\.."), 8760405274452771557ull);
    EXPECT_NE(InstallKey(L"c:\\editor2"), 8760405274452771557ull);
    // Only A to Z fold; each UTF-16 unit is one step of the hash.
    EXPECT_NE(InstallKey(L"c:\\\x00C9"), InstallKey(L"c:\\\x00E9"));
    EXPECT_EQ(InstallKey(L"c:\\\x00C9"), InstallKey(L"C:\\\x00C9"));
    EXPECT_NE(InstallKey(L"c:\\\x0100"), InstallKey(L"c:\\\x0001"))
        << "the whole unit goes into the hash, not its low byte";

    const Text base = LocalAppDataFolder();
    ASSERT_FALSE(base.empty());
    EXPECT_EQ(LaunchSelectionPath(L"c:\\editor"), base + L"\\Korvane\\Launchers\\8760405274452771557\\selection.json");
    EXPECT_EQ(LaunchSelectionPath(L"C:\\Editor\\"), LaunchSelectionPath(L"c:\\editor"));
}

// An install root with its own per-user store, and a context pointing at it.
struct SaveSetup {
    explicit SaveSetup(TextView label) : scratch(label), root(scratch / L"Install"), store(root)
    {
        testing::MakeDirectories(root);
        context.editorRoot = root;
    }
    Text operator/(TextView relative) const { return scratch / relative; }

    ScratchDirectory scratch;
    Text root;
    hosttest::SelectionStore store;
    LaunchContext context;
};

TEST(SaveLaunchSelection, WritesTheRecordByteForByteAndCreatesItsFolders)
{
    SaveSetup setup(L"save-packaged");
    const Text game = setup / L"Title";
    hosttest::MakeGameInstall(game);
    const Text sdk = JoinPath(game, L"Title.kvsdk");
    hosttest::Touch(sdk);
    ASSERT_FALSE(testing::FileExists(ParentPath(setup.store.Path()))) << "a first save makes the key's folder";

    // Paths are stored normalised: the separators and the step back disappear.
    EXPECT_TRUE(SaveLaunchSelection(setup.context, game + L"\\sub\\..\\Title.kvsdk", game + L"/"));
    EXPECT_EQ(setup.store.Read(), hosttest::SelectionBytes(setup.root, L"packaged", game, sdk));
    EXPECT_EQ(setup.store.Read().front(), '{') << "no byte-order mark";
    EXPECT_EQ(hosttest::SnapshotTree(ParentPath(setup.store.Path())).size(), 1u) << "no sibling is left behind";

    // A developer's project folder; the SDK may lie anywhere.
    const Text project = setup / L"Project";
    hosttest::MakeGameProject(project);
    const Text outside = setup / L"Elsewhere\\Any.kvsdk";
    hosttest::Touch(outside);
    EXPECT_TRUE(SaveLaunchSelection(setup.context, outside, project));
    EXPECT_EQ(setup.store.Read(), hosttest::SelectionBytes(setup.root, L"developer", project, outside));

    // Stand-alone: no game directory.
    EXPECT_TRUE(SaveLaunchSelection(setup.context, outside, L""));
    EXPECT_EQ(setup.store.Read(), hosttest::SelectionBytes(setup.root, L"standalone", L"", outside));
    EXPECT_NE(setup.store.Read().find("\"environment\":\"standalone\",\"gameDirectory\":\"\""), Bytes::npos);

    // The save does not judge the game: a folder that is no game is written all the same.
    const Text plain = setup / L"Plain";
    testing::MakeDirectories(plain);
    const Text plainSdk = JoinPath(plain, L"P.kvsdk");
    hosttest::Touch(plainSdk);
    EXPECT_TRUE(SaveLaunchSelection(setup.context, plainSdk, plain));
    EXPECT_EQ(setup.store.Read(), hosttest::SelectionBytes(setup.root, L"packaged", plain, plainSdk));
}

TEST(SaveLaunchSelection, NonAsciiPathsAreStoredAsUtf8)
{
    SaveSetup setup(L"save-unicode");
    const Text game = setup / L"\x6E38\x620F Q";
    hosttest::MakeGameInstall(game);
    const Text sdk = JoinPath(game, L"\x00C9.kvsdk");
    hosttest::Touch(sdk);
    EXPECT_TRUE(SaveLaunchSelection(setup.context, sdk, game));
    const Bytes stored = setup.store.Read();
    EXPECT_EQ(stored, hosttest::SelectionBytes(setup.root, L"packaged", game, sdk));
    EXPECT_NE(stored.find("\xE6\xB8\xB8\xE6\x88\x8F Q\\\\\xC3\x89.kvsdk"), Bytes::npos);
}

TEST(SaveLaunchSelection, RefusalsWriteNothingAndKeepAnOlderFile)
{
    SaveSetup setup(L"save-refused");
    const Text game = setup / L"Title";
    hosttest::MakeGameInstall(game);
    const Text outside = setup / L"Outside.kvsdk";
    hosttest::Touch(outside);

    // Nothing stored yet: a refused save creates no folder either.
    EXPECT_FALSE(SaveLaunchSelection(setup.context, outside, game));
    EXPECT_FALSE(testing::FileExists(ParentPath(setup.store.Path())));

    const Bytes older = "{\"schemaVersion\":1,\"older\":true}";
    setup.store.Write(older);
    EXPECT_FALSE(SaveLaunchSelection(setup.context, outside, game)) << "packaged SDK outside its game";
    EXPECT_FALSE(SaveLaunchSelection(setup.context, L"", L"")) << "no SDK";
    EXPECT_FALSE(SaveLaunchSelection(setup.context, setup / L"Missing.kvsdk", L"")) << "SDK is no file";
    testing::MakeDirectories(setup / L"Folder.kvsdk");
    EXPECT_FALSE(SaveLaunchSelection(setup.context, setup / L"Folder.kvsdk", L"")) << "SDK is a folder";
    // A packaged game whose SDK only seems to lie inside it: the step back leads out.
    EXPECT_FALSE(SaveLaunchSelection(setup.context, JoinPath(game, L"..\\Outside.kvsdk"), game));
    setup.context.pickerPreview = true;
    EXPECT_FALSE(SaveLaunchSelection(setup.context, outside, L"")) << "a preview never touches the store";
    EXPECT_EQ(setup.store.Read(), older);
    EXPECT_EQ(hosttest::SnapshotTree(ParentPath(setup.store.Path())).size(), 1u);
}

TEST(SaveLaunchSelection, APackagedSdkBehindAFolderLinkIsRefused)
{
    SaveSetup setup(L"save-link");
    const Text game = setup / L"Title";
    hosttest::MakeGameInstall(game);
    const Text elsewhere = setup / L"Elsewhere";
    hosttest::Touch(JoinPath(elsewhere, L"Linked.kvsdk"));
    hosttest::FolderLink link(JoinPath(game, L"Sdk"), elsewhere);
    if (!link.IsMade()) {
        GTEST_SKIP() << "this system cannot make folder links";
    }
    EXPECT_FALSE(SaveLaunchSelection(setup.context, JoinPath(game, L"Sdk\\Linked.kvsdk"), game));
    EXPECT_FALSE(testing::FileExists(setup.store.Path()));
    // A developer's project does not constrain its SDK, link or not.
    hosttest::MakeGameProject(game);
    EXPECT_TRUE(SaveLaunchSelection(setup.context, JoinPath(game, L"Sdk\\Linked.kvsdk"), game));
}

}  // namespace
}  // namespace korvane
