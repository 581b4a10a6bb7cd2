// KorvaneUpdate.config.json as the real launcher reads it: what each file decides, and every
// refusal ending the run with exit code 3 while leaving the disk as it was; and the host
// environment of a folder.
#include "HostFixtures.h"
#include "MessageBoxes.h"

#include "foundation/Paths.h"
#include "host/HostConfiguration.h"
#include "host/HostEnvironment.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace korvane::hosttest {
namespace {

// The install at S\Install, in no game, beside: Title (a shipped game with Title.kvsdk),
// Project (a developer's project with Project.kvsdk), Bundle (a project with the marker and
// Bundle.kvsdk), Out (a plain folder with Out.kvsdk), Multi (an SDK in each of two subfolders).
struct ConfiguredInstall : ScratchInstall {
    explicit ConfiguredInstall(TextView label) : ScratchInstall(label)
    {
        MakeGameInstall(*this / L"Title", L"Title.exe");
        MakeGameProject(*this / L"Project");
        MakeGameProject(*this / L"Bundle", true);
        MakeTree(ScratchPath(), {L"Title\\Title.kvsdk", L"Project\\Project.kvsdk", L"Bundle\\Bundle.kvsdk",
            L"Out\\Out.kvsdk", L"Multi\\A\\A.kvsdk", L"Multi\\B\\B.kvsdk"});
    }

    // The report mode with this configuration gives exit code 0 and the report of the three
    // values, or exit code 3 and no report; nothing on disk changes either way.
    void Expect(BytesView configuration, const std::vector<Text>& arguments, DWORD exitCode, TextView game = L"",
        TextView sdk = L"", TextView environment = L"") const
    {
        testing::WriteFileBytes(ConfigFile(), configuration);
        const auto before = SnapshotTree(ScratchPath());
        if (exitCode == 0) {
            ExpectReport(arguments, game, sdk, environment);
        } else {
            EXPECT_EQ(ResolveHostContext(arguments), std::make_pair(exitCode, Bytes()));
        }
        EXPECT_EQ(SnapshotTree(ScratchPath()), before) << "the run changed something on disk";
    }
};

TEST(HostConfiguration, WhatAFileDecides)
{
    const ConfiguredInstall setup(L"config-decides");
    const Text title = setup / L"Title", titleSdk = setup / L"Title\\Title.kvsdk";
    const Text project = setup / L"Project", projectSdk = setup / L"Project\\Project.kvsdk";
    const Text outsideSdk = setup / L"Out\\Out.kvsdk";
    const struct {
        Bytes configuration;
        std::vector<Text> arguments;
        Text game, sdk, environment;
    } rows[] = {
        // The version alone changes nothing and adds no word, nor does an SDK without a game.
        {"\xEF\xBB\xBF" R"({"schemaVersion":1,"unknown":{"gameDirectory":"../Title"}})", {}, L"", L"", L""},
        {R"({"schemaVersion":1,"environment":"developer","sdk":"../Out/Out.kvsdk"})", {}, L"", L"", L""},
        // A relative game directory, packaged by default, finds the game's SDK.
        {R"({"schemaVersion":"1","gameDirectory":"../Title"})", {}, title, titleSdk, L"packaged"},
        {R"({"schemaVersion":1,"environment":"","gameDirectory":"..\\Title\\"})", {}, title, titleSdk, L"packaged"},
        {R"({"schemaVersion":1,"gameDirectory":"../Multi"})", {}, setup / L"Multi", L"", L"packaged"},
        // Developer: absolute paths are taken; the packaged directory is ignored.
        {R"({"schemaVersion":1,"environment":"developer","packagedGameDirectory":"C:\\Elsewhere","gameDirectory":)" +
                TextToUtf8(QuoteJsonText(project + L"/")) + "}", {}, project, projectSdk, L"developer"},
        {R"({"schemaVersion":1,"environment":"developer","gameDirectory":"../Project","sdk":"../Out/Out.kvsdk"})", {},
            project, outsideSdk, L"developer"},
        // Auto is decided by the folder and its marker; existence is no condition.
        {R"({"schemaVersion":1,"environment":"auto","gameDirectory":"../Project","packagedGameDirectory":"../Title"})",
            {}, project, projectSdk, L"developer"},
        {R"({"schemaVersion":1,"environment":"auto","gameDirectory":"../Bundle","packagedGameDirectory":"../Title"})",
            {}, title, titleSdk, L"packaged"},
        {R"({"schemaVersion":1,"environment":"auto","gameDirectory":"../Nowhere"})", {}, setup / L"Nowhere", L"",
            L"packaged"},
        // Packaged: the packaged directory replaces the game directory, which need not exist.
        {R"({"schemaVersion":1,"gameDirectory":"../Missing","packagedGameDirectory":"../Title"})",
            {}, title, titleSdk, L"packaged"},
        // An SDK inside the packaged game in another letter case belongs to it.
        {R"({"schemaVersion":1,"gameDirectory":"../Title","sdk":"../TITLE/Other.kvsdk"})", {}, title,
            setup / L"TITLE\\Other.kvsdk", L"packaged"},
        // The command line's SDK stays and is not searched for; a word there stays and wins.
        {R"({"schemaVersion":1,"environment":"developer","gameDirectory":"../Project","sdk":"../Title/Title.kvsdk"})",
            {L"-sdk=" + outsideSdk}, project, outsideSdk, L"developer"},
        {R"({"schemaVersion":1,"gameDirectory":"../Title"})", {L"-KorvaneHostEnvironment=custom"}, title, titleSdk,
            L"custom"},
        // A game directory on the command line wins; the file is not even read.
        {"{", {L"-KorvaneGameDir=C:\\Games\\X\\"}, L"C:\\Games\\X\\", L"", L""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.configuration);
        setup.Expect(row.configuration, row.arguments, 0, row.game, row.sdk, row.environment);
    }
    // No file, or a folder of its name, is no file.
    DeleteFileW(setup.ConfigFile().c_str());
    setup.ExpectReport({}, L"", L"", L"");
    testing::MakeDirectories(setup.ConfigFile());
    setup.ExpectReport({}, L"", L"", L"");
}

// Each refusal is seen twice: in-process with its own message, and through the launcher.
TEST(HostConfiguration, EveryRefusalHasItsMessageEndsWithExitThreeAndTouchesNothing)
{
    const ConfiguredInstall setup(L"config-refusals");
    const std::vector<Text> passThrough{L"-culture=de"};
    HostChoice choice;
    const auto failure = [&](BytesView configuration) -> std::string {
        testing::WriteFileBytes(setup.ConfigFile(), configuration);
        try {
            choice = ApplyHostConfiguration({setup.Root(), L"", L"", passThrough});
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return {};
    };
    const std::string version = "invalid host configuration version", environment = "invalid host environment";
    const std::string relative = "packaged host paths must be relative";
    const std::string belong = "SDK must belong to this game package";
    const Bytes absoluteTitle = TextToUtf8(QuoteJsonText(setup / L"Title"));
    const Bytes valid = R"({"schemaVersion":1,"gameDirectory":"../Title"})";
    std::vector<std::pair<Bytes, std::string>> refusals = {
        {"", "empty JSON"},
        {Replace(valid, "{", "{" + Bytes(65537 - valid.size(), ' ')), "empty JSON"},
        {R"({"schemaVersion":1,"gameDirectory":"../Title")", "truncated JSON"},
        {R"({"schemaVersion":1,"gameDirectory":"../Title","gameDirectory":"../Title"})", "duplicate JSON key"},
        {R"({"gameDirectory":"../Title"})", version},
        {R"({"schemaVersion":1.0})", version},
        {R"({"schemaVersion":"01"})", version},
        {R"({"schemaVersion":1,"environment":"Packaged"})", environment},
        {R"({"schemaVersion":1,"environment":"standalone"})", environment},
        {R"({"schemaVersion":1,"environment":null})", environment},
        {R"({"schemaVersion":1,"gameDirectory":)" + absoluteTitle + "}", relative},
        {R"({"schemaVersion":1,"environment":"auto","gameDirectory":"\\x"})", relative},
        {R"({"schemaVersion":1,"packagedGameDirectory":"../Title","gameDirectory":)" + absoluteTitle + "}", relative},
        {R"({"schemaVersion":1,"gameDirectory":"../Missing","packagedGameDirectory":"/Title"})", relative},
        {R"({"schemaVersion":1,"gameDirectory":"../Title","sdk":"C:Title.kvsdk"})", relative},
        // SDKs outside the packaged game: beside it, stepping out of it, in a sibling sharing its name.
        {R"({"schemaVersion":1,"gameDirectory":"../Title","sdk":"../Out/Out.kvsdk"})", belong},
        {R"({"schemaVersion":1,"gameDirectory":"../Title","sdk":"../Title/../Out/Out.kvsdk"})", belong},
        {R"({"schemaVersion":1,"gameDirectory":"../Title","sdk":"../TitleX/x.kvsdk"})", belong},
    };
    FolderLink link(setup / L"Title\\Linked", setup / L"Out");
    if (link.IsMade()) {
        refusals.emplace_back(R"({"schemaVersion":1,"gameDirectory":"../Title","sdk":"../Title/Linked/Out.kvsdk"})",
            "packaged SDK path must not redirect outside its host");
    }
    for (const auto& [configuration, message] : refusals) {
        SCOPED_TRACE(configuration.substr(0, 200));
        EXPECT_EQ(failure(configuration), message);
        setup.Expect(configuration, {}, 3);
    }
    // The command line's SDK is held to the package too.
    setup.Expect(valid, {L"-sdk=" + setup / L"Out\\Out.kvsdk"}, 3);

    // Exactly at the limit the file is read, and the step names game, SDK and environment.
    const Bytes atLimit = Replace(valid, "{", "{" + Bytes(65536 - valid.size(), ' '));
    EXPECT_EQ(failure(atLimit), "");
    EXPECT_EQ(std::tie(choice.gameDirectory, choice.sdk, choice.environmentArgument),
        std::make_tuple(setup / L"Title", setup / L"Title\\Title.kvsdk", Text(L"-KorvaneHostEnvironment=packaged")));
    setup.Expect(atLimit, {}, 0, setup / L"Title", setup / L"Title\\Title.kvsdk", L"packaged");
    if (link.IsMade()) {
        // The linked path is taken untested for a developer, and a link that is the game itself is not examined.
        setup.Expect(R"({"schemaVersion":1,"environment":"developer","gameDirectory":"../Title",)"
                     R"("sdk":"../Title/Linked/Out.kvsdk"})",
            {}, 0, setup / L"Title", setup / L"Title\\Linked\\Out.kvsdk", L"developer");
        FolderLink gameLink(setup / L"TitleLink", setup / L"Title");
        setup.Expect(R"({"schemaVersion":1,"gameDirectory":"../TitleLink","sdk":"../TitleLink/Title.kvsdk"})", {}, 0,
            setup / L"TitleLink", setup / L"TitleLink\\Title.kvsdk", L"packaged");
    }
}

TEST(HostConfiguration, ABadFileStopsOnlyTheModesThatReadItWithABoxOutsideHeadlessModes)
{
    const ConfiguredInstall setup(L"config-box");
    testing::WriteFileBytes(setup.ConfigFile(), R"({"schemaVersion":2})");
    const testing::RunEnd end = testing::WaitAnsweringBox(setup.Start({}));
    ASSERT_TRUE(end.box.has_value()) << "the launcher ended without a box";
    EXPECT_EQ(std::make_pair(end.box->title, end.box->text),
        std::make_pair(Text(L"Korvane launch error"), Text(L"Invalid local KorvaneUpdate.config.json")));
    EXPECT_EQ(end.exitCode, 3u);

    // Modes that never read the file give their usual codes beside it.
    const struct {
        std::vector<Text> arguments;
        DWORD exitCode;
    } untouched[] = {
        {{L"-KorvaneEmptyHost", L"-KorvaneLauncherCheck"}, 0},
        {{L"-KorvaneStartupPreview", L"-KorvaneStartupPreviewMs=250"}, 0},
        {{L"-KorvanePickerPreview", L"-KorvanePickerPreviewMs=250"}, 0},
    };
    for (const auto& row : untouched) {
        EXPECT_EQ(setup.Run(row.arguments), row.exitCode) << TextToUtf8(row.arguments.front());
    }
}

// Games, bundled projects, missing folders and no folder at all are checked through the
// launcher's runs above and in the host context tests.
TEST(HostEnvironmentOf, AFolderOfTheMarkersNameIsNoMarker)
{
    const testing::ScratchDirectory scratch(L"environment-of");
    MakeGameProject(scratch / L"Project");
    testing::MakeDirectories(scratch / L"Project\\.korvane-host-bundle.json");
    EXPECT_EQ(HostEnvironmentOf(scratch / L"Project"), L"developer");
}

}  // namespace
}  // namespace korvane::hosttest

