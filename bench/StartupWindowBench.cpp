// The start-up window's time to its first paint, against a bare Win32 window measured the
// same way in the same run: each program notes the tick when its window work begins and
// reports the end of its first paint. The launcher runs -KorvaneStartupPreview with a report;
// bare_window.exe writes its own number. Target: the ratio of the medians stays under 1.5.
#include "BenchTiming.h"
#include "ShippedLauncher.h"
#include "TestSupport.h"

#include "foundation/Json.h"
#include "foundation/Paths.h"
#include "foundation/Process.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <vector>

using namespace korvane;

namespace {

using korvane::bench::Median;
using korvane::bench::NowMs;

constexpr int kRounds = 9;

// The preview's firstPaintMs: from the monitor's construction to the end of its first paint.
bool PreviewFirstPaint(const testing::ScratchDirectory& scratch, int round, double& milliseconds)
{
    const Text report = scratch / (L"startup-" + DecimalText(static_cast<std::uint64_t>(round)) + L".json");
    testing::ProcessOptions options;
    options.hidden = false;
    const testing::ProcessResult result = testing::RunProcess(bench::ShippedLauncherPath(),
        {L"-KorvaneStartupPreview", L"-KorvaneStartupPreviewMs=250", L"-KorvaneStartupReport=" + report}, options);
    if (result.exitCode != 0) {
        return false;
    }
    try {
        const JsonValue value = ParseJson(testing::ReadFileBytes(report));
        milliseconds = std::wcstod(FindJsonMember(value, L"firstPaintMs").text.c_str(), nullptr);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

// The bare window's number: from its entry to the end of its first paint, plus 1.
bool BareFirstPaint(const testing::ScratchDirectory& scratch, int round, double& milliseconds)
{
    const Text report = scratch / (L"bare-" + DecimalText(static_cast<std::uint64_t>(round)) + L".txt");
    // The bare window takes its whole command line tail as the path, unquoted.
    const Text application = JoinPath(testing::BinaryDirectory(), L"bare_window.exe");
    const Text commandLine = L"bare_window.exe " + report;
    StartedProcess bare;
    if (!StartProcess({.application = application, .commandLine = commandLine}, bare)) {
        return false;
    }
    if (WaitForSingleObject(bare.Process(), 60000) != WAIT_OBJECT_0) {
        TerminateProcess(bare.Process(), 1);
        return false;
    }
    const Bytes text = testing::ReadFileBytes(report);
    if (text.empty()) {
        return false;
    }
    milliseconds = std::strtod(text.c_str(), nullptr) - 1;
    return true;
}

}  // namespace

int wmain()
{
    testing::ScratchDirectory scratch(L"bench-startup-window");
    std::vector<double> preview;
    std::vector<double> bare;
    // Alternating, so that a slow moment of the machine hits both alike.
    for (int round = 0; round < kRounds; ++round) {
        double value = 0;
        if (PreviewFirstPaint(scratch, round, value)) {
            preview.push_back(value);
        }
        if (BareFirstPaint(scratch, round, value)) {
            bare.push_back(value);
        }
    }
    if (preview.empty() || bare.empty()) {
        std::printf("startup window first paint: no measurement (preview %zu, bare %zu runs)\n", preview.size(), bare.size());
        return 1;
    }
    const double previewMedian = Median(preview);
    const double bareMedian = std::max(1.0, Median(bare));
    std::printf("startup window first paint: preview median %.0f ms, bare window median %.0f ms (%d rounds)\n",
        previewMedian, Median(bare), kRounds);
    std::printf("first paint ratio preview/bare: %.2f (target < 1.5)\n", previewMedian / bareMedian);
    return 0;
}
