// KorvaneUpdate.config.json as the real launcher reads it: what each file decides, and every
// refusal ending the run with exit code 3 while leaving the disk as it was.
#include "HostFixtures.h"
#include "MessageBoxes.h"
#include "TestSupport.h"

#include "foundation/Paths.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using hosttest::ExpectedReport;
using hosttest::ScratchInstall;
using hosttest::Touch;

// The install at S\Install, in no game, with these folders beside it:
//   Title    a shipped game holding Title.kvsdk
//   Project  a developer's project folder holding Project.kvsdk
//   Bundle   a project folder with the bundle marker, holding Bundle.kvsdk
//   Outside  a plain folder holding Outside.kvsdk
//   Multi    two subfolders with an SDK each and none of its own
class ConfiguredInstall {
public:
    explicit ConfiguredInstall(TextView label) : install_(label)
    {
        hosttest::MakeGameInstall(Path(L"Title"), L"Title.exe");
        Touch(Path(L"Title\\Title.kvsdk"));
        hosttest::MakeGameProject(Path(L"Project"));
        Touch(Path(L"Project\\Project.kvsdk"));
        hosttest::MakeGameProject(Path(L"Bundle"), true);
        Touch(Path(L"Bundle\\Bundle.kvsdk"));
        Touch(Path(L"Outside\\Outside.kvsdk"));
        Touch(Path(L"Multi\\A\\A.kvsdk"));
        Touch(Path(L"Multi\\B\\B.kvsdk"));
    }

    Text Path(TextView relative) const { return install_ / relative; }
    Text ConfigFile() const { return JoinPath(install_.Root(), L"KorvaneUpdate.config.json"); }
    const ScratchInstall& Install() const { return install_; }

    // Runs the report mode with this configuration (nullptr: no file) and checks the outcome
    // and that nothing on disk changed.
    void Expect(const char* configuration, const std::vector<Text>& arguments, DWORD exitCode, TextView game = L"",
        TextView sdk = L"", TextView environment = L"") const
    {
        DeleteFileW(ConfigFile().c_str());
        if (configuration != nullptr) {
            testing::WriteFileBytes(ConfigFile(), configuration);
        }
        Check(arguments, exitCode, game, sdk, environment);
    }

    void Check(const std::vector<Text>& arguments, DWORD exitCode, TextView game = L"", TextView sdk = L"",
        TextView environment = L"") const
    {
        const auto before = hosttest::SnapshotTree(install_.ScratchPath());
        const ScratchInstall::Report report = install_.ResolveHostContext(arguments);
        EXPECT_EQ(report.exitCode, exitCode);
        if (exitCode == 0) {
            EXPECT_EQ(report.content, ExpectedReport(game, sdk, environment));
        } else {
            EXPECT_EQ(report.content, "") << "a refused configuration ends the run before the report";
        }
        EXPECT_EQ(hosttest::SnapshotTree(install_.ScratchPath()), before) << "the run changed something on disk";
    }

private:
    ScratchInstall install_;
};

constexpr DWORD kBadRequest = 3;

TEST(HostConfiguration, WhatAFileDecides)
{
    const ConfiguredInstall setup(L"config-decides");
    const Text title = setup.Path(L"Title");
    const Text titleSdk = setup.Path(L"Title\\Title.kvsdk");
    const Text project = setup.Path(L"Project");
    const Text projectSdk = setup.Path(L"Project\\Project.kvsdk");
    const Text bundle = setup.Path(L"Bundle");
    const Text outsideSdk = setup.Path(L"Outside\\Outside.kvsdk");

    {
        SCOPED_TRACE("no file, or a folder of its name: nothing is set");
        setup.Expect(nullptr, {}, 0);
        testing::MakeDirectories(setup.ConfigFile());
        setup.Check({}, 0);
        RemoveDirectoryW(setup.ConfigFile().c_str());
    }
    SCOPED_TRACE("the version alone changes nothing and adds no word");
    setup.Expect("{\"schemaVersion\":1}", {}, 0);
    setup.Expect("\xEF\xBB\xBF{\"schemaVersion\":1,\"unknown\":{\"gameDirectory\":\"../Title\"}}", {}, 0);

    SCOPED_TRACE("a relative game directory, packaged by default, finds the game's SDK");
    setup.Expect("{\"schemaVersion\":\"1\",\"gameDirectory\":\"../Title\"}", {}, 0, title, titleSdk, L"packaged");
    setup.Expect("{\"schemaVersion\":1,\"environment\":\"\",\"gameDirectory\":\"..\\\\Title\\\\\"}", {}, 0, title,
        titleSdk, L"packaged");
    setup.Expect("{\"schemaVersion\":1,\"gameDirectory\":\"../Multi\"}", {}, 0, setup.Path(L"Multi"), L"",
        L"packaged");
    // The parent of the install: its subfolders hold several SDKs, so none is chosen.
    setup.Expect("{\"schemaVersion\":\"1\",\"gameDirectory\":\"..\"}", {}, 0, setup.Install().ScratchPath(), L"",
        L"packaged");

    SCOPED_TRACE("developer: absolute paths are taken; the packaged directory is ignored");
    const Bytes absoluteProject = TextToUtf8(QuoteJsonText(project + L"/"));
    setup.Expect(("{\"schemaVersion\":1,\"environment\":\"developer\",\"gameDirectory\":" + absoluteProject +
                     ",\"packagedGameDirectory\":\"C:\\\\Elsewhere\"}")
                     .c_str(),
        {}, 0, project, projectSdk, L"developer");
    setup.Expect("{\"schemaVersion\":1,\"environment\":\"developer\",\"gameDirectory\":\"../Project\","
                 "\"sdk\":\"../Outside/Outside.kvsdk\"}",
        {}, 0, project, outsideSdk, L"developer");

    SCOPED_TRACE("auto is decided by the folder and its marker");
    setup.Expect("{\"schemaVersion\":1,\"environment\":\"auto\",\"gameDirectory\":\"../Project\","
                 "\"packagedGameDirectory\":\"../Title\"}",
        {}, 0, project, projectSdk, L"developer");
    setup.Expect("{\"schemaVersion\":1,\"environment\":\"auto\",\"gameDirectory\":\"../Bundle\"}", {}, 0, bundle,
        setup.Path(L"Bundle\\Bundle.kvsdk"), L"packaged");
    setup.Expect("{\"schemaVersion\":1,\"environment\":\"auto\",\"gameDirectory\":\"../Bundle\","
                 "\"packagedGameDirectory\":\"../Title\"}",
        {}, 0, title, titleSdk, L"packaged");
    setup.Expect("{\"schemaVersion\":1,\"environment\":\"auto\",\"gameDirectory\":\"../Nowhere\"}", {}, 0,
        setup.Path(L"Nowhere"), L"", L"packaged");

    SCOPED_TRACE("packaged: the packaged directory replaces the game directory, which need not exist");
    setup.Expect("{\"schemaVersion\":1,\"environment\":\"packaged\",\"gameDirectory\":\"../Missing\","
                 "\"packagedGameDirectory\":\"../Title\"}",
        {}, 0, title, titleSdk, L"packaged");

    SCOPED_TRACE("an SDK inside the packaged game in another letter case belongs to it");
    setup.Expect("{\"schemaVersion\":1,\"gameDirectory\":\"../Title\",\"sdk\":\"../TITLE/Other.kvsdk\"}", {}, 0,
        title, setup.Path(L"TITLE\\Other.kvsdk"), L"packaged");

    SCOPED_TRACE("the command line's SDK stays, is not searched for, and is still held to the package");
    setup.Expect("{\"schemaVersion\":1,\"environment\":\"developer\",\"gameDirectory\":\"../Project\","
                 "\"sdk\":\"../Title/Title.kvsdk\"}",
        {L"-sdk=" + outsideSdk}, 0, project, outsideSdk, L"developer");
    setup.Expect("{\"schemaVersion\":1,\"gameDirectory\":\"../Title\",\"sdk\":\"../Title/Title.kvsdk\"}",
        {L"-sdk=" + outsideSdk}, kBadRequest);

    SCOPED_TRACE("a word on the command line stays and wins");
    setup.Expect("{\"schemaVersion\":1,\"gameDirectory\":\"../Title\"}", {L"-KorvaneHostEnvironment=custom"}, 0,
        title, titleSdk, L"custom");

    SCOPED_TRACE("a game directory on the command line wins; the file is not even read");
    setup.Expect("{", {L"-KorvaneGameDir=C:\\Games\\X\\"}, 0, L"C:\\Games\\X\\");
}

TEST(HostConfiguration, EveryRefusalEndsWithExitThreeAndTouchesNothing)
{
    const ConfiguredInstall setup(L"config-refusals");
    struct Refusal {
        const char* why;
        Bytes configuration;
    };
    const Bytes absoluteTitle = TextToUtf8(QuoteJsonText(setup.Path(L"Title")));
    const Bytes valid = "{\"schemaVersion\":1,\"gameDirectory\":\"../Title\"}";
    Bytes oversized = valid;
    oversized.insert(1, 65537 - valid.size(), ' ');
    const Refusal refusals[] = {
        {"empty file", ""},
        {"one byte over the limit", oversized},
        {"malformed", "{\"schemaVersion\":1,\"gameDirectory\":\"../Title\""},
        {"invalid UTF-8", "{\"schemaVersion\":1,\"gameDirectory\":\"../T\xC3\x28\"}"},
        {"duplicate key", "{\"schemaVersion\":1,\"gameDirectory\":\"../Title\",\"gameDirectory\":\"../Title\"}"},
        {"an array", "[{\"schemaVersion\":1}]"},
        {"a string", "\"1\""},
        {"no version", "{\"gameDirectory\":\"../Title\"}"},
        {"version 2", "{\"schemaVersion\":2,\"gameDirectory\":\"../Title\"}"},
        {"version 1.0", "{\"schemaVersion\":1.0}"},
        {"version 01", "{\"schemaVersion\":01}"},
        {"version true", "{\"schemaVersion\":true}"},
        {"environment in another case", "{\"schemaVersion\":1,\"environment\":\"Packaged\"}"},
        {"standalone is no configured environment", "{\"schemaVersion\":1,\"environment\":\"standalone\"}"},
        {"null environment", "{\"schemaVersion\":1,\"environment\":null}"},
        {"absolute game directory when packaged",
            "{\"schemaVersion\":1,\"environment\":\"packaged\",\"gameDirectory\":" + absoluteTitle + "}"},
        {"absolute game directory by default", "{\"schemaVersion\":1,\"gameDirectory\":" + absoluteTitle + "}"},
        {"absolute game directory with auto",
            "{\"schemaVersion\":1,\"environment\":\"auto\",\"gameDirectory\":" + absoluteTitle + "}"},
        {"absolute game directory beside a relative packaged one",
            "{\"schemaVersion\":1,\"gameDirectory\":" + absoluteTitle + ",\"packagedGameDirectory\":\"../Title\"}"},
        {"absolute packaged directory",
            "{\"schemaVersion\":1,\"gameDirectory\":\"../Missing\",\"packagedGameDirectory\":\"/Title\"}"},
        {"absolute SDK when packaged",
            "{\"schemaVersion\":1,\"gameDirectory\":\"../Title\",\"sdk\":\"C:Title.kvsdk\"}"},
        {"SDK outside the packaged game",
            "{\"schemaVersion\":1,\"gameDirectory\":\"../Title\",\"sdk\":\"../Outside/Outside.kvsdk\"}"},
        {"SDK that steps out of the packaged game",
            "{\"schemaVersion\":1,\"gameDirectory\":\"../Title\",\"sdk\":\"../Title/../Outside/Outside.kvsdk\"}"},
        {"SDK in a sibling whose name extends the game's",
            "{\"schemaVersion\":1,\"gameDirectory\":\"../Title\",\"sdk\":\"../TitleX/x.kvsdk\"}"},
    };
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.why);
        setup.Expect(refusal.configuration.c_str(), {}, kBadRequest);
        EXPECT_EQ(testing::ReadFileBytes(setup.ConfigFile()), refusal.configuration);
    }

    SCOPED_TRACE("exactly at the limit the file is read");
    Bytes atLimit = valid;
    atLimit.insert(1, 65536 - valid.size(), ' ');
    setup.Expect(atLimit.c_str(), {}, 0, setup.Path(L"Title"), setup.Path(L"Title\\Title.kvsdk"), L"packaged");
}

TEST(HostConfiguration, APackagedSdkBehindAFolderLinkIsRefused)
{
    const ConfiguredInstall setup(L"config-link");
    hosttest::FolderLink link(setup.Path(L"Title\\Linked"), setup.Path(L"Outside"));
    if (!link.IsMade()) {
        GTEST_SKIP() << "this system cannot make folder links";
    }
    setup.Expect("{\"schemaVersion\":1,\"gameDirectory\":\"../Title\",\"sdk\":\"../Title/Linked/Outside.kvsdk\"}", {},
        kBadRequest);
    // The same path under a developer's project is taken untested.
    setup.Expect("{\"schemaVersion\":1,\"environment\":\"developer\",\"gameDirectory\":\"../Title\","
                 "\"sdk\":\"../Title/Linked/Outside.kvsdk\"}",
        {}, 0, setup.Path(L"Title"), setup.Path(L"Title\\Linked\\Outside.kvsdk"), L"developer");
    // A link that is the game directory itself is not examined.
    hosttest::FolderLink gameLink(setup.Path(L"TitleLink"), setup.Path(L"Title"));
    setup.Expect("{\"schemaVersion\":1,\"gameDirectory\":\"../TitleLink\",\"sdk\":\"../TitleLink/Title.kvsdk\"}", {}, 0,
        setup.Path(L"TitleLink"), setup.Path(L"TitleLink\\Title.kvsdk"), L"packaged");
}

TEST(HostConfiguration, ABadFileIsReportedInABoxOutsideHeadlessModes)
{
    const ConfiguredInstall setup(L"config-box");
    testing::WriteFileBytes(setup.ConfigFile(), "{\"schemaVersion\":2}");
    testing::ProcessOptions options;
    options.currentDirectory = setup.Install().Root();
    testing::ChildProcess child = testing::ChildProcess::Start(setup.Install().Launcher(), {}, options);
    const auto box = testing::WaitForMessageBox(child.Id(), child.Handle());
    ASSERT_TRUE(box.has_value()) << "the launcher ended without a box";
    EXPECT_EQ(box->title, L"Korvane launch error");
    EXPECT_EQ(box->text, L"Invalid local KorvaneUpdate.config.json");
    testing::PressMessageBoxButton(box->window, IDOK);
    ASSERT_TRUE(child.Wait(30000));
    EXPECT_EQ(child.ExitCode(), 3u);
}

}  // namespace
}  // namespace korvane
