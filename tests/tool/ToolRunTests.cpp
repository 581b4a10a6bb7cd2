// RunTool against the stand-in tool: what comes back for each way a run can end, that the
// tool and everything it started are gone afterwards, and that no temporary file is left; and
// -KorvaneLauncherCheck with the real launcher: its exit codes, the one `sdk-info` run it makes,
// and that it shows nothing on any path.
#include "MessageBoxes.h"
#include "SampleInstall.h"
#include "ToolCalls.h"

#include "context/UiLanguage.h"
#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"
#include "tool/LauncherCheck.h"
#include "tool/ToolCommand.h"
#include "tool/ToolMessages.h"
#include "tool/ToolRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace korvane {
namespace {

using testing::SampleInstall;

ToolInvocation Invocation(const SampleInstall& install, TextView arguments)
{
    ToolInvocation invocation;
    invocation.editorRoot = install.EditorRoot();
    invocation.arguments = arguments;
    return invocation;
}

enum class Stop { None, CancelFirst, CancelWhileRunning, TimeLimit };

TEST(RunTool, EveryWayARunEndsAndTheArgumentsItPasses)
{
    struct Row { Text scenario; Stop stop; std::uint32_t exitCode; const char* output /* nullptr: any */; Text error; };
    const Text flood = L"{\"*\":{\"exitCode\":2,\"stdout\":\"\",\"stderr\":\"" + Text(10000, L'x') + L"\"}}";
    const Row rows[] = {
        {LR"({"*":{"exitCode":3,"stdout":"only on stdout"}})", Stop::None, 3, "only on stdout", L"only on stdout"},
        {LR"({"*":{"exitCode":3,"stdout":"out","stderr":"\u00e9 on stderr"}})", Stop::None, 3, "out", L"\x00E9 on stderr"},
        {LR"({"*":{"exitCode":3,"stdout":"","stderr":""}})", Stop::None, 3, "", L"KorvaneTool failed (exit code 3)."},
        {LR"({"*":{"exitCode":3221225477,"stdout":"","stderr":""}})", Stop::None, 3221225477u, "",
            L"KorvaneTool failed (exit code 3221225477)."},
        {LR"({"*":{"exitCode":4,"stdout":"fallback","stderr":"broken","invalidUtf8":"stderr"}})", Stop::None, 4, nullptr,
            L"fallback"},
        {LR"({"*":{"exitCode":4,"stdout":"broken","stderr":"","invalidUtf8":"stdout"}})", Stop::None, 4, nullptr,
            L"KorvaneTool failed (exit code 4)."},
        {flood, Stop::None, 2, nullptr, Text(8192, L'x')},
        {LR"({"*":{"exitCode":0,"stdout":"{}","stdoutMiB":9}})", Stop::None, 0, "", L""},  // over 8 MiB: empty
        {LR"({"*":{"exitCode":6,"stdout":"words","stderrMiB":9}})", Stop::None, 6, nullptr, L"words"},
        // A normal end takes a grandchild along, which held the output files; warnings are no error.
        {LR"({"*":{"exitCode":0,"stdout":"{\"ok\":true}","stderr":"warning","grandchild":true}})", Stop::None, 0,
            "{\"ok\":true}", L""},
        {LR"({"*":{"hang":true,"grandchild":true}})", Stop::TimeLimit, 1223, "",
            L"Preparation timed out. Retry or check the tool log."},
        {LR"({"*":{"hang":true,"grandchild":true}})", Stop::CancelWhileRunning, 1223, "", L"Operation cancelled."},
        {L"{}", Stop::CancelFirst, 1223, "", L"Operation cancelled."},
    };
    SampleInstall install(L"run");
    const Text sdkInfo = L"sdk-info --sdk " + QuoteCommandArgument(install.SdkPath()) + L" --editor-root "
        + QuoteCommandArgument(install.EditorRoot());
    const auto tempBefore = testing::LauncherTempFiles();
    for (const Row& row : rows) {
        SCOPED_TRACE(TextToUtf8(row.scenario.substr(0, 100)) + " stop " + std::to_string(static_cast<int>(row.stop)));
        install.SetToolScenario(row.scenario);
        const std::size_t callsBefore = install.ToolCalls().size();
        std::atomic<bool> cancel{row.stop == Stop::CancelFirst};
        ToolInvocation invocation = Invocation(install, sdkInfo);
        invocation.cancelFlag = &cancel;
        // Cancels once the tool has logged that it runs; RunTool must notice within its poll.
        std::thread canceller([&] {
            while (row.stop == Stop::CancelWhileRunning && !cancel) {
                if (install.ToolCalls().size() > callsBefore) {
                    cancel = true;
                }
                Sleep(10);
            }
        });
        const ULONGLONG start = GetTickCount64();
        const ToolResult result = RunTool(invocation, row.stop == Stop::TimeLimit ? 400 : kToolTimeLimitMs);
        cancel = true;  // ends the canceller whatever happened
        canceller.join();
        if (row.stop == Stop::TimeLimit) {
            EXPECT_GE(GetTickCount64() - start, 400u);
        }
        EXPECT_EQ(result.exitCode, row.exitCode);
        EXPECT_EQ(result.error, row.error);
        if (row.output) {
            EXPECT_EQ(result.output, row.output);
        }
        std::vector<JsonValue> calls = install.ToolCalls();
        calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(callsBefore));
        ASSERT_EQ(calls.size(), row.stop == Stop::CancelFirst ? 0u : 1u);
        for (const JsonValue& call : calls) {
            EXPECT_EQ(FindJsonMember(call, L"cwd").text, install.EditorRoot()) << "the child runs in the install";
        }
        const bool grandchild = row.scenario.find(L"grandchild") != Text::npos;
        EXPECT_EQ(testing::ProcessIdsOf(calls).size(), calls.size() * (grandchild ? 2 : 1));
        testing::ExpectNoToolRunning(calls);
        EXPECT_EQ(testing::LauncherTempFiles(), tempBefore);
    }

    // The SDK arguments, byte for byte, and as the child splits them back.
    EXPECT_EQ(BuildSdkArguments(L"C:\\Sdk\\Game.kvsdk", L""), L" --sdk \"C:\\Sdk\\Game.kvsdk\"");
    EXPECT_EQ(BuildSdkArguments(L"C:\\A.kvsdk", L"C:\\Games\\Title\\"),
        L" --sdk \"C:\\A.kvsdk\" --game-root \"C:\\Games\\Title\\\\\"");
    const Text sdk = install.Root() + L"\\SDK \"quoted\" \x6E38\x620F\\Game.kvsdk";
    const Text game = install.Root() + L"\\Game Folder\\";
    install.SetToolScenario(LR"({"*":{"exitCode":9}})");
    RunTool(Invocation(install, L"sdk-preview" + BuildSdkArguments(sdk, game)));
    const std::vector<Text> expected = {install.ToolPath(), L"sdk-preview", L"--sdk", sdk, L"--game-root", game};
    EXPECT_EQ(testing::Argv(install.ToolCalls().back()), expected);
}

TEST(RunTool, MissingToolIsKV4210AfterTheCancelCheck)
{
    testing::ScratchDirectory empty(L"run-missing");
    ToolInvocation invocation;
    invocation.editorRoot = empty.Path();
    invocation.arguments = L"sdk-info";
    ToolResult result = RunTool(invocation);
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_EQ(result.error, kToolMissingMessage.In(false));

    // A folder where the tool should be is no tool either.
    testing::MakeDirectories(empty / L"Plugins\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe");
    {
        const testing::ScopedUiLanguage chinese(L"zh-Hans");
        result = RunTool(invocation);
    }
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_EQ(result.error, kToolMissingMessage.In(true)) << "in the language of the moment";

    std::atomic<bool> cancel{true};
    invocation.cancelFlag = &cancel;
    result = RunTool(invocation);
    EXPECT_EQ(result.exitCode, 1223u);
    EXPECT_EQ(result.error, L"Operation cancelled.") << "the cancel is looked at before the tool";
}

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
