// The real launcher in scratch install trees: exit codes, reports and boxes of the entry point.
#include "MessageBoxes.h"
#include "TestSupport.h"

#include "foundation/Paths.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using testing::ScratchDirectory;

// A scratch install: the launcher at the root, optionally an editor where it is looked for.
class ScratchInstall {
public:
    explicit ScratchInstall(TextView label, bool withEditor = true, TextView rootName = L"install")
        : scratch_(label), root_(scratch_ / rootName)
    {
        testing::CopyFileTo(testing::BuiltLauncherPath(), JoinPath(root_, L"KorvaneEditor.exe"));
        if (withEditor) {
            testing::WriteFileBytes(JoinPath(root_, L"Engine\\Binaries\\Win64\\UnrealEditor.exe"), "MZ");
        }
    }

    const Text& Root() const { return root_; }
    Text Launcher() const { return JoinPath(root_, L"KorvaneEditor.exe"); }
    Text Scratch(TextView relative) const { return scratch_ / relative; }

    DWORD Run(const std::vector<Text>& arguments) const
    {
        testing::ProcessOptions options;
        options.currentDirectory = root_;
        return testing::RunProcess(Launcher(), arguments, options).exitCode;
    }

private:
    ScratchDirectory scratch_;
    Text root_;
};

TEST(EntryProcess, InstallChecksGiveTheirExitCodes)
{
    ScratchInstall noEditor(L"no-editor", false);
    EXPECT_EQ(noEditor.Run({L"-KorvaneLauncherCheck", L"-KorvaneEmptyHost"}), 2u);

    ScratchInstall editorIsFolder(L"editor-folder", false);
    testing::MakeDirectories(JoinPath(editorIsFolder.Root(), L"Engine\\Binaries\\Win64\\UnrealEditor.exe"));
    EXPECT_EQ(editorIsFolder.Run({L"-KorvaneLauncherCheck", L"-KorvaneEmptyHost"}), 2u);

    ScratchInstall nonAscii(L"non-ascii", true, L"Korvane \x7F16\x8F91\x5668");
    EXPECT_EQ(nonAscii.Run({L"-KorvaneLauncherCheck", L"-KorvaneEmptyHost"}), 8u);

    ScratchInstall nonAsciiNoEditor(L"non-ascii-no-editor", false, L"\x00C9" L"diteur");
    EXPECT_EQ(nonAsciiNoEditor.Run({L"-KorvaneLauncherCheck", L"-KorvaneEmptyHost"}), 2u) << "the editor is checked first";

    ScratchInstall whole(L"whole");
    EXPECT_EQ(whole.Run({L"-KorvaneLauncherCheck", L"-KorvaneEmptyHost"}), 0u);
    EXPECT_EQ(whole.Run({L"-KorvaneLauncherCheck"}), 3u) << "nothing to check";
    EXPECT_EQ(whole.Run({L"-KorvaneLauncherCheck", L"-KorvaneEmptyHost", L"-sdk=C:\\x.kvsdk"}), 0u)
        << "-KorvaneEmptyHost clears the SDK wherever it stood";
}

TEST(EntryProcess, HostContextReportIsWrittenByteForByte)
{
    ScratchInstall install(L"report");
    const Text report = install.Scratch(L"report.json");

    EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + report,
                  L"-KorvaneGameDir=C:\\Games\\\x6E38\x620F \"Q\"", L"-sdk=C:\\Games\\Title.kvsdk",
                  L"-KorvaneHostEnvironment=developer", L"-KorvaneHostEnvironment=packaged"}),
        0u);
    EXPECT_EQ(testing::ReadFileBytes(report),
        "{\"game\":\"C:\\\\Games\\\\\xE6\xB8\xB8\xE6\x88\x8F \\\"Q\\\"\",\"sdk\":\"C:\\\\Games\\\\Title.kvsdk\","
        "\"environment\":\"packaged\"}");

    // The install lies in no game and nothing was named: all three are empty. The report mode
    // needs no editor, so the missing editor is not reported.
    ScratchInstall bare(L"report-bare", false);
    const Text bareReport = bare.Scratch(L"bare.json");
    testing::WriteFileBytes(bareReport, "an older, longer report that must be replaced entirely");
    EXPECT_EQ(bare.Run({L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + bareReport}), 0u);
    EXPECT_EQ(testing::ReadFileBytes(bareReport), "{\"game\":\"\",\"sdk\":\"\",\"environment\":\"\"}");
}

TEST(EntryProcess, HostContextReportFailuresGiveThreeAndWriteNothing)
{
    ScratchInstall install(L"report-fail");
    EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext"}), 3u);
    EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport="}), 3u);
    const Text missingFolder = install.Scratch(L"missing\\report.json");
    EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + missingFolder}), 3u);
    EXPECT_FALSE(testing::FileExists(missingFolder));
    EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + install.Root()}), 3u)
        << "a folder cannot be written as a report";
}

TEST(EntryProcess, ProjectFileArgumentEndsWithKV4300)
{
    ScratchInstall install(L"uproject");
    // Headless before the project argument: no box, exit 3.
    EXPECT_EQ(install.Run({L"-KorvaneLauncherCheck", L"Game.uproject"}), 3u);

    // The check option behind it is never read, so the box is shown.
    testing::ProcessOptions options;
    options.currentDirectory = install.Root();
    testing::ChildProcess child =
        testing::ChildProcess::Start(install.Launcher(), {L"C:\\Game\\Game.uproject", L"-KorvaneLauncherCheck"}, options);
    const auto box = testing::WaitForMessageBox(child.Id(), child.Handle());
    ASSERT_TRUE(box.has_value()) << "the launcher ended without a box";
    EXPECT_EQ(box->title, L"Korvane launch error");
    EXPECT_EQ(box->text, L"KV4300: Select a .kvsdk file. UE project SDK loading has been removed.");
    testing::PressMessageBoxButton(box->window, IDOK);
    ASSERT_TRUE(child.Wait(30000));
    EXPECT_EQ(child.ExitCode(), 3u);
}

TEST(EntryProcess, MissingEditorIsReportedInABoxOutsideHeadlessModes)
{
    ScratchInstall install(L"box-no-editor", false);
    testing::ProcessOptions options;
    options.currentDirectory = install.Root();
    testing::ChildProcess child = testing::ChildProcess::Start(install.Launcher(), {L"-KorvaneEmptyHost"}, options);
    const auto box = testing::WaitForMessageBox(child.Id(), child.Handle());
    ASSERT_TRUE(box.has_value());
    EXPECT_EQ(box->title, L"Korvane launch error");
    EXPECT_EQ(box->text, L"The official Unreal Editor was not found in this Korvane package.");
    testing::PressMessageBoxButton(box->window, IDOK);
    ASSERT_TRUE(child.Wait(30000));
    EXPECT_EQ(child.ExitCode(), 2u);
}

}  // namespace
}  // namespace korvane
