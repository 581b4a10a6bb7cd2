// KorvaneUpdate.config.json as the real launcher reads it: what each file decides, every
// refusal with its own message, and the modes a bad file stops.
#include "HostFixtures.h"
#include "MessageBoxes.h"

#include "foundation/Paths.h"
#include "host/HostConfiguration.h"
#include "launch/LaunchErrors.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace korvane::hosttest {
namespace {

// The install at S\Install, in no game, beside: Title (a shipped game with Title.kvsdk), Bundle (a
// developer's project with the marker), Marked (one with a folder of the marker's name) and Out
// (a plain folder with Out.kvsdk).
struct ConfiguredInstall : ScratchInstall {
    explicit ConfiguredInstall(TextView label) : ScratchInstall(label)
    {
        MakeGameProject(*this / L"Bundle");
        MakeGameProject(*this / L"Marked");
        MakeTree(ScratchPath(), {L"Title\\Title.exe", L"Title\\Title.kvsdk", L"Out\\Out.kvsdk",
            L"Bundle\\.korvane-host-bundle.json", L"Marked\\.korvane-host-bundle.json\\"});
    }
};

// A file of version 1 with these members after the version.
Bytes V1(BytesView members)
{
    return R"({"schemaVersion":1,)" + Bytes(members) + "}";
}

TEST(HostConfiguration, WhatAFileDecides)
{
    const ConfiguredInstall setup(L"config-decides");
    const Text title = setup / L"Title", titleSdk = setup / L"Title\\Title.kvsdk";
    const Text project = setup / L"Project", outsideSdk = setup / L"Out\\Out.kvsdk";
    const struct {
        Bytes configuration;
        std::vector<Text> arguments;
        Text game, sdk, environment;
    } rows[] = {
        // Without a game directory the file changes nothing and adds no word, whatever else it holds.
        {V1(R"("environment":"developer","sdk":"../Out/Out.kvsdk")"), {}, L"", L"", L""},
        // A relative game directory, packaged by default, finds the game's SDK.
        {R"({"schemaVersion":"1","environment":"","gameDirectory":"..\\Title\\"})", {}, title, titleSdk, L"packaged"},
        // Developer: absolute paths and SDKs outside the game are taken, the packaged directory ignored.
        {V1(R"("environment":"developer","packagedGameDirectory":"C:\\Elsewhere","sdk":"../Out/Out.kvsdk",)"
             R"("gameDirectory":)" + TextToUtf8(QuoteJsonText(project + L"/"))), {}, project, outsideSdk, L"developer"},
        // Auto is decided by the folder and its marker (a folder of its name is none); existence is
        // no condition; only for a packaged game does the packaged directory replace the game directory.
        {V1(R"("environment":"auto","gameDirectory":"../Marked","packagedGameDirectory":"../Title")"), {},
            setup / L"Marked", L"", L"developer"},
        {V1(R"("environment":"auto","gameDirectory":"../Bundle","packagedGameDirectory":"../Title")"),
            {}, title, titleSdk, L"packaged"},
        {V1(R"("environment":"auto","gameDirectory":"../Nowhere")"), {}, setup / L"Nowhere", L"", L"packaged"},
        // An SDK inside the packaged game in another letter case belongs to it.
        {V1(R"("gameDirectory":"../Title","sdk":"../TITLE/Other.kvsdk")"), {}, title, setup / L"TITLE\\Other.kvsdk",
            L"packaged"},
        // The command line's SDK stays and is not searched for; a word there stays and wins.
        {V1(R"("environment":"developer","gameDirectory":"../Project","sdk":"../Title/Title.kvsdk")"),
            {L"-sdk=" + outsideSdk}, project, outsideSdk, L"developer"},
        {V1(R"("gameDirectory":"../Title")"), {L"-KorvaneHostEnvironment=custom"}, title, titleSdk, L"custom"},
        // A game directory on the command line wins; the file is not even read.
        {"{", {L"-KorvaneGameDir=C:\\Games\\X\\"}, L"C:\\Games\\X\\", L"", L""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.configuration);
        testing::WriteFileBytes(setup.ConfigFile(), row.configuration);
        setup.ExpectReport(row.arguments, row.game, row.sdk, row.environment);
    }
    // A folder of the file's name is no file.
    DeleteFileW(setup.ConfigFile().c_str());
    testing::MakeDirectories(setup.ConfigFile());
    setup.ExpectReport({}, L"", L"", L"");
}

// Each refusal has its own message; the launcher turns any of them into a box and exit code 3,
// in the modes that read the file.
TEST(HostConfiguration, EveryRefusalHasItsMessageAndStopsOnlyTheModesThatReadTheFile)
{
    const ConfiguredInstall setup(L"config-refusals");
    const auto failure = [&](BytesView configuration, TextView sdk = L"") -> std::string {
        testing::WriteFileBytes(setup.ConfigFile(), configuration);
        try {
            ApplyHostConfiguration({setup.Root(), L"", sdk});
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return {};
    };
    const std::string relative = "packaged host paths must be relative";
    const std::string belong = "SDK must belong to this game package";
    const Bytes valid = V1(R"("gameDirectory":"../Title")");
    std::vector<std::pair<Bytes, std::string>> refusals = {
        {PaddedTo(valid, 65537), "empty JSON"},
        {R"({"schemaVersion":1.0})", "invalid host configuration version"},
        {V1(R"("environment":"standalone")"), "invalid host environment"},
        {V1(R"("environment":"auto","gameDirectory":"\\x")"), relative},
        {V1(R"("gameDirectory":"../Missing","packagedGameDirectory":"/Title")"), relative},
        {V1(R"("gameDirectory":"../Title","sdk":"C:Title.kvsdk")"), relative},
        // SDKs outside the packaged game: stepping out of it, in a sibling sharing its name.
        {V1(R"("gameDirectory":"../Title","sdk":"../Title/../Out/Out.kvsdk")"), belong},
        {V1(R"("gameDirectory":"../Title","sdk":"../TitleX/x.kvsdk")"), belong},
    };
    FolderLink link(setup / L"Title\\Linked", setup / L"Out");
    if (link.IsMade()) {
        refusals.emplace_back(V1(R"("gameDirectory":"../Title","sdk":"../Title/Linked/Out.kvsdk")"),
            "packaged SDK path must not redirect outside its host");
    }
    for (const auto& [configuration, message] : refusals) {
        SCOPED_TRACE(configuration.substr(0, 200));
        EXPECT_EQ(failure(configuration), message);
    }
    // The command line's SDK is held to the package too; exactly at the limit the file is read.
    EXPECT_EQ(failure(valid, setup / L"Out\\Out.kvsdk"), belong);
    EXPECT_EQ(failure(PaddedTo(valid, 65536)), "");
    if (link.IsMade()) {
        // The linked path is taken untested for a developer, and a link that is the game itself is not examined.
        EXPECT_EQ(failure(V1(R"("environment":"developer","gameDirectory":"../Title",)"
                             R"("sdk":"../Title/Linked/Out.kvsdk")")), "");
        FolderLink gameLink(setup / L"TitleLink", setup / L"Title");
        EXPECT_EQ(failure(V1(R"("gameDirectory":"../TitleLink","sdk":"../TitleLink/Title.kvsdk")")), "");
    }

    testing::WriteFileBytes(setup.ConfigFile(), R"({"schemaVersion":2})");
    const testing::RunEnd end = testing::WaitAnsweringBox(setup.Start({}));
    ASSERT_TRUE(end.box.has_value()) << "the launcher ended without a box";
    EXPECT_EQ(end.box->text, kInvalidHostConfigurationMessage.In(false));
    EXPECT_EQ(end.exitCode, 3u);
    for (const std::vector<Text>& arguments : {std::vector<Text>{L"-KorvaneEmptyHost", L"-KorvaneLauncherCheck"},
             {L"-KorvaneStartupPreview", L"-KorvaneStartupPreviewMs=250"},
             {L"-KorvanePickerPreview", L"-KorvanePickerPreviewMs=250"}}) {
        EXPECT_EQ(setup.Run(arguments), 0u) << TextToUtf8(arguments.front());
    }
}

}  // namespace
}  // namespace korvane::hosttest

