// -KorvaneLauncherCheck with the real launcher in sample installs: its exit codes, the one
// `sdk-info` run it makes, and that it shows nothing on any path.
#include "MessageBoxes.h"
#include "SampleInstall.h"
#include "ToolCalls.h"

#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"
#include "tool/LauncherCheck.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using testing::SampleInstall;

// Runs the check and gives its exit code, failing the test when the launcher shows a box.
DWORD RunCheck(const SampleInstall& install, const Text& argument)
{
    const testing::RunEnd end = testing::WaitAnsweringBox(testing::ChildProcess::Start(
        install.Launcher(), {L"-KorvaneLauncherCheck", argument}, {.currentDirectory = install.EditorRoot()}));
    EXPECT_FALSE(end.box.has_value()) << "the check showed a box: " << TextToUtf8(end.box ? end.box->text : Text());
    return end.exitCode;
}

TEST(LauncherCheck, ExitCodesOfTheWholeCheck)
{
    SampleInstall install(L"check");
    const Text sdk = L"-sdk=" + install.SdkPath();
    struct Row { const wchar_t* scenario; Text argument; Text deleteFirst; DWORD exitCode; std::size_t toolRuns; };
    const Row rows[] = {
        {L"", sdk, L"", 0, 1},
        {LR"({"sdk-info":{"exitCode":0,"stdout":"whatever it prints"}})", L"-KorvaneGameDir=" + install.GameDirectory(),
            L"", 0, 1},
        {LR"({"sdk-info":{"exitCode":17,"stderr":"this SDK does not suit"}})", sdk, L"", 4, 1},
        {L"", L"-sdk=" + install.Root() + L"\\Missing.kvsdk", L"", 3, 0},  // an unsettled SDK starts no tool
        {L"", sdk, install.EditorExe(), 2, 0},  // the install checks come before the tool
    };
    const std::vector<Text> sdkInfo = {
        install.ToolPath(), L"sdk-info", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot()};
    for (const Row& row : rows) {
        SCOPED_TRACE(TextToUtf8(row.argument + L" " + row.deleteFirst));
        install.SetToolScenario(row.scenario);
        if (!row.deleteFirst.empty()) {
            ASSERT_TRUE(DeleteFileW(row.deleteFirst.c_str()));
        }
        const std::size_t callsBefore = install.ToolCalls().size();
        EXPECT_EQ(RunCheck(install, row.argument), row.exitCode);
        const std::vector<JsonValue> calls = install.ToolCalls();
        ASSERT_EQ(calls.size(), callsBefore + row.toolRuns);
        for (std::size_t index = callsBefore; index < calls.size(); ++index) {
            EXPECT_EQ(testing::Argv(calls[index]), sdkInfo);
            EXPECT_EQ(FindJsonMember(calls[index], L"cwd").text, install.EditorRoot());
        }
    }

    SampleInstall nonAscii(L"check-\x6821\x9A8C");
    EXPECT_EQ(RunCheck(nonAscii, L"-sdk=" + nonAscii.SdkPath()), 8u);
    EXPECT_TRUE(nonAscii.ToolCalls().empty());
}

TEST(LauncherCheck, AToolOverTheLimitIsKilled)
{
    SampleInstall install(L"check-hang");
    install.SetToolScenario(LR"({"sdk-info":{"hang":true}})");
    const ULONGLONG start = GetTickCount64();
    EXPECT_FALSE(RunLauncherCheck(install.EditorRoot(), install.SdkPath(), 500));
    EXPECT_GE(GetTickCount64() - start, 500u);
    const std::vector<JsonValue> calls = install.ToolCalls();
    ASSERT_EQ(calls.size(), 1u);
    const UniqueHandle tool(OpenProcess(SYNCHRONIZE, FALSE, testing::ProcessIdsOf(calls).at(0)));
    EXPECT_TRUE(!tool || WaitForSingleObject(tool.Get(), 5000) == WAIT_OBJECT_0) << "the tool was not killed";

    install.SetToolScenario(LR"({"sdk-info":{"sleepMs":200}})");
    EXPECT_TRUE(RunLauncherCheck(install.EditorRoot(), install.SdkPath(), 60000)) << "a slow tool within the limit passes";
}

}  // namespace
}  // namespace korvane
