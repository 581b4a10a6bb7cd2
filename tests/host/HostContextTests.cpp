// The real launcher working out its game and SDK: from the command line, the configuration,
// the stored selection and the folder it lies in, in that order.
#include "HostFixtures.h"
#include "TestSupport.h"

#include "foundation/Paths.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using hosttest::ExpectedReport;
using hosttest::ScratchInstall;
using hosttest::SelectionBytes;
using hosttest::Touch;

void ExpectReport(const ScratchInstall& install, const std::vector<Text>& arguments, TextView game, TextView sdk,
    TextView environment)
{
    const ScratchInstall::Report report = install.ResolveHostContext(arguments);
    EXPECT_EQ(report.exitCode, 0u);
    EXPECT_EQ(report.content, ExpectedReport(game, sdk, environment));
}

// An install at S\Title\Install inside the shipped game S\Title, which holds Title.kvsdk, and
// a second SDK inside the game that only a stored selection names.
struct InGame {
    explicit InGame(TextView label) : install(label, L"Title\\Install")
    {
        hosttest::MakeGameInstall(game, L"Title.exe");
        Touch(gameSdk);
        Touch(storedSdk);
    }

    ScratchInstall install;
    Text game = install / L"Title";
    Text gameSdk = install / L"Title\\Title.kvsdk";
    Text storedSdk = install / L"Title\\Mods\\Deep\\Stored.kvsdk";
};

TEST(HostContext, TheCommandLineAndTheConfigurationComeFirst)
{
    const InGame setup(L"context-first");
    setup.install.Selection().Write(SelectionBytes(setup.install.Root(), L"packaged", setup.game, setup.storedSdk));
    const Text otherSdk = setup.install / L"Other\\Other.kvsdk";
    Touch(otherSdk);

    // A game directory or an SDK on the command line: nothing is looked for.
    ExpectReport(setup.install, {L"-KorvaneGameDir=C:\\Given"}, L"C:\\Given", L"", L"");
    ExpectReport(setup.install, {L"-sdk=" + otherSdk}, L"", otherSdk, L"");
    ExpectReport(setup.install, {otherSdk}, L"", otherSdk, L"");
    // A word alone stops the search too.
    ExpectReport(setup.install, {L"-KorvaneHostEnvironment=developer"}, L"", L"", L"developer");
    // Only an element that begins with the option, in its case, counts.
    ExpectReport(setup.install, {L"x-KorvaneHostEnvironment=developer", L"-korvanehostenvironment=developer"},
        setup.game, setup.storedSdk, L"packaged");
    // The configuration names a game: the selection and the parent are not consulted.
    testing::WriteFileBytes(JoinPath(setup.install.Root(), L"KorvaneUpdate.config.json"),
        "{\"schemaVersion\":1,\"gameDirectory\":\"../../Other\"}");
    ExpectReport(setup.install, {}, setup.install / L"Other", otherSdk, L"packaged");
}

TEST(HostContext, AGameAroundTheInstallGivesItsOwnSdk)
{
    {
        SCOPED_TRACE("shipped game");
        const InGame setup(L"context-parent");
        ExpectReport(setup.install, {}, setup.game, setup.gameSdk, L"packaged");
    }
    {
        SCOPED_TRACE("game known by its shipping binary, SDK under the fixed name");
        ScratchInstall install(L"context-shipping", L"Title\\Install");
        Touch(install / L"Title\\Binaries\\Win64\\Title-Win64-Shipping.exe");
        Touch(install / L"Title\\KorvaneSDK.kvsdk");
        ExpectReport(install, {}, install / L"Title", install / L"Title\\KorvaneSDK.kvsdk", L"packaged");
    }
    {
        SCOPED_TRACE("developer's project, and the same project with the bundle marker");
        ScratchInstall install(L"context-project", L"Game\\Install");
        hosttest::MakeGameProject(install / L"Game");
        Touch(install / L"Game\\Sdk\\Game.kvsdk");
        ExpectReport(install, {}, install / L"Game", install / L"Game\\Sdk\\Game.kvsdk", L"developer");
        Touch(install / L"Game\\.korvane-host-bundle.json");
        ExpectReport(install, {}, install / L"Game", install / L"Game\\Sdk\\Game.kvsdk", L"packaged");
    }
    {
        SCOPED_TRACE("two SDKs in the game: its subfolders decide, and when they do not, nothing is set");
        ScratchInstall install(L"context-ambiguous", L"Title\\Install");
        hosttest::MakeGameInstall(install / L"Title");
        Touch(install / L"Title\\A.kvsdk");
        Touch(install / L"Title\\B.kvsdk");
        ExpectReport(install, {}, L"", L"", L"");
        Touch(install / L"Title\\One\\One.kvsdk");
        ExpectReport(install, {}, install / L"Title", install / L"Title\\One\\One.kvsdk", L"packaged");
        Touch(install / L"Title\\Two\\Two.kvsdk");
        ExpectReport(install, {}, L"", L"", L"");
    }
    {
        SCOPED_TRACE("a parent that is no game is not searched");
        ScratchInstall install(L"context-nogame", L"Folder\\Install");
        Touch(install / L"Folder\\Folder.kvsdk");
        ExpectReport(install, {}, L"", L"", L"");
    }
}

TEST(HostContext, AValidStoredSelectionIsAdoptedAsItStands)
{
    {
        SCOPED_TRACE("inside a game the stored SDK of that same game wins over the game's own");
        const InGame setup(L"context-stored-ingame");
        setup.install.Selection().Write(SelectionBytes(setup.install.Root(), L"packaged", setup.game, setup.storedSdk));
        ExpectReport(setup.install, {}, setup.game, setup.storedSdk, L"packaged");
    }
    {
        SCOPED_TRACE("a packaged game elsewhere, the values taken as written, not normalised");
        ScratchInstall install(L"context-stored-elsewhere");
        hosttest::MakeGameInstall(install / L"Games\\Far", L"Far.exe");
        Touch(install / L"Games\\Far\\Far.kvsdk");
        const Text game = install.ScratchPath() + L"/Games/Far";
        const Text sdk = install.ScratchPath() + L"/Games/Far/./Far.kvsdk";
        install.Selection().Write(SelectionBytes(install.Root() + L"\\", L"packaged", game, sdk));
        ExpectReport(install, {}, game, sdk, L"packaged");
    }
    {
        SCOPED_TRACE("a stand-alone SDK: no game and no word");
        ScratchInstall install(L"context-stored-standalone");
        const Text sdk = install / L"Loose\\Loose.kvsdk";
        Touch(sdk);
        install.Selection().Write(SelectionBytes(install.Root(), L"standalone", L"", sdk));
        ExpectReport(install, {}, L"", sdk, L"");
        // With a byte-order mark, unknown keys and the file exactly at its limit.
        Bytes padded = "\xEF\xBB\xBF{\"unknown\":[1,2],\"schemaVersion\":1,\"editorRoot\":" +
            TextToUtf8(QuoteJsonText(install.Root())) + ",\"environment\":\"standalone\",\"gameDirectory\":\"\",\"sdkFile\":" +
            TextToUtf8(QuoteJsonText(sdk)) + "}";
        padded.insert(4, 65536 - padded.size(), ' ');
        install.Selection().Write(padded);
        ExpectReport(install, {}, L"", sdk, L"");
        EXPECT_EQ(install.Selection().Read(), padded) << "reading never rewrites the file";
    }
    {
        SCOPED_TRACE("a developer's project may take an SDK from anywhere");
        ScratchInstall install(L"context-stored-developer");
        hosttest::MakeGameProject(install / L"Project");
        const Text sdk = install / L"Loose\\Loose.kvsdk";
        Touch(sdk);
        install.Selection().Write(SelectionBytes(install.Root(), L"developer", install / L"Project", sdk));
        ExpectReport(install, {}, install / L"Project", sdk, L"developer");
    }
}

TEST(HostContext, EachOfTheSevenTestsRefusesAStoredSelectionAndLeavesIt)
{
    const InGame setup(L"context-refused");
    const Text root = setup.install.Root();
    hosttest::MakeGameProject(setup.install / L"Project");
    Touch(setup.install / L"Project\\Project.kvsdk");
    hosttest::MakeGameInstall(setup.install / L"Other", L"Other.exe");
    Touch(setup.install / L"Other\\Other.kvsdk");
    testing::MakeDirectories(setup.install / L"Plain");
    Touch(setup.install / L"Plain\\Plain.kvsdk");
    Touch(setup.install / L"Outside.kvsdk");
    testing::MakeDirectories(setup.install / L"Title\\Folder.kvsdk");

    auto upper = [](Text text) {
        for (wchar_t& unit : text) {
            unit = unit >= L'a' && unit <= L'z' ? static_cast<wchar_t>(unit - 32) : unit;
        }
        return text;
    };
    struct Refused {
        const char* why;
        Bytes selection;
    };
    const Refused refusals[] = {
        {"1: version 2",
            "{\"schemaVersion\":2,\"editorRoot\":" + TextToUtf8(QuoteJsonText(root)) +
                ",\"environment\":\"packaged\",\"gameDirectory\":" + TextToUtf8(QuoteJsonText(setup.game)) +
                ",\"sdkFile\":" + TextToUtf8(QuoteJsonText(setup.storedSdk)) + "}"},
        {"1: no version",
            "{\"editorRoot\":" + TextToUtf8(QuoteJsonText(root)) + ",\"environment\":\"packaged\",\"gameDirectory\":" +
                TextToUtf8(QuoteJsonText(setup.game)) + ",\"sdkFile\":" + TextToUtf8(QuoteJsonText(setup.storedSdk)) +
                "}"},
        {"2: the root in another case", SelectionBytes(upper(root), L"packaged", setup.game, setup.storedSdk)},
        {"2: another root", SelectionBytes(root + L"2", L"packaged", setup.game, setup.storedSdk)},
        {"3: developer for a shipped game", SelectionBytes(root, L"developer", setup.game, setup.storedSdk)},
        {"3: Packaged in another case", SelectionBytes(root, L"Packaged", setup.game, setup.storedSdk)},
        {"3: standalone with a game", SelectionBytes(root, L"standalone", setup.game, setup.storedSdk)},
        {"4: the SDK is gone", SelectionBytes(root, L"packaged", setup.game, setup.game + L"\\Gone.kvsdk")},
        {"4: the SDK is a folder", SelectionBytes(root, L"packaged", setup.game, setup.game + L"\\Folder.kvsdk")},
        {"6: a stand-alone SDK inside a game", SelectionBytes(root, L"standalone", L"", setup.storedSdk)},
        {"6: another game", SelectionBytes(root, L"packaged", setup.install / L"Other", setup.install / L"Other\\Other.kvsdk")},
        {"6: this game in another case", SelectionBytes(root, L"packaged", upper(setup.game), setup.storedSdk)},
        {"7: packaged SDK outside its game", SelectionBytes(root, L"packaged", setup.game, setup.install / L"Outside.kvsdk")},
    };
    for (const Refused& refused : refusals) {
        SCOPED_TRACE(refused.why);
        setup.install.Selection().Write(refused.selection);
        ExpectReport(setup.install, {}, setup.game, setup.gameSdk, L"packaged");
        EXPECT_EQ(setup.install.Selection().Read(), refused.selection) << "never deleted or repaired";
    }

    // Outside a game there is no fall-back: a refused selection leaves nothing set.
    ScratchInstall free(L"context-refused-free");
    const Text project = setup.install / L"Project";
    const Text projectSdk = setup.install / L"Project\\Project.kvsdk";
    const Text plain = setup.install / L"Plain";
    const Refused freeRefusals[] = {
        {"3: packaged for a developer's project", SelectionBytes(free.Root(), L"packaged", project, projectSdk)},
        {"3: standalone word missing", SelectionBytes(free.Root(), L"", L"", projectSdk)},
        {"5: a plain folder is no game", SelectionBytes(free.Root(), L"packaged", plain, plain + L"\\Plain.kvsdk")},
    };
    for (const Refused& refused : freeRefusals) {
        SCOPED_TRACE(refused.why);
        free.Selection().Write(refused.selection);
        ExpectReport(free, {}, L"", L"", L"");
        EXPECT_EQ(free.Selection().Read(), refused.selection);
    }
    // Positive control for the same install: the developer's project as stored is taken.
    free.Selection().Write(SelectionBytes(free.Root(), L"developer", project, projectSdk));
    ExpectReport(free, {}, project, projectSdk, L"developer");
    // Once the project gains the bundle marker, the stored word no longer holds.
    Touch(JoinPath(project, L".korvane-host-bundle.json"));
    ExpectReport(free, {}, L"", L"", L"");
}

TEST(HostContext, AStoredPackagedSdkBehindAFolderLinkIsRefused)
{
    const InGame setup(L"context-link");
    Touch(setup.install / L"Elsewhere\\Linked.kvsdk");
    hosttest::FolderLink link(setup.game + L"\\Linked", setup.install / L"Elsewhere");
    if (!link.IsMade()) {
        GTEST_SKIP() << "this system cannot make folder links";
    }
    const Bytes selection =
        SelectionBytes(setup.install.Root(), L"packaged", setup.game, setup.game + L"\\Linked\\Linked.kvsdk");
    setup.install.Selection().Write(selection);
    ExpectReport(setup.install, {}, setup.game, setup.gameSdk, L"packaged");
    EXPECT_EQ(setup.install.Selection().Read(), selection);
}

TEST(HostContext, BadSelectionFilesAreIgnoredAndKeptAsTheyAre)
{
    const InGame setup(L"context-bad-file");
    const Bytes valid = SelectionBytes(setup.install.Root(), L"packaged", setup.game, setup.storedSdk);
    Bytes oversized = valid;
    oversized.insert(1, 65537 - valid.size(), ' ');
    Bytes duplicated = valid;
    duplicated.insert(1, "\"sdkFile\":\"x\",");
    const Bytes bad[] = {
        "",
        oversized,
        valid.substr(0, valid.size() - 1),
        duplicated,
        "[" + valid + "]",
        "\"1\"",
        "1",
        "{\"schemaVersion\":1,\"editorRoot\":\"\xFF\"}",
    };
    for (const Bytes& selection : bad) {
        SCOPED_TRACE(selection.substr(0, 80));
        setup.install.Selection().Write(selection);
        const auto before = hosttest::SnapshotTree(ParentPath(setup.install.Selection().Path()));
        ExpectReport(setup.install, {}, setup.game, setup.gameSdk, L"packaged");
        EXPECT_EQ(hosttest::SnapshotTree(ParentPath(setup.install.Selection().Path())), before);
    }
    DeleteFileW(setup.install.Selection().Path().c_str());
    testing::MakeDirectories(setup.install.Selection().Path());
    ExpectReport(setup.install, {}, setup.game, setup.gameSdk, L"packaged");
    EXPECT_TRUE(IsDirectory(setup.install.Selection().Path())) << "a folder in the file's place stays";
}

TEST(HostContext, LauncherCheckGoesAsFarAsTheSdkSelection)
{
    // No tool is installed, so a settled SDK ends in a failed check (4), and an unsettled one
    // stops before it (3).
    ScratchInstall free(L"check-free");
    EXPECT_EQ(free.Run({L"-KorvaneLauncherCheck"}), 3u) << "nothing to check";
    const Text sdk = free / L"Loose\\Loose.kvsdk";
    Touch(sdk);
    EXPECT_EQ(free.Run({L"-KorvaneLauncherCheck", L"-sdk=" + sdk}), 4u);
    EXPECT_EQ(free.Run({L"-KorvaneLauncherCheck", L"-sdk=" + free / L"Loose\\Missing.kvsdk"}), 3u);
    EXPECT_EQ(free.Run({L"-KorvaneLauncherCheck", L"-KorvaneGameDir=" + free / L"Loose"}), 4u);
    EXPECT_EQ(free.Run({L"-KorvaneLauncherCheck", L"-KorvaneGameDir=" + free / L"Empty"}), 3u);
    free.Selection().Write(SelectionBytes(free.Root(), L"standalone", L"", sdk));
    EXPECT_EQ(free.Run({L"-KorvaneLauncherCheck"}), 4u) << "the stored selection is settled";

    const InGame setup(L"check-ingame");
    EXPECT_EQ(setup.install.Run({L"-KorvaneLauncherCheck"}), 4u) << "the game's own SDK is settled";
    testing::WriteFileBytes(JoinPath(setup.install.Root(), L"KorvaneUpdate.config.json"), "{}");
    EXPECT_EQ(setup.install.Run({L"-KorvaneLauncherCheck"}), 3u) << "a bad configuration";
}

}  // namespace
}  // namespace korvane
