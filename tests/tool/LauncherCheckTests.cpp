// -KorvaneLauncherCheck with the real launcher in sample installs: its exit codes, the one
// `sdk-info` run it makes, and that it shows nothing on any path.
#include "MessageBoxes.h"
#include "SampleInstall.h"
#include "ToolProcess.h"

#include "foundation/Paths.h"
#include "launch/LaunchContext.h"
#include "tool/LauncherCheck.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using testing::SampleInstall;

// Runs the check and gives its exit code, failing the test when the launcher shows a box.
DWORD RunCheck(const SampleInstall& install, const std::vector<Text>& arguments)
{
    testing::ProcessOptions options;
    options.currentDirectory = install.EditorRoot();
    testing::ChildProcess launcher = testing::ChildProcess::Start(install.Launcher(), arguments, options);
    const auto box = testing::WaitForMessageBox(launcher.Id(), launcher.Handle(), 120000);
    EXPECT_FALSE(box.has_value()) << "the check showed a box: " << TextToUtf8(box ? box->text : Text());
    if (box) {
        testing::PressMessageBoxButton(box->window, IDOK);
    }
    EXPECT_TRUE(launcher.Wait(120000));
    return launcher.ExitCode();
}

std::vector<Text> Argv(const JsonValue& call)
{
    std::vector<Text> words;
    for (const JsonValue& word : FindJsonMember(call, L"argv").items) {
        words.push_back(word.text);
    }
    return words;
}

TEST(LauncherCheck, ExitCodesOfTheWholeCheck)
{
    SampleInstall install(L"check");
    EXPECT_EQ(RunCheck(install, {L"-KorvaneLauncherCheck", L"-sdk=" + install.SdkPath()}), 0u);
    std::vector<JsonValue> calls = install.ToolCalls();
    ASSERT_EQ(calls.size(), 1u);
    const std::vector<Text> sdkInfo = {
        install.ToolPath(), L"sdk-info", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot()};
    EXPECT_EQ(Argv(calls[0]), sdkInfo);
    EXPECT_EQ(FindJsonMember(calls[0], L"cwd").text, install.EditorRoot());

    install.SetToolScenario(LR"({"sdk-info":{"exitCode":0,"stdout":"whatever it prints"}})");
    EXPECT_EQ(RunCheck(install, {L"-KorvaneLauncherCheck", L"-KorvaneGameDir=" + install.GameDirectory()}), 0u);

    install.SetToolScenario(LR"({"sdk-info":{"exitCode":17,"stderr":"this SDK does not suit"}})");
    EXPECT_EQ(RunCheck(install, {L"-KorvaneLauncherCheck", L"-sdk=" + install.SdkPath()}), 4u);

    install.SetToolScenario(L"");
    const std::size_t callsSoFar = install.ToolCalls().size();
    EXPECT_EQ(RunCheck(install, {L"-KorvaneLauncherCheck", L"-sdk=" + install.Root() + L"\\Missing.kvsdk"}), 3u);
    EXPECT_EQ(install.ToolCalls().size(), callsSoFar) << "an SDK that cannot be settled starts no tool";

    ASSERT_TRUE(DeleteFileW(install.ToolPath().c_str()));
    EXPECT_EQ(RunCheck(install, {L"-KorvaneLauncherCheck", L"-sdk=" + install.SdkPath()}), 4u)
        << "a missing tool fails the check, not the install checks";

    ASSERT_TRUE(DeleteFileW(install.EditorExe().c_str()));
    EXPECT_EQ(RunCheck(install, {L"-KorvaneLauncherCheck", L"-sdk=" + install.SdkPath()}), 2u);
}

TEST(LauncherCheck, NonAsciiInstallPathGivesEight)
{
    SampleInstall install(L"check-\x6821\x9A8C");
    EXPECT_EQ(RunCheck(install, {L"-KorvaneLauncherCheck", L"-sdk=" + install.SdkPath()}), 8u);
    EXPECT_TRUE(install.ToolCalls().empty());
}

TEST(LauncherCheck, AToolOverTheLimitIsKilled)
{
    SampleInstall install(L"check-hang");
    install.SetToolScenario(LR"({"sdk-info":{"hang":true}})");
    LaunchContext context;
    context.editorRoot = install.EditorRoot();
    const ULONGLONG start = GetTickCount64();
    EXPECT_FALSE(RunLauncherCheck(context, install.SdkPath(), 500));
    EXPECT_GE(GetTickCount64() - start, 500u);
    const std::vector<JsonValue> calls = install.ToolCalls();
    ASSERT_EQ(calls.size(), 1u);
    const DWORD pid = static_cast<DWORD>(std::stoul(FindJsonMember(calls[0], L"pid").text));
    EXPECT_TRUE(testing::WaitUntilGone({pid}, 5000)) << "the tool was not killed";

    install.SetToolScenario(LR"({"sdk-info":{"sleepMs":200}})");
    EXPECT_TRUE(RunLauncherCheck(context, install.SdkPath(), 60000)) << "a slow tool within the limit passes";
}

}  // namespace
}  // namespace korvane
