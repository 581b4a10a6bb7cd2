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

// An install at S\Title\Install inside the shipped game S\Title, which holds Title.kvsdk and a
// second SDK that only a stored selection names. The command line and the configuration come
// before the selection; each refused selection falls back on the game's own SDK, and the file stays.
TEST(HostContext, InsideAGameTheCommandLineAndConfigurationComeFirstAndASelectionMustHoldWhole)
{
    const ScratchInstall install(L"context-in-game", L"Title\\Install");
    const Text game = install / L"Title", storedSdk = install / L"Title\\Mods\\Deep\\Stored.kvsdk";
    const Text otherSdk = install / L"Other\\Other.kvsdk";
    MakeTree(install.ScratchPath(), {L"Title\\Title.exe", L"Title\\Title.kvsdk", L"Title\\Mods\\Deep\\Stored.kvsdk",
        L"Title\\Folder.kvsdk\\", L"Other\\Other.kvsdk", L"Outside.kvsdk", L"Elsewhere\\Linked.kvsdk"});
    const auto stored = [&](TextView environment, TextView gameDirectory, TextView sdk) {
        return SelectionBytes(install.Root(), environment, gameDirectory, sdk);
    };
    const Bytes valid = stored(L"packaged", game, storedSdk);
    install.WriteSelection(valid);
    install.ExpectReport({L"-KorvaneGameDir=C:\\Given"}, L"C:\\Given", L"", L"");
    install.ExpectReport({L"-sdk=" + otherSdk}, L"", otherSdk, L"");
    install.ExpectReport({L"-KorvaneHostEnvironment=developer"}, L"", L"", L"developer");
    // Only an element that begins with the option, in its case, counts.
    install.ExpectReport({L"x-KorvaneHostEnvironment=developer", L"-korvanehostenvironment=developer"}, game,
        storedSdk, L"packaged");
    // The launcher check goes as far as the stored SDK; no tool is installed, so the check itself fails.
    EXPECT_EQ(install.Run({L"-KorvaneLauncherCheck"}), 4u);

    const auto upper = [](Text text) { return CharUpperBuffW(text.data(), static_cast<DWORD>(text.size())), text; };
    std::vector<Bytes> refusals = {
        Replace(valid, "\"schemaVersion\":1", "\"schemaVersion\":2"),  // another schema
        SelectionBytes(upper(install.Root()), L"packaged", game, storedSdk),  // the root, exactly
        stored(L"Packaged", game, storedSdk),  // exactly the environment the game has now
        stored(L"packaged", game, game + L"\\Folder.kvsdk"),  // the SDK must be a file
        stored(L"standalone", L"", storedSdk),  // an install in a game adopts only that game
        stored(L"packaged", upper(game), storedSdk),
        stored(L"packaged", game, install / L"Outside.kvsdk"),  // a packaged SDK lies in its game
        PaddedTo(valid, 65537),
    };
    FolderLink link(game + L"\\Linked", install / L"Elsewhere");
    if (link.IsMade()) {
        refusals.push_back(stored(L"packaged", game, game + L"\\Linked\\Linked.kvsdk"));
    }
    for (const Bytes& selection : refusals) {
        SCOPED_TRACE(selection.substr(0, 200));
        install.WriteSelection(selection);
        install.ExpectReport({}, game, game + L"\\Title.kvsdk", L"packaged");
        EXPECT_EQ(install.ReadSelection(), selection) << "never deleted or repaired";
    }
    // The configuration names a game: the selection and the parent are not consulted.
    testing::WriteFileBytes(install.ConfigFile(), R"({"schemaVersion":1,"gameDirectory":"../../Other"})");
    install.ExpectReport({}, install / L"Other", otherSdk, L"packaged");
}

// Outside a game only a stored selection sets anything: as it stands in the file, or nothing when
// refused. A game around the install gives its own SDK only when it has exactly one (as the
// fall-back of each refused selection above shows).
TEST(HostContext, OutsideAGameOnlyAStoredSelectionSetsAnything)
{
    ScratchInstall install(L"context-outside", L"Title\\Install");
    const Text game = install / L"Title", project = install / L"Project", loose = install / L"Loose\\Loose.kvsdk";
    MakeGameProject(project);
    MakeTree(install.ScratchPath(), {L"Title\\A.kvsdk", L"Games\\Far\\Far.exe", L"Games\\Far\\Far.kvsdk",
        L"Plain\\Plain.kvsdk", L"Loose\\Loose.kvsdk"});
    const auto selection = [&](TextView environment, TextView gameDirectory, TextView sdk) {
        return SelectionBytes(install.Root(), environment, gameDirectory, sdk);
    };
    // Values are taken as they stand in the file, not normalised.
    const Text farGame = install.ScratchPath() + L"/Games/Far", farSdk = farGame + L"/./Far.kvsdk";
    const struct {
        Bytes selection;
        Text game, sdk, environment;
    } rows[] = {
        {SelectionBytes(install.Root() + L"\\", L"packaged", farGame, farSdk), farGame, farSdk, L"packaged"},
        {PaddedTo(selection(L"standalone", L"", loose), 65536), L"", loose, L""},  // no game and no word
        {selection(L"developer", project, loose), project, loose, L"developer"},  // its SDK may lie anywhere
        // No game; nor is the parent, which is no game either, searched.
        {selection(L"packaged", install / L"Plain", install / L"Plain\\Plain.kvsdk"), L"", L"", L""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.selection.substr(0, 200));
        install.WriteSelection(row.selection);
        install.ExpectReport({}, row.game, row.sdk, row.environment);
    }
    MakeTree(game, {L"Title.exe", L"B.kvsdk"});
    install.ExpectReport({}, L"", L"", L"");  // a game whose SDK is ambiguous

    ScratchInstall inProject(L"context-project", L"Game\\Install");
    const Text gameProject = inProject / L"Game";
    MakeGameProject(gameProject);
    Touch(gameProject + L"\\Sdk\\Game.kvsdk");
    inProject.ExpectReport({}, gameProject, gameProject + L"\\Sdk\\Game.kvsdk", L"developer");
}

// Where the selection of an install lives, what a save refuses without writing, and the record it writes.
TEST(LaunchSelection, IsKeyedByTheFoldedNormalisedRootAndSavedWholeOrNotAtAll)
{
    for (const wchar_t* root : {L"c:\\editor", L"C:\\EDITOR", L"c:/editor/"}) {
        EXPECT_EQ(InstallKey(root), 8760405274452771557ull) << TextToUtf8(root);
    }
    // Only A to Z fold; the whole UTF-16 unit is one step of the hash, not its low byte.
    EXPECT_NE(InstallKey(L"c:\\\x00C9"), InstallKey(L"c:\\\x00E9"));
    EXPECT_NE(InstallKey(L"c:\\\x0100"), InstallKey(L"c:\\\x0001"));
    EXPECT_EQ(LaunchSelectionPath(L"C:\\Editor\\"),
        LocalAppDataFolder() + L"\\Korvane\\Launchers\\8760405274452771557\\selection.json");

    const ScratchInstall install(L"save");
    const Text root = install.Root(), game = install / L"\x6E38\x620F Q", any = install / L"Elsewhere\\Any.kvsdk";
    MakeGameProject(install / L"Project");
    MakeTree(install.ScratchPath(), {L"\x6E38\x620F Q\\Game.exe", L"\x6E38\x620F Q\\\x00C9.kvsdk",
        L"Elsewhere\\Any.kvsdk", L"Folder.kvsdk\\", L"\x6E38\x620F QX\\x.kvsdk"});
    const std::pair<Text, Text> refusals[] = {
        {install / L"Folder.kvsdk", L""},
        {JoinPath(game, L"..\\Elsewhere\\Any.kvsdk"), game},  // a packaged SDK outside its game
        {install / L"\x6E38\x620F QX\\x.kvsdk", game},        // in a sibling sharing the game's name
    };
    for (const auto& [sdk, host] : refusals) {
        EXPECT_FALSE(SaveLaunchSelection(root, sdk, host)) << TextToUtf8(sdk);
    }
    EXPECT_FALSE(testing::FileExists(ParentPath(install.SelectionFile()))) << "a refused save makes no folder";

    // The first save makes the folders; paths are stored normalised, non-ASCII text as UTF-8.
    EXPECT_TRUE(SaveLaunchSelection(root, game + L"\\sub\\..\\\x00C9.kvsdk", game + L"/"));
    EXPECT_EQ(install.ReadSelection(), SelectionBytes(root, L"packaged", game, game + L"\\\x00C9.kvsdk"));
    // A developer's SDK may lie anywhere; one without a game is stand-alone.
    EXPECT_TRUE(SaveLaunchSelection(root, any, install / L"Project"));
    EXPECT_EQ(install.ReadSelection(), SelectionBytes(root, L"developer", install / L"Project", any));
    EXPECT_TRUE(SaveLaunchSelection(root, any, L""));
    EXPECT_EQ(install.ReadSelection(), SelectionBytes(root, L"standalone", L"", any));
}

}  // namespace
}  // namespace korvane::hosttest
