// Times -KorvaneResolveHostContext as a whole process against a program that does nothing,
// both started the same way from the same folder, and prints the ratio of their medians.
#include "BenchTiming.h"
#include "ShippedLauncher.h"
#include "TestSupport.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "foundation/Text.h"
#include "host/LaunchSelection.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

namespace {

using korvane::bench::Median;
using korvane::bench::NowMs;

using namespace korvane;

constexpr int kWarmUpRuns = 3;
constexpr int kTimedRuns = 25;

// One start to exit of the program; the exit code is checked so a broken run is never timed.
double TimeRun(TextView executable, const std::vector<Text>& arguments, TextView folder, DWORD expectedExit)
{
    testing::ProcessOptions options;
    options.currentDirectory = Text(folder);
    const double start = NowMs();
    const testing::ProcessResult result = testing::RunProcess(executable, arguments, options);
    const double elapsed = NowMs() - start;
    if (result.timedOut || result.exitCode != expectedExit) {
        std::fprintf(stderr, "unexpected exit code %lu\n", static_cast<unsigned long>(result.exitCode));
        std::exit(1);
    }
    return elapsed;
}

void Write(TextView path, BytesView bytes)
{
    std::filesystem::create_directories(std::filesystem::path(ParentPath(path)));
    WriteWholeFile(path, bytes);
}

// A shipped game with its SDK, a few folders of the kind a game has, and the install inside.
struct SampleInstall {
    SampleInstall() : scratch(L"bench-host-context"), game(scratch / L"Title"), root(JoinPath(game, L"KorvaneEditor"))
    {
        Write(JoinPath(game, L"Title.exe"), "MZ");
        Write(JoinPath(game, L"Title.kvsdk"), "sdk");
        for (const wchar_t* folder : {L"Engine", L"Title\\Content\\Paks", L"Title\\Binaries\\Win64", L"Mods"}) {
            Write(JoinPath(JoinPath(game, folder), L"placeholder.bin"), "x");
        }
        std::filesystem::create_directories(std::filesystem::path(root));
        CopyFileW(bench::ShippedLauncherPath().c_str(), JoinPath(root, L"KorvaneEditor.exe").c_str(), FALSE);
        CopyFileW(JoinPath(testing::BinaryDirectory(), L"bare_program.exe").c_str(),
            JoinPath(root, L"bare_program.exe").c_str(), FALSE);
        Write(JoinPath(root, L"Engine\\Binaries\\Win64\\UnrealEditor.exe"), "MZ");
        report = scratch / L"report.json";
    }
    ~SampleInstall()
    {
        const Text selection = LaunchSelectionPath(root);
        std::error_code error;
        std::filesystem::remove_all(std::filesystem::path(ParentPath(selection)), error);
    }

    testing::ScratchDirectory scratch;
    Text game;
    Text root;
    Text report;
};

struct Timings {
    std::vector<double> bare;
    std::vector<double> hostSkipped;
    std::vector<double> firstRun;
    std::vector<double> laterRun;
};

std::vector<Text> ReportArguments(const SampleInstall& sample)
{
    return {L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + sample.report};
}

// One round of every kind of run, one after the other, so that drift in the machine's load
// falls on all of them alike.
void RunRound(const SampleInstall& first, const SampleInstall& later, Timings* timings)
{
    const Text firstLauncher = JoinPath(first.root, L"KorvaneEditor.exe");
    const Text laterLauncher = JoinPath(later.root, L"KorvaneEditor.exe");
    std::vector<Text> skipped = ReportArguments(first);
    skipped.push_back(L"-KorvaneEmptyHost");

    const double bare = TimeRun(JoinPath(first.root, L"bare_program.exe"), {}, first.root, 0);
    const double hostSkipped = TimeRun(firstLauncher, skipped, first.root, 0);
    const double firstRun = TimeRun(firstLauncher, ReportArguments(first), first.root, 0);
    const double laterRun = TimeRun(laterLauncher, ReportArguments(later), later.root, 0);
    if (timings != nullptr) {
        timings->bare.push_back(bare);
        timings->hostSkipped.push_back(hostSkipped);
        timings->firstRun.push_back(firstRun);
        timings->laterRun.push_back(laterRun);
    }
}

void Print(const char* label, double launcherMs, double bareMs)
{
    std::printf("%-46s %7.1f ms  ratio %.2f\n", label, launcherMs, launcherMs / bareMs);
}

}  // namespace

int wmain()
{
    // First start of an install inside a game: no selection stored, the game's SDK is found.
    SampleInstall first;
    // A later start: the selection saved by an earlier run is read and judged.
    SampleInstall later;
    Write(LaunchSelectionPath(later.root),
        TextToUtf8(L"{\"schemaVersion\":1,\"editorRoot\":" + QuoteJsonText(later.root) +
            L",\"environment\":\"packaged\",\"gameDirectory\":" + QuoteJsonText(later.game) + L",\"sdkFile\":" +
            QuoteJsonText(JoinPath(later.game, L"Title.kvsdk")) + L"}"));

    for (int round = 0; round < kWarmUpRuns; ++round) {
        RunRound(first, later, nullptr);
    }
    Timings timings;
    for (int round = 0; round < kTimedRuns; ++round) {
        RunRound(first, later, &timings);
    }
    const double bare = Median(timings.bare);
    std::printf("-KorvaneResolveHostContext as a whole process, medians of %d runs (target ratio < 1.5)\n",
        kTimedRuns);
    std::printf("%-46s %7.1f ms\n", "bare_program.exe", bare);
    Print("launcher, host steps skipped (-KorvaneEmptyHost)", Median(timings.hostSkipped), bare);
    Print("launcher, in a game, no stored selection", Median(timings.firstRun), bare);
    Print("launcher, in a game, valid stored selection", Median(timings.laterRun), bare);
    std::printf("first report: %s\nlater report: %s\n", testing::ReadFileBytes(first.report).c_str(),
        testing::ReadFileBytes(later.report).c_str());
    return 0;
}
