// A whole Direct edit launch on a sample install whose stand-ins answer at once: the wall time
// of the launcher, less the run times of the tool and editor runs it made (each run again alone,
// with the very command line it was given), is the launcher's own share. Then, with an editor
// that stays up, the launcher's CPU and private memory while it waits for the editor.
#include "BenchTiming.h"
#include "ShippedLauncher.h"
#include "SampleInstall.h"
#include "TestSupport.h"

#include "foundation/Json.h"
#include "foundation/Paths.h"
#include "foundation/Process.h"
#include "foundation/Text.h"

#include <windows.h>
#include <psapi.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

using korvane::bench::Median;
using korvane::bench::NowMs;

using namespace korvane;

constexpr int kRounds = 9;
// Polls the launcher must make: one 100 ms poll per tool run and the editor watch's 100 ms.
constexpr double kPollAllowanceMs = 3 * 100.0;

// Runs a command line as it was recorded, from its folder, and gives its wall time.
double TimeCommandLine(const Text& commandLine, const Text& folder)
{
    StartedProcess started;
    const double begin = NowMs();
    if (!StartProcess({.commandLine = commandLine, .directory = folder, .creationFlags = CREATE_NO_WINDOW}, started)) {
        std::fprintf(stderr, "cannot start %ls\n", commandLine.c_str());
        std::exit(1);
    }
    WaitForSingleObject(started.Process(), INFINITE);
    return NowMs() - begin;
}

Text ToolCommandLine(const JsonValue& call)
{
    std::vector<Text> arguments;
    const auto& argv = FindJsonMember(call, L"argv").items;
    for (size_t index = 1; index < argv.size(); ++index) {
        arguments.push_back(argv[index].text);
    }
    return testing::BuildCommandLine(argv.at(0).text, arguments);
}

std::vector<Text> DirectEdit(const testing::SampleInstall& install)
{
    return {L"-sdk=" + install.SdkPath(), L"-KorvaneSelectedMod=" + install.ModId(0)};
}

void MeasureLaunchShare()
{
    testing::SampleInstall install(L"bench-direct-edit");
    bench::UseShippedLauncher(install.Launcher());
    install.SetToolScenario(LR"({"*":{}})");
    install.SetEditorScenario(LR"({"mode":"normal","runMs":200,"splashMs":0,"logPaceMs":0,"shaderLines":0})");
    testing::ProcessOptions options;
    options.currentDirectory = install.EditorRoot();
    testing::RunProcess(install.Launcher(), DirectEdit(install), options);  // warm-up

    std::vector<double> totals;
    std::vector<double> children;
    std::vector<double> shares;
    for (int round = 0; round < kRounds; ++round) {
        const size_t toolsBefore = install.ToolCalls().size();
        const size_t editorsBefore = install.EditorRecords().size();
        const double begin = NowMs();
        const testing::ProcessResult result = testing::RunProcess(install.Launcher(), DirectEdit(install), options);
        const double total = NowMs() - begin;
        if (result.exitCode != 0) {
            std::fprintf(stderr, "launch failed with %lu\n", static_cast<unsigned long>(result.exitCode));
            std::exit(1);
        }
        const auto tools = install.ToolCalls();
        const auto editors = install.EditorRecords();
        double own = 0;
        for (size_t index = toolsBefore; index < tools.size(); ++index) {
            own += TimeCommandLine(ToolCommandLine(tools[index]), FindJsonMember(tools[index], L"cwd").text);
        }
        for (size_t index = editorsBefore; index < editors.size(); ++index) {
            own += TimeCommandLine(FindJsonMember(editors[index], L"commandLine").text,
                FindJsonMember(editors[index], L"cwd").text);
        }
        totals.push_back(total);
        children.push_back(own);
        shares.push_back(total - own);
    }
    // Process start times under load scatter by tens of milliseconds; both medians are shown.
    const double share = std::max(Median(shares), Median(totals) - Median(children));
    std::printf("Direct edit, %d rounds (medians): launcher wall %.0f ms, tool and editor runs alone %.0f ms\n",
        kRounds, Median(totals), Median(children));
    std::printf("  launcher's own share %.0f ms; beyond the %.0f ms of required polls: %.0f ms (target < 300 ms)\n",
        share, kPollAllowanceMs, share - kPollAllowanceMs);
}

std::uint64_t CpuTime100ns(HANDLE process)
{
    FILETIME creation{}, exit{}, kernel{}, user{};
    GetProcessTimes(process, &creation, &exit, &kernel, &user);
    auto value = [](const FILETIME& time) {
        return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    };
    return value(kernel) + value(user);
}

void MeasureWhileWaiting()
{
    testing::SampleInstall install(L"bench-direct-edit-wait");
    bench::UseShippedLauncher(install.Launcher());
    install.SetToolScenario(LR"({"*":{}})");
    install.SetEditorScenario(LR"({"mode":"normal","runMs":8000,"splashMs":0,"logPaceMs":0,"shaderLines":0})");
    testing::ProcessOptions options;
    options.currentDirectory = install.EditorRoot();
    testing::ChildProcess launcher = testing::ChildProcess::Start(install.Launcher(), DirectEdit(install), options);
    // The editor records itself at its start; its window follows within a second.
    while (install.EditorRecords().empty() && WaitForSingleObject(launcher.Handle(), 50) == WAIT_TIMEOUT) {
    }
    WaitForSingleObject(launcher.Handle(), 2000);
    const std::uint64_t cpuBefore = CpuTime100ns(launcher.Handle());
    const double begin = NowMs();
    WaitForSingleObject(launcher.Handle(), 4000);
    const double waited = NowMs() - begin;
    const std::uint64_t cpuAfter = CpuTime100ns(launcher.Handle());
    PROCESS_MEMORY_COUNTERS_EX memory{};
    memory.cb = sizeof(memory);
    const BOOL haveMemory =
        GetProcessMemoryInfo(launcher.Handle(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory), sizeof(memory));
    launcher.Wait(60000);
    std::printf("Waiting for the editor: CPU %.1f ms over %.0f ms (target 0)\n",
        static_cast<double>(cpuAfter - cpuBefore) / 10000.0, waited);
    // Wine leaves PrivateUsage at 0; the page-file share is the same committed private memory.
    const double privateMb = static_cast<double>(std::max(memory.PrivateUsage, memory.PagefileUsage)) / 1048576.0;
    std::printf("  private memory %.1f MB, working set %.1f MB (target < 20 MB private)%s\n", privateMb,
        static_cast<double>(memory.WorkingSetSize) / 1048576.0, haveMemory ? "" : " [memory query failed]");
}

}  // namespace

int wmain()
{
    MeasureLaunchShare();
    MeasureWhileWaiting();
    return 0;
}
