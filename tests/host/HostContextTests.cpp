// The real launcher working out its game and SDK: from the command line, the configuration,
// the stored selection and the folder it lies in, in that order; and the per-user selection
// itself: where it lives for an install, and what a save writes or refuses.
#include "HostFixtures.h"

#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"
#include "host/LaunchSelection.h"

#include <gtest/gtest.h>

namespace korvane::hosttest {
namespace {

// An install at S\Title\Install inside the shipped game S\Title, which holds Title.kvsdk, and
// a second SDK inside the game that only a stored selection names.
struct InGame : ScratchInstall {
    explicit InGame(TextView label) : ScratchInstall(label, L"Title\\Install")
    {
        MakeGameInstall(game, L"Title.exe");
        MakeTree(game, {L"Title.kvsdk", L"Mods\\Deep\\Stored.kvsdk"});
    }
    Bytes Stored(TextView environment, TextView gameDirectory, TextView sdk) const
    {
        return SelectionBytes(Root(), environment, gameDirectory, sdk);
    }
    Text game = *this / L"Title";
    Text gameSdk = *this / L"Title\\Title.kvsdk";
    Text storedSdk = *this / L"Title\\Mods\\Deep\\Stored.kvsdk";
};

TEST(HostContext, TheCommandLineAndTheConfigurationComeFirst)
{
    const InGame install(L"context-first");
    install.Selection().Write(install.Stored(L"packaged", install.game, install.storedSdk));
    const Text otherSdk = install / L"Other\\Other.kvsdk";
    Touch(otherSdk);
    install.ExpectReport({L"-KorvaneGameDir=C:\\Given"}, L"C:\\Given", L"", L"");
    install.ExpectReport({L"-sdk=" + otherSdk}, L"", otherSdk, L"");
    install.ExpectReport({L"-KorvaneHostEnvironment=developer"}, L"", L"", L"developer");
    // Only an element that begins with the option, in its case, counts.
    install.ExpectReport({L"x-KorvaneHostEnvironment=developer", L"-korvanehostenvironment=developer"}, install.game,
        install.storedSdk, L"packaged");
    // The configuration names a game: the selection and the parent are not consulted.
    testing::WriteFileBytes(install.ConfigFile(), R"({"schemaVersion":1,"gameDirectory":"../../Other"})");
    install.ExpectReport({}, install / L"Other", otherSdk, L"packaged");
}

TEST(HostContext, AGameAroundTheInstallGivesItsOwnSdk)
{
    ScratchInstall install(L"context-parent", L"Title\\Install");
    const Text game = install / L"Title";
    Touch(game + L"\\Title.kvsdk");
    install.ExpectReport({}, L"", L"", L"");  // a parent that is no game is not searched
    MakeGameInstall(game, L"Title.exe");
    install.ExpectReport({}, game, game + L"\\Title.kvsdk", L"packaged");
    // Two SDKs in the game: its subfolders decide, and when they do not, nothing is set.
    DeleteFileW((game + L"\\Title.kvsdk").c_str());
    MakeTree(game, {L"A.kvsdk", L"B.kvsdk", L"One\\One.kvsdk"});
    install.ExpectReport({}, game, game + L"\\One\\One.kvsdk", L"packaged");
    Touch(game + L"\\Two\\Two.kvsdk");
    install.ExpectReport({}, L"", L"", L"");

    ScratchInstall inProject(L"context-project", L"Game\\Install");
    const Text project = inProject / L"Game";
    MakeGameProject(project);
    Touch(project + L"\\Sdk\\Game.kvsdk");
    inProject.ExpectReport({}, project, project + L"\\Sdk\\Game.kvsdk", L"developer");
    Touch(project + L"\\.korvane-host-bundle.json");
    inProject.ExpectReport({}, project, project + L"\\Sdk\\Game.kvsdk", L"packaged");
}

// Inside a game each refused selection falls back on the game's own SDK, and the file stays.
TEST(HostContext, AStoredSelectionInsideAGameIsAdoptedOnlyWhenEveryTestHolds)
{
    const InGame install(L"context-stored");
    MakeGameInstall(install / L"Other", L"Other.exe");
    MakeTree(install.ScratchPath(), {L"Other\\Other.kvsdk", L"Outside.kvsdk", L"Title\\Folder.kvsdk\\",
        L"Elsewhere\\Linked.kvsdk"});
    const Text& game = install.game;
    const Bytes valid = install.Stored(L"packaged", game, install.storedSdk);
    install.Selection().Write(valid);
    install.ExpectReport({}, game, install.storedSdk, L"packaged");

    const auto upper = [](Text text) { return CharUpperBuffW(text.data(), static_cast<DWORD>(text.size())), text; };
    std::vector<Bytes> refusals = {
        Replace(valid, "\"schemaVersion\":1", "\"schemaVersion\":2"),  // another schema
        SelectionBytes(upper(install.Root()), L"packaged", game, install.storedSdk),  // the root, exactly
        install.Stored(L"developer", game, install.storedSdk),  // an environment the game no longer has
        install.Stored(L"Packaged", game, install.storedSdk),
        install.Stored(L"packaged", game, game + L"\\Gone.kvsdk"),  // the SDK must be a file
        install.Stored(L"packaged", game, game + L"\\Folder.kvsdk"),
        install.Stored(L"standalone", L"", install.storedSdk),  // an install in a game adopts only that game
        install.Stored(L"packaged", install / L"Other", install / L"Other\\Other.kvsdk"),
        install.Stored(L"packaged", upper(game), install.storedSdk),
        install.Stored(L"packaged", game, install / L"Outside.kvsdk"),  // a packaged SDK lies in its game
        Replace(valid, "{", "{" + Bytes(65537 - valid.size(), ' ')),
        valid.substr(0, valid.size() - 1),
    };
    FolderLink link(game + L"\\Linked", install / L"Elsewhere");
    if (link.IsMade()) {
        refusals.push_back(install.Stored(L"packaged", game, game + L"\\Linked\\Linked.kvsdk"));
    }
    const Text storeFolder = ParentPath(install.Selection().Path());
    for (const Bytes& selection : refusals) {
        SCOPED_TRACE(selection.substr(0, 200));
        install.Selection().Write(selection);
        const auto before = SnapshotTree(storeFolder);
        install.ExpectReport({}, game, install.gameSdk, L"packaged");
        EXPECT_EQ(SnapshotTree(storeFolder), before) << "never deleted or repaired";
    }
    // The launcher check goes as far as the SDK selection; no tool is installed, so a settled
    // SDK fails the check itself (4), and a bad configuration stops before it (3).
    EXPECT_EQ(install.Run({L"-KorvaneLauncherCheck"}), 4u);
    testing::WriteFileBytes(install.ConfigFile(), "{}");
    EXPECT_EQ(install.Run({L"-KorvaneLauncherCheck"}), 3u);
}

// Outside a game there is no fall-back: a refused selection leaves nothing set.
TEST(HostContext, AStoredSelectionOutsideAGame)
{
    ScratchInstall free(L"context-stored-free");
    const Text project = free / L"Project";
    const Text projectSdk = project + L"\\Project.kvsdk";
    const Text loose = free / L"Loose\\Loose.kvsdk";
    MakeGameProject(project);
    MakeGameInstall(free / L"Games\\Far", L"Far.exe");
    MakeTree(free.ScratchPath(), {L"Project\\Project.kvsdk", L"Games\\Far\\Far.kvsdk", L"Plain\\Plain.kvsdk",
        L"Loose\\Loose.kvsdk"});
    const auto selection = [&](TextView environment, TextView game, TextView sdk) {
        return SelectionBytes(free.Root(), environment, game, sdk);
    };
    // Values are taken as they stand in the file, not normalised.
    const Text farGame = free.ScratchPath() + L"/Games/Far";
    const Text farSdk = free.ScratchPath() + L"/Games/Far/./Far.kvsdk";
    Bytes atLimit = "\xEF\xBB\xBF" + Replace(selection(L"standalone", L"", loose), "{", "{\"unknown\":[1,2],");
    atLimit.insert(4, 65536 - atLimit.size(), ' ');
    const struct {
        Bytes selection;
        Text game, sdk, environment;
    } rows[] = {
        {SelectionBytes(free.Root() + L"\\", L"packaged", farGame, farSdk), farGame, farSdk, L"packaged"},
        {selection(L"standalone", L"", loose), L"", loose, L""},  // no game and no word
        {atLimit, L"", loose, L""},
        {selection(L"developer", project, loose), project, loose, L"developer"},  // its SDK may lie anywhere
        {selection(L"packaged", project, projectSdk), L"", L"", L""},
        {selection(L"", L"", loose), L"", L"", L""},
        {selection(L"standalone", project, projectSdk), L"", L"", L""},
        {selection(L"packaged", free / L"Plain", free / L"Plain\\Plain.kvsdk"), L"", L"", L""},  // 5: no game
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.selection.substr(0, 200));
        free.Selection().Write(row.selection);
        free.ExpectReport({}, row.game, row.sdk, row.environment);
        EXPECT_EQ(free.Selection().Read(), row.selection) << "reading never rewrites the file";
    }
    // Once the project gains the bundle marker, the stored word no longer holds.
    free.Selection().Write(selection(L"developer", project, projectSdk));
    free.ExpectReport({}, project, projectSdk, L"developer");
    EXPECT_EQ(free.Run({L"-KorvaneLauncherCheck"}), 4u) << "the stored selection is settled";
    Touch(project + L"\\.korvane-host-bundle.json");
    free.ExpectReport({}, L"", L"", L"");
}

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
