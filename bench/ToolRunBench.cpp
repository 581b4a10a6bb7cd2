// The launcher's own cost around one tool run: RunTool of a stand-in tool that ends at once,
// against a bare CreateProcessW and wait of the very same program, alternating in one run.
// The difference should stay under one poll interval (100 ms) plus 20 ms.
#include "BenchTiming.h"
#include "TestSupport.h"

#include "foundation/Paths.h"
#include "foundation/Process.h"
#include "tool/ToolRun.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

using korvane::bench::Median;
using korvane::bench::NowMs;

using namespace korvane;

// What a plain launcher would do: start hidden, wait, read the exit code.
DWORD BareRun(const Text& tool, const Text& arguments, const Text& folder)
{
    const Text commandLine = QuoteCommandArgument(tool) + L" " + arguments;
    StartedProcess started;
    if (!StartProcess(
            {.application = tool, .commandLine = commandLine, .directory = folder, .creationFlags = CREATE_NO_WINDOW},
            started)) {
        return 0xFFFFFFFF;
    }
    WaitForSingleObject(started.Process(), INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(started.Process(), &exitCode);
    return exitCode;
}

}  // namespace

int wmain()
{
    // An install without a layout file keeps its tool below Plugins.
    testing::ScratchDirectory scratch(L"tool-bench");
    const Text root = scratch.Path();
    const Text tool = JoinPath(root, L"Plugins\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe");
    testing::MakeDirectories(ParentPath(tool));
    testing::CopyFileTo(testing::StandinPath(L"KorvaneTool.exe"), tool);
    const Text sdk = JoinPath(root, L"Bench.kvsdk");
    testing::WriteFileBytes(sdk, "not read");
    // The stand-in ends at once with code 5, before any work.
    const Text scenario = JoinPath(root, L"scenario.json");
    testing::WriteFileBytes(scenario, R"({"*":{"exitCode":5}})");
    SetEnvironmentVariableW(L"KORVANE_STANDIN_TOOL_SCENARIO", scenario.c_str());
    SetEnvironmentVariableW(L"KORVANE_STANDIN_TOOL_LOG", JoinPath(root, L"calls.jsonl").c_str());

    const Text arguments = L"sdk-info --sdk " + QuoteCommandArgument(sdk) + L" --editor-root " + QuoteCommandArgument(root);
    ToolInvocation invocation;
    invocation.editorRoot = root;
    invocation.arguments = arguments;

    // One warm-up of each, so that neither side pays for the first load of the image.
    RunTool(invocation);
    BareRun(tool, arguments, root);

    constexpr int kRounds = 15;
    std::vector<double> toolTimes;
    std::vector<double> bareTimes;
    for (int round = 0; round < kRounds; ++round) {
        double start = NowMs();
        const ToolResult result = RunTool(invocation);
        toolTimes.push_back(NowMs() - start);
        if (result.exitCode != 5) {
            std::printf("RunTool gave exit code %u, expected 5\n", result.exitCode);
            return 1;
        }
        start = NowMs();
        const DWORD bareCode = BareRun(tool, arguments, root);
        bareTimes.push_back(NowMs() - start);
        if (bareCode != 5) {
            std::printf("bare run gave exit code %lu, expected 5\n", bareCode);
            return 1;
        }
    }
    const double toolMedian = Median(toolTimes);
    const double bareMedian = Median(bareTimes);
    const double difference = toolMedian - bareMedian;
    std::printf("RunTool median      %8.1f ms over %d runs\n", toolMedian, kRounds);
    std::printf("bare start+wait     %8.1f ms over %d runs\n", bareMedian, kRounds);
    std::printf("difference          %8.1f ms (target < 120 ms: one 100 ms poll + 20 ms)\n", difference);
    std::printf("ratio               %8.2f\n", toolMedian / bareMedian);
    std::printf("%s\n", difference < 120.0 ? "PASS" : "FAIL");
    return difference < 120.0 ? 0 : 1;
}
