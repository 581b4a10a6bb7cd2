// The host environment of a folder, whether an SDK belongs to its host, and the exact
// failures of the host configuration step, called in-process on real folder trees.
#include "HostFixtures.h"
#include "TestSupport.h"

#include "foundation/Paths.h"
#include "host/HostConfiguration.h"
#include "host/HostEnvironment.h"
#include "launch/LaunchContext.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace korvane {
namespace {

using hosttest::Touch;
using testing::ScratchDirectory;

TEST(HostEnvironmentOf, FollowsTheProjectTestAndTheMarkerFile)
{
    ScratchDirectory scratch(L"environment-of");
    EXPECT_EQ(HostEnvironmentOf(L""), L"standalone");
    EXPECT_EQ(HostEnvironmentOf(scratch / L"Missing"), L"packaged") << "existence does not matter";
    hosttest::MakeGameInstall(scratch / L"Shipped");
    Touch(scratch / L"Shipped\\.korvane-host-bundle.json");
    EXPECT_EQ(HostEnvironmentOf(scratch / L"Shipped"), L"packaged");

    const Text project = scratch / L"Project";
    hosttest::MakeGameProject(project);
    EXPECT_EQ(HostEnvironmentOf(project), L"developer");
    testing::MakeDirectories(JoinPath(project, L".korvane-host-bundle.json"));
    EXPECT_EQ(HostEnvironmentOf(project), L"developer") << "a folder of the marker's name is no marker";
    RemoveDirectoryW(JoinPath(project, L".korvane-host-bundle.json").c_str());
    Touch(JoinPath(project, L".korvane-host-bundle.json"));
    EXPECT_EQ(HostEnvironmentOf(project), L"packaged");
}

TEST(SdkBelongsToHost, OnlyAPackagedGameConstrainsItsSdk)
{
    ScratchDirectory scratch(L"belongs");
    const Text game = scratch / L"Title";
    hosttest::MakeGameInstall(game);
    const Text project = scratch / L"Project";
    hosttest::MakeGameProject(project);

    EXPECT_TRUE(SdkBelongsToHost(scratch / L"Anywhere\\x.kvsdk", L"")) << "stand-alone";
    EXPECT_TRUE(SdkBelongsToHost(scratch / L"Anywhere\\x.kvsdk", project)) << "developer";
    EXPECT_TRUE(SdkBelongsToHost(JoinPath(game, L"Sdk\\Missing.kvsdk"), game)) << "a missing path has no reparse point";
    EXPECT_TRUE(SdkBelongsToHost(scratch / L"TITLE\\x.kvsdk", game + L"\\")) << "A to Z fold, both normalised";
    EXPECT_FALSE(SdkBelongsToHost(scratch / L"TitleX\\x.kvsdk", game)) << "a sibling that shares the prefix";
    EXPECT_FALSE(SdkBelongsToHost(game, game)) << "the game itself is not inside it";
    EXPECT_FALSE(SdkBelongsToHost(JoinPath(game, L"..\\Other\\x.kvsdk"), game));
    EXPECT_FALSE(SdkBelongsToHost(scratch / L"Anywhere\\x.kvsdk", scratch / L"Missing")) << "packaged, though missing";
}

// Runs the configuration step in-process for an install at S\Install and gives the message
// of what it threw, or "" when it threw nothing.
std::string ConfigurationFailure(const ScratchDirectory& scratch, BytesView configuration, LaunchContext& context,
    Text& requestedGameDirectory)
{
    context.editorRoot = scratch / L"Install";
    testing::WriteFileBytes(JoinPath(context.editorRoot, L"KorvaneUpdate.config.json"), configuration);
    try {
        ApplyHostConfiguration(context, requestedGameDirectory);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return {};
}

std::string ConfigurationFailure(const ScratchDirectory& scratch, BytesView configuration)
{
    LaunchContext context;
    Text requestedGameDirectory;
    return ConfigurationFailure(scratch, configuration, context, requestedGameDirectory);
}

TEST(ApplyHostConfiguration, EachRefusalHasItsOwnMessage)
{
    ScratchDirectory scratch(L"config-messages");
    hosttest::MakeGameInstall(scratch / L"Title");
    Touch(scratch / L"Outside\\Outside.kvsdk");

    EXPECT_EQ(ConfigurationFailure(scratch, ""), "empty JSON");
    EXPECT_EQ(ConfigurationFailure(scratch, "{\"schemaVersion\":1" + Bytes(65536, ' ') + "}"), "empty JSON")
        << "an oversized file reads as nothing";
    EXPECT_EQ(ConfigurationFailure(scratch, "{\"schemaVersion\":1,\"schemaVersion\":1}"), "duplicate JSON key");
    EXPECT_EQ(ConfigurationFailure(scratch, "{\"schemaVersion\":\"01\"}"), "invalid host configuration version");
    EXPECT_EQ(ConfigurationFailure(scratch, "{\"schemaVersion\":1,\"environment\":\"Auto\"}"), "invalid host environment");
    EXPECT_EQ(ConfigurationFailure(scratch, "{\"schemaVersion\":1,\"environment\":\"auto\",\"gameDirectory\":\"\\\\x\"}"),
        "packaged host paths must be relative");
    EXPECT_EQ(ConfigurationFailure(scratch, "{\"schemaVersion\":1,\"gameDirectory\":\"../Title\",\"sdk\":\"../Outside/Outside.kvsdk\"}"),
        "SDK must belong to this game package");

    hosttest::FolderLink link(scratch / L"Title\\Linked", scratch / L"Outside");
    if (link.IsMade()) {
        EXPECT_EQ(ConfigurationFailure(scratch, "{\"schemaVersion\":1,\"gameDirectory\":\"../Title\","
                                                "\"sdk\":\"../Title/Linked/Outside.kvsdk\"}"),
            "packaged SDK path must not redirect outside its host");
    }
}

TEST(ApplyHostConfiguration, FillsOnlyWhatTheCommandLineLeftOpen)
{
    ScratchDirectory scratch(L"config-fills");
    hosttest::MakeGameInstall(scratch / L"Title");
    Touch(scratch / L"Title\\Title.kvsdk");

    // A game directory already given: the file is not even read.
    LaunchContext given;
    Text givenGame = L"C:\\Given";
    EXPECT_EQ(ConfigurationFailure(scratch, "{", given, givenGame), "");
    EXPECT_EQ(givenGame, L"C:\\Given");
    EXPECT_TRUE(given.passThroughArguments.empty());

    // Results go to the game, the SDK and one appended word, after the arguments already there.
    LaunchContext context;
    context.passThroughArguments = {L"-culture=de"};
    Text game;
    EXPECT_EQ(ConfigurationFailure(scratch, "{\"schemaVersion\":1,\"gameDirectory\":\"../Title\"}", context, game), "");
    EXPECT_EQ(game, scratch / L"Title");
    EXPECT_EQ(context.requestedSdk, scratch / L"Title\\Title.kvsdk");
    EXPECT_EQ(context.passThroughArguments, (std::vector<Text>{L"-culture=de", L"-KorvaneHostEnvironment=packaged"}));

    // No game directory in the file: nothing at all changes.
    LaunchContext untouched;
    Text noGame;
    EXPECT_EQ(ConfigurationFailure(scratch, "{\"schemaVersion\":1,\"environment\":\"developer\",\"sdk\":\"x.kvsdk\"}",
                  untouched, noGame),
        "");
    EXPECT_EQ(noGame, L"");
    EXPECT_EQ(untouched.requestedSdk, L"");
    EXPECT_TRUE(untouched.passThroughArguments.empty());
}

TEST(ResolveHostPath, RelativeToTheRootUnlessAbsoluteAndDeveloper)
{
    EXPECT_EQ(ResolveHostPath(L"packaged", L"C:\\Root\\Editor", L"..\\Game"), L"C:\\Root\\Game");
    EXPECT_EQ(ResolveHostPath(L"auto", L"C:\\Root\\Editor", L"../../Game/./Sdk/"), L"C:\\Game\\Sdk")
        << "nothing confines a relative path to the root";
    EXPECT_EQ(ResolveHostPath(L"packaged", L"C:\\Root", L""), L"C:\\Root");
    EXPECT_EQ(ResolveHostPath(L"developer", L"C:\\Root", L"D:/Game/"), L"D:\\Game");
    for (const wchar_t* word : {L"packaged", L"auto", L"Developer", L""}) {
        for (const wchar_t* absolute : {L"D:\\Game", L"\\Game", L"/Game", L"D:Game"}) {
            SCOPED_TRACE(TextToUtf8(Text(word) + L" " + absolute));
            EXPECT_THROW(ResolveHostPath(word, L"C:\\Root", absolute), std::runtime_error);
        }
    }
}

}  // namespace
}  // namespace korvane
