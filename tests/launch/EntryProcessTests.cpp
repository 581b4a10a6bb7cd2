// The real launcher in scratch install trees: exit codes, reports and boxes of the entry point.
#include "MessageBoxes.h"
#include "TestSupport.h"

#include "foundation/Paths.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

enum class Editor { Missing, File, Folder };

// A scratch install: the launcher at the root, and what stands where the editor is looked for.
class ScratchInstall {
public:
    explicit ScratchInstall(TextView label, Editor editor = Editor::File, TextView rootName = L"install")
        : scratch_(label), root_(scratch_ / rootName)
    {
        testing::CopyFileTo(testing::BuiltLauncherPath(), JoinPath(root_, L"KorvaneEditor.exe"));
        const Text editorPath = JoinPath(root_, L"Engine\\Binaries\\Win64\\UnrealEditor.exe");
        if (editor == Editor::File) {
            testing::WriteFileBytes(editorPath, "MZ");
        } else if (editor == Editor::Folder) {
            testing::MakeDirectories(editorPath);
        }
    }

    const Text& Root() const { return root_; }
    Text Scratch(TextView relative) const { return scratch_ / relative; }

    testing::ChildProcess Start(const std::vector<Text>& arguments) const
    {
        testing::ProcessOptions options;
        options.currentDirectory = root_;
        return testing::ChildProcess::Start(JoinPath(root_, L"KorvaneEditor.exe"), arguments, options);
    }

    DWORD Run(const std::vector<Text>& arguments) const
    {
        testing::ChildProcess child = Start(arguments);
        EXPECT_TRUE(child.Wait(120000)) << "a headless run never ends in a box";
        return child.ExitCode();
    }

private:
    testing::ScratchDirectory scratch_;
    Text root_;
};

// Headless runs end without a box; other runs tell the same failures in a box.
TEST(EntryProcess, InstallChecksAndProjectFileGiveTheirExitCodes)
{
    const std::vector<Text> check{L"-KorvaneLauncherCheck", L"-KorvaneEmptyHost"};
    const struct {
        Editor editor;
        const wchar_t* rootName;
        std::vector<Text> arguments;
        DWORD exitCode;
        const wchar_t* box;
    } rows[] = {
        {Editor::Missing, L"install", check, 2, L""},
        {Editor::Folder, L"install", check, 2, L""},
        {Editor::File, L"Korvane \x7F16\x8F91\x5668", check, 8, L""},
        {Editor::Missing, L"\x00C9" L"diteur", check, 2, L""},  // the editor is checked first
        // -KorvaneEmptyHost clears the SDK wherever it stood.
        {Editor::File, L"install", {L"-KorvaneLauncherCheck", L"-sdk=C:\\x.kvsdk", L"-KorvaneEmptyHost"}, 0, L""},
        {Editor::File, L"install", {L"-KorvaneLauncherCheck", L"Game.uproject"}, 3, L""},
        {Editor::File, L"install", {L"-KorvaneLauncherCheck"}, 3, L""},  // neither SDK nor game to check
        {Editor::Missing, L"install", {L"-KorvaneEmptyHost"}, 2,
            L"The official Unreal Editor was not found in this Korvane package."},
        // The check option behind the project file is never read.
        {Editor::File, L"install", {L"C:\\Game\\Game.uproject", L"-KorvaneLauncherCheck"}, 3,
            L"KV4300: Select a .kvsdk file. UE project SDK loading has been removed."},
    };
    for (const auto& row : rows) {
        const ScratchInstall install(L"entry", row.editor, row.rootName);
        testing::ChildProcess child = install.Start(row.arguments);
        const auto box = testing::WaitForMessageBox(child.Id(), child.Handle(), 120000);
        EXPECT_EQ(box ? box->text : Text(), row.box) << TextToUtf8(row.rootName);
        if (box) {
            EXPECT_EQ(box->title, L"Korvane launch error");
            testing::PressMessageBoxButton(box->window, IDOK);
        }
        ASSERT_TRUE(child.Wait(30000));
        EXPECT_EQ(child.ExitCode(), row.exitCode) << TextToUtf8(row.rootName);
    }
}

TEST(EntryProcess, HostContextReportIsWrittenByteForByte)
{
    const ScratchInstall install(L"report");
    const Text report = install.Scratch(L"report.json");
    EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + report,
                  L"-KorvaneGameDir=C:\\Games\\\x6E38\x620F \"Q\"", L"-sdk=C:\\Games\\Title.kvsdk",
                  L"-KorvaneHostEnvironment=developer", L"-KorvaneHostEnvironment=packaged"}),
        0u);
    EXPECT_EQ(testing::ReadFileBytes(report),
        "{\"game\":\"C:\\\\Games\\\\\xE6\xB8\xB8\xE6\x88\x8F \\\"Q\\\"\",\"sdk\":\"C:\\\\Games\\\\Title.kvsdk\","
        "\"environment\":\"packaged\"}");

    // No game around the install and nothing named; the mode needs no editor. An older, longer
    // file is replaced whole.
    const ScratchInstall bare(L"report-bare", Editor::Missing);
    const Text bareReport = bare.Scratch(L"bare.json");
    testing::WriteFileBytes(bareReport, "an older, longer report that must be replaced entirely");
    EXPECT_EQ(bare.Run({L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + bareReport}), 0u);
    EXPECT_EQ(testing::ReadFileBytes(bareReport), "{\"game\":\"\",\"sdk\":\"\",\"environment\":\"\"}");

    // Failures give 3 and write nothing; a folder cannot be written as a report.
    const Text missingFolder = install.Scratch(L"missing\\report.json");
    for (const Text& path : {Text(), missingFolder, install.Root()}) {
        EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + path}), 3u);
    }
    EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext"}), 3u);
    EXPECT_FALSE(testing::FileExists(missingFolder));
}

}  // namespace
}  // namespace korvane
