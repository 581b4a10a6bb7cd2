// The real launcher in scratch install trees: exit codes, reports and boxes of the entry point.
#include "MessageBoxes.h"
#include "TestSupport.h"

#include "foundation/Paths.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

enum class Editor { Missing, File, Folder };

using testing::LauncherInstall;

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
        {Editor::Folder, L"install", check, 2, L""},
        {Editor::File, L"Korvane \x7F16\x8F91\x5668", check, 8, L""},
        {Editor::Missing, L"\x00C9" L"diteur", check, 2, L""},  // the editor is checked first, and is missing
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
        SCOPED_TRACE(TextToUtf8(row.rootName));
        const LauncherInstall install(L"entry", row.rootName);
        if (row.editor != Editor::File) {
            DeleteFileW(install.Editor().c_str());
        }
        if (row.editor == Editor::Folder) {
            testing::MakeDirectories(install.Editor());
        }
        const testing::RunEnd end = testing::WaitAnsweringBox(install.Start(row.arguments));
        EXPECT_EQ(end.box ? end.box->text : Text(), row.box);
        if (end.box) {
            EXPECT_EQ(end.box->title, L"Korvane launch error");
        }
        EXPECT_EQ(end.exitCode, row.exitCode);
    }
}

TEST(EntryProcess, HostContextReportIsWrittenByteForByte)
{
    const LauncherInstall install(L"report");
    const Text report = install / L"report.json";
    EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + report,
                  L"-KorvaneGameDir=C:\\Games\\\x6E38\x620F \"Q\"", L"-sdk=C:\\Games\\Title.kvsdk",
                  L"-KorvaneHostEnvironment=developer", L"-KorvaneHostEnvironment=packaged"}),
        0u);
    EXPECT_EQ(testing::ReadFileBytes(report),
        "{\"game\":\"C:\\\\Games\\\\\xE6\xB8\xB8\xE6\x88\x8F \\\"Q\\\"\",\"sdk\":\"C:\\\\Games\\\\Title.kvsdk\","
        "\"environment\":\"packaged\"}");

    // No game around the install and nothing named; the mode needs no editor. An older, longer
    // file is replaced whole.
    const LauncherInstall bare(L"report-bare");
    DeleteFileW(bare.Editor().c_str());
    const Text bareReport = bare / L"bare.json";
    testing::WriteFileBytes(bareReport, "an older, longer report that must be replaced entirely");
    EXPECT_EQ(bare.Run({L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + bareReport}), 0u);
    EXPECT_EQ(testing::ReadFileBytes(bareReport), "{\"game\":\"\",\"sdk\":\"\",\"environment\":\"\"}");

    // Failures give 3 and write nothing; a folder cannot be written as a report.
    const Text missingFolder = install / L"missing\\report.json";
    for (const Text& path : {Text(), missingFolder, install.Root()}) {
        EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + path}), 3u);
    }
    EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext"}), 3u);
    EXPECT_FALSE(testing::FileExists(missingFolder));
}

}  // namespace
}  // namespace korvane
