// RunTool against the stand-in tool: what comes back for each way a run can end, that the
// child and everything it started are gone afterwards, and that no temporary file is left.
#include "ToolProcess.h"

#include "foundation/Paths.h"
#include "launch/UiLanguage.h"
#include "tool/ToolRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace korvane {
namespace {

using testing::ToolInstall;

ToolInvocation Invocation(const ToolInstall& install, TextView arguments)
{
    ToolInvocation invocation;
    invocation.editorRoot = install.Root();
    invocation.arguments = arguments;
    return invocation;
}

// A command the stand-in accepts; the scenario decides how its run ends.
Text SdkInfo(const ToolInstall& install)
{
    return L"sdk-info --sdk " + QuoteCommandArgument(install.Path(L"Game.kvsdk")) + L" --editor-root "
        + QuoteCommandArgument(install.Root());
}

// Tool processes that were not there before: the snapshot is taken around one run, so that
// tools of other programs running at the same time are not counted.
std::vector<DWORD> NewToolProcesses(const std::vector<DWORD>& before)
{
    std::vector<DWORD> added;
    for (const DWORD id : testing::ProcessesNamed(L"KorvaneTool.exe")) {
        if (std::find(before.begin(), before.end(), id) == before.end()) {
            added.push_back(id);
        }
    }
    return added;
}

std::vector<DWORD> PidsOf(const std::vector<testing::ToolCallSeen>& calls)
{
    std::vector<DWORD> pids;
    for (const auto& call : calls) {
        pids.push_back(call.pid);
        if (call.grandchildPid != 0) {
            pids.push_back(call.grandchildPid);
        }
    }
    return pids;
}

TEST(RunTool, CancelBeforeTheStartStartsNothing)
{
    ToolInstall install(L"run-cancel-first");
    std::atomic<bool> cancel{true};
    ToolInvocation invocation = Invocation(install, SdkInfo(install));
    invocation.cancelFlag = &cancel;
    ToolResult result = RunTool(invocation);
    EXPECT_EQ(result.exitCode, 1223u);
    EXPECT_EQ(result.error, L"Operation cancelled.");
    EXPECT_TRUE(install.Calls().empty());

    invocation.editorRoot = install.Path(L"nowhere");
    result = RunTool(invocation);
    EXPECT_EQ(result.exitCode, 1223u) << "the cancel is looked at before the tool";
    EXPECT_EQ(result.error, L"Operation cancelled.");
}

TEST(RunTool, MissingToolIsKV4210)
{
    ToolInstall install(L"run-missing");
    ToolInvocation invocation = Invocation(install, SdkInfo(install));
    invocation.editorRoot = install.Path(L"empty-install");
    testing::MakeDirectories(invocation.editorRoot);
    ToolResult result = RunTool(invocation);
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_EQ(result.error, L"KV4210: KorvaneTool.exe is missing. Repair the Mod Editor installation.");

    // A folder where the tool should be is no tool either.
    testing::MakeDirectories(JoinPath(invocation.editorRoot, L"Plugins\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe"));
    SetUiLanguage(L"zh-Hans");
    result = RunTool(invocation);
    SetUiLanguage(L"en");
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_EQ(result.error, L"KV4210: 缺少 KorvaneTool.exe。请修复完整 Mod 编辑器安装。");
}

TEST(RunTool, FailedRunsReportTheToolsOwnWords)
{
    ToolInstall install(L"run-failures");
    const ToolInvocation invocation = Invocation(install, SdkInfo(install));

    install.SetScenario(R"({"*":{"exitCode":3,"stdout":"only on stdout"}})");
    ToolResult result = RunTool(invocation);
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_EQ(result.error, L"only on stdout");
    EXPECT_EQ(result.output, "only on stdout");

    install.SetScenario(R"({"*":{"exitCode":3,"stdout":"on stdout","stderr":"\u00e9 on stderr"}})");
    result = RunTool(invocation);
    EXPECT_EQ(result.error, L"\x00E9 on stderr");

    install.SetScenario(R"({"*":{"exitCode":3,"stdout":"","stderr":""}})");
    result = RunTool(invocation);
    EXPECT_EQ(result.error, L"KorvaneTool failed (exit code 3).");

    install.SetScenario(R"({"*":{"exitCode":3221225477,"stdout":"","stderr":""}})");
    result = RunTool(invocation);
    EXPECT_EQ(result.exitCode, 3221225477u);
    EXPECT_EQ(result.error, L"KorvaneTool failed (exit code 3221225477).");

    install.SetScenario(R"({"*":{"exitCode":4,"stdout":"fallback","stderr":"broken","invalidUtf8":"stderr"}})");
    result = RunTool(invocation);
    EXPECT_EQ(result.error, L"fallback") << "standard error that is not UTF-8 is no text";

    install.SetScenario(R"({"*":{"exitCode":2,"stdout":"","stderr":")" + Bytes(10000, 'x') + R"("}})");
    result = RunTool(invocation);
    EXPECT_EQ(result.error, Text(8192, L'x'));

    EXPECT_EQ(install.Calls().size(), 6u);
    for (const auto& call : install.Calls()) {
        EXPECT_EQ(call.cwd, install.Root()) << "the child runs in the install";
    }
}

TEST(RunTool, OversizedOutputArrivesEmpty)
{
    ToolInstall install(L"run-flood");
    const auto before = testing::LauncherTempFiles();
    install.SetScenario(R"({"*":{"exitCode":0,"stdout":"{}","stdoutMiB":9}})");
    ToolResult result = RunTool(Invocation(install, SdkInfo(install)));
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error, L"");

    install.SetScenario(R"({"*":{"exitCode":6,"stdout":"words","stderrMiB":9}})");
    result = RunTool(Invocation(install, SdkInfo(install)));
    EXPECT_EQ(result.error, L"words") << "an oversized standard error counts as none";
    EXPECT_EQ(testing::LauncherTempFiles(), before);
}

TEST(RunTool, ArgumentsReachTheChildIntact)
{
    ToolInstall install(L"run-arguments");
    const Text sdk = install.Path(L"SDK \"quoted\" \x6E38\x620F\\Game.kvsdk");
    const Text game = install.Path(L"Game Folder\\");
    install.SetScenario(R"({"*":{"exitCode":9}})");
    RunTool(Invocation(install, L"sdk-preview" + BuildSdkArguments(sdk, game)));
    const auto calls = install.Calls();
    ASSERT_EQ(calls.size(), 1u);
    const std::vector<Text> expected = {install.ToolPath(), L"sdk-preview", L"--sdk", sdk, L"--game-root", game};
    EXPECT_EQ(calls[0].argv, expected);
}

TEST(RunTool, TimeOutKillsTheToolAndItsGrandchild)
{
    ToolInstall install(L"run-timeout");
    const auto before = testing::LauncherTempFiles();
    const auto toolsBefore = testing::ProcessesNamed(L"KorvaneTool.exe");
    install.SetScenario(R"({"*":{"hang":true,"grandchild":true}})");
    const ULONGLONG start = GetTickCount64();
    const ToolResult result = RunTool(Invocation(install, SdkInfo(install)), 400);
    EXPECT_GE(GetTickCount64() - start, 400u);
    EXPECT_EQ(result.exitCode, 1223u);
    EXPECT_EQ(result.error, L"Preparation timed out. Retry or check the tool log.");
    const auto calls = install.Calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_NE(calls[0].grandchildPid, 0u) << "the grandchild was started";
    EXPECT_FALSE(testing::AnyAlive(PidsOf(calls))) << "tool or grandchild outlived the run";
    EXPECT_TRUE(NewToolProcesses(toolsBefore).empty());
    EXPECT_EQ(testing::LauncherTempFiles(), before);
}

TEST(RunTool, CancelDuringTheRunKillsEverything)
{
    ToolInstall install(L"run-cancel");
    const auto before = testing::LauncherTempFiles();
    const auto toolsBefore = testing::ProcessesNamed(L"KorvaneTool.exe");
    install.SetScenario(R"({"*":{"hang":true,"grandchild":true}})");
    std::atomic<bool> cancel{false};
    ToolInvocation invocation = Invocation(install, SdkInfo(install));
    invocation.cancelFlag = &cancel;

    // Cancel once the tool has said it runs; RunTool must notice within its poll.
    std::thread canceller([&] {
        const ULONGLONG deadline = GetTickCount64() + 60000;
        while (install.Calls().empty() && GetTickCount64() < deadline) {
            Sleep(10);
        }
        cancel = true;
    });
    const ToolResult result = RunTool(invocation);
    canceller.join();
    EXPECT_EQ(result.exitCode, 1223u);
    EXPECT_EQ(result.error, L"Operation cancelled.");
    EXPECT_FALSE(testing::AnyAlive(PidsOf(install.Calls())));
    EXPECT_TRUE(NewToolProcesses(toolsBefore).empty());
    EXPECT_EQ(testing::LauncherTempFiles(), before);
}

TEST(RunTool, NormalEndTakesALeftoverGrandchildAlong)
{
    ToolInstall install(L"run-grandchild");
    const auto before = testing::LauncherTempFiles();
    const auto toolsBefore = testing::ProcessesNamed(L"KorvaneTool.exe");
    install.SetScenario(R"({"*":{"exitCode":0,"stdout":"{\"ok\":true}","grandchild":true}})");
    const ToolResult result = RunTool(Invocation(install, SdkInfo(install)));
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, "{\"ok\":true}");
    EXPECT_FALSE(testing::AnyAlive(PidsOf(install.Calls())));
    EXPECT_TRUE(NewToolProcesses(toolsBefore).empty());
    EXPECT_EQ(testing::LauncherTempFiles(), before) << "the grandchild held the output files";
}

}  // namespace
}  // namespace korvane
