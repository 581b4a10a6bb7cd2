// The picker preview with the sample catalogue, shown for 250 ms, as a whole process and to its
// first paint, against a bare 1024 x 640 window program shown for 250 ms, in the same run; then
// the picker's private memory at idle with that catalogue on screen, beside the bare window's.
// Targets: both ratios under 1.5. The same window with the picker's seventeen controls and
// nothing else (controls_window.exe) is timed alongside: the first paint no picker of that
// make-up can beat, which parts the controls' own cost from the picker's code.
#include "BenchTiming.h"
#include "ShippedLauncher.h"
#include "TestSupport.h"
#include "common/SampleLayout.h"

#include "foundation/Json.h"
#include "foundation/Paths.h"
#include "foundation/Process.h"
#include "tool/ToolCommand.h"
#include "tool/ToolRun.h"

#include <psapi.h>

#include <cstdio>
#include <cwchar>
#include <vector>

using namespace korvane;
using korvane::bench::Median;
using korvane::bench::NowMs;

namespace {

constexpr int kRounds = 7;

struct Run {
    double wholeMs = 0;
    double firstPaintMs = 0;
};

// The demo's sample install: the whole catalogue, covers of 320 x 180.
bool LayOut(const Text& root, standins::SampleInstallPaths& paths)
{
    standins::SampleInstallOptions options;
    options.root = root;
    options.launcherSource = bench::ShippedLauncherPath();
    options.toolSource = testing::StandinPath(L"KorvaneTool.exe");
    options.editorSource = testing::StandinPath(L"UnrealEditor.exe");
    options.modCount = standins::SampleModCount();
    options.coverWidth = 320;
    options.coverHeight = 180;
    Text error;
    return standins::LayOutSampleInstall(options, paths, error);
}

// The stand-in tool's preview of the sample SDK, as the picker would have read it.
bool WriteFixture(const standins::SampleInstallPaths& install, const Text& fixture)
{
    ToolInvocation invocation;
    invocation.editorRoot = install.editorRoot;
    invocation.arguments =
        BuildToolCommand(ToolCommandKind::SdkPreview, {.sdk = install.sdkPath, .gameRoot = install.gameDirectory});
    const ToolResult result = RunTool(invocation);
    if (result.exitCode != 0) {
        return false;
    }
    testing::WriteFileBytes(fixture, result.output);
    return true;
}

std::vector<Text> PreviewArguments(const Text& fixture, const Text& report, bool timed)
{
    std::vector<Text> arguments{L"-KorvanePickerPreview", L"-KorvanePickerFixture=" + fixture, L"-KorvanePickerReport=" + report};
    if (timed) {
        arguments.push_back(L"-KorvanePickerPreviewMs=250");
    }
    return arguments;
}

bool PickerRun(const Text& launcher, const Text& fixture, const Text& report, Run& run)
{
    testing::ProcessOptions options;
    options.hidden = false;
    const double start = NowMs();
    const testing::ProcessResult result = testing::RunProcess(launcher, PreviewArguments(fixture, report, true), options);
    run.wholeMs = NowMs() - start;
    if (result.exitCode != 0) {
        return false;
    }
    run.firstPaintMs = std::wcstod(FindJsonMember(ParseJson(testing::ReadFileBytes(report)), L"firstPaintMs").text.c_str(), nullptr);
    return run.firstPaintMs > 0;
}

StartedProcess StartBare(const Text& report, UINT stayMs, const wchar_t* program = L"bare_window.exe")
{
    // The bare window takes the tail of its command line as the path, unquoted.
    const Text application = JoinPath(testing::BinaryDirectory(), program);
    const Text commandLine = Text(program) + L" -size=1024x640 -stayMs=" + DecimalText(stayMs) + L" " + report;
    StartedProcess bare;
    StartProcess({.application = application, .commandLine = commandLine}, bare);
    return bare;
}

bool BareRun(const Text& report, Run& run, const wchar_t* program = L"bare_window.exe")
{
    DeleteFileW(report.c_str());
    const double start = NowMs();
    const StartedProcess bare = StartBare(report, 250, program);
    if (!bare.IsStarted() || WaitForSingleObject(bare.Process(), 60000) != WAIT_OBJECT_0) {
        return false;
    }
    run.wholeMs = NowMs() - start;
    run.firstPaintMs = std::strtod(testing::ReadFileBytes(report).c_str(), nullptr) - 1;
    return run.firstPaintMs > 0;
}

double PrivateMb(HANDLE process)
{
    PROCESS_MEMORY_COUNTERS_EX memory{};
    memory.cb = sizeof(memory);
    GetProcessMemoryInfo(process, reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory), sizeof(memory));
    // Wine leaves PrivateUsage at 0; the page-file share is the same committed private memory.
    return static_cast<double>(std::max(memory.PrivateUsage, memory.PagefileUsage)) / 1048576.0;
}

// Private memory once the picker has shown the catalogue and has nothing left to do.
void MeasureIdleMemory(const Text& launcher, const Text& fixture, const testing::ScratchDirectory& scratch)
{
    const Text report = scratch / L"idle.json";
    testing::ProcessOptions options;
    options.hidden = false;
    testing::ChildProcess picker = testing::ChildProcess::Start(launcher, PreviewArguments(fixture, report, false), options);
    // The report is written again when the load has been applied.
    while (WaitForSingleObject(picker.Handle(), 50) == WAIT_TIMEOUT) {
        const Bytes text = testing::ReadFileBytes(report);
        if (!text.empty() && FindJsonMember(ParseJson(text), L"modCount").text != L"0") {
            break;
        }
    }
    WaitForInputIdle(picker.Handle(), 5000);
    const double pickerMb = PrivateMb(picker.Handle());
    const Text bareReport = scratch / L"idle-bare.txt";
    const StartedProcess bare = StartBare(bareReport, 60000);
    while (testing::ReadFileBytes(bareReport).empty() && WaitForSingleObject(bare.Process(), 50) == WAIT_TIMEOUT) {
    }
    const double bareMb = PrivateMb(bare.Process());
    TerminateProcess(bare.Process(), 0);
    std::printf("idle private memory with the sample catalogue: picker %.1f MB, bare window %.1f MB\n", pickerMb, bareMb);
}

}  // namespace

int wmain()
{
    testing::ScratchDirectory scratch(L"bench-picker-preview");
    standins::SampleInstallPaths install;
    const Text fixture = scratch / L"fixture.json";
    if (!LayOut(scratch / L"install", install) || !WriteFixture(install, fixture)) {
        std::printf("the stand-in tool gave no preview\n");
        return 1;
    }
    const Text launcher = JoinPath(install.editorRoot, L"KorvaneEditor.exe");
    std::vector<double> pickerWhole, pickerPaint, bareWhole, barePaint, controlsPaint;
    // Alternating, so that a slow moment of the machine hits both alike.
    for (int round = 0; round < kRounds; ++round) {
        Run run;
        if (PickerRun(launcher, fixture, scratch / L"report.json", run)) {
            pickerWhole.push_back(run.wholeMs);
            pickerPaint.push_back(run.firstPaintMs);
        }
        if (BareRun(scratch / L"bare.txt", run)) {
            bareWhole.push_back(run.wholeMs);
            barePaint.push_back(run.firstPaintMs);
        }
        if (BareRun(scratch / L"controls.txt", run, L"controls_window.exe")) {
            controlsPaint.push_back(run.firstPaintMs);
        }
    }
    if (pickerWhole.empty() || bareWhole.empty() || controlsPaint.empty()) {
        std::printf("picker preview: no measurement (picker %zu, bare %zu, controls %zu runs)\n", pickerWhole.size(),
            bareWhole.size(), controlsPaint.size());
        return 1;
    }
    std::printf("picker preview with %zu Mods shown 250 ms: whole process %.0f ms, first paint %.0f ms (%d rounds)\n",
        install.mods.size(), Median(pickerWhole), Median(pickerPaint), kRounds);
    std::printf("bare 1024 x 640 window shown 250 ms: whole process %.0f ms, first paint %.0f ms\n", Median(bareWhole),
        Median(barePaint));
    std::printf("whole process ratio picker/bare: %.2f (target < 1.5)\n", Median(pickerWhole) / Median(bareWhole));
    std::printf("first paint ratio picker/bare: %.2f (target < 1.5)\n", Median(pickerPaint) / std::max(1.0, Median(barePaint)));
    std::printf("the same window with the picker's 17 controls and nothing else: first paint %.0f ms, ratio to bare %.2f; "
                "the picker's own code adds %.0f ms to it\n",
        Median(controlsPaint), Median(controlsPaint) / std::max(1.0, Median(barePaint)),
        Median(pickerPaint) - Median(controlsPaint));
    MeasureIdleMemory(launcher, fixture, scratch);
    return 0;
}
