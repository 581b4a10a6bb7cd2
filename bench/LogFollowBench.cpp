// Following an editor log that grows by 20 MB of real log lines with the seven markers spread
// through it: the CPU time of the watching thread per second of watch, and whether every
// marker was seen. Target: under 2% of one core.
#include "TestSupport.h"

#include "foundation/Paths.h"
#include "startup/StartupMonitor.h"
#include "startup/WatchEditorStart.h"

#include <cstdio>
#include <thread>
#include <vector>

using namespace korvane;

namespace {

constexpr std::size_t kLogBytes = 20u * 1024u * 1024u;
// Faster than one 64 KiB block per 100 ms pass, so the watch runs behind and reads full blocks.
constexpr std::size_t kWriteBytesPerSecond = 2u * 1024u * 1024u;

const char* const kMarkerLines[] = {
    "[2026.11.23-10.00.01:000][  0]LogKorvane: Registered automatic read-only policies without loading assets",
    "[2026.11.23-10.00.02:000][  0]LogKorvane: Standalone Mod project SampleMod mounted from D:/Mods/SampleMod",
    "[2026.11.23-10.00.03:000][  0]LogKorvane: Mod authoring policy active",
    "[2026.11.23-10.00.04:000][  0]LogEngine: Initializing Engine...",
    "[2026.11.23-10.00.05:000][  0]LogLoad: (Engine Initialization) Total time: 36.29 seconds",
    "[2026.11.23-10.00.06:000][  0]LogShaderCompilers: Display: Compiling shader autogen file: A.ush",
    "[2026.11.23-10.00.07:000][  0]LogInit: Display: Engine is initialized. Leaving FEngineLoop::Init()",
};
const wchar_t* const kExpectedPhases[] = {
    L"Loading editor modules and the interface…",
    L"Read-only protection registered; preparing to load the Mod…",
    L"Selected Mod mounted; preparing the editing environment…",
    L"Mod authoring protection active; preparing the interface…",
    L"Initializing the Editor engine…",
    L"Engine initialized; preparing the Editor interface…",
    L"Preparing rendering and shaders…",
    L"Engine initialized; preparing the Editor interface…",
};

// Lines of real editor logs without any marker, to fill the log between the markers.
std::vector<Bytes> FillerLines()
{
    std::vector<Bytes> lines;
    for (const wchar_t* name : {L"logs\\ue5.3.2_02020fan__FirstGame\\FPS.log", L"logs\\ue5.4.4_2687695258__bd5.0-z1\\model.log",
             L"logs\\ue5.1.0-source_SimSeoWon__VisualNovel\\VN_Rehabilitation.log"}) {
        const Bytes log = testing::ReadRealData(name);
        std::size_t start = 0;
        while (start < log.size()) {
            std::size_t end = log.find('\n', start);
            end = end == Bytes::npos ? log.size() : end + 1;
            const Bytes line = log.substr(start, end - start);
            start = end;
            if (line.find("nitializ") == Bytes::npos && line.find("Compiling shader") == Bytes::npos &&
                line.find("Total time") == Bytes::npos) {
                lines.push_back(line);
            }
        }
    }
    return lines;
}

double Seconds(const FILETIME& time)
{
    return static_cast<double>((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime) / 1e7;
}

}  // namespace

int wmain()
{
    testing::ScratchDirectory scratch(L"bench-log-follow");
    const Text log = scratch / L"KorvaneLauncher-1-1.log";
    const std::vector<Bytes> filler = FillerLines();
    const std::wstring eventName = L"Local\\KorvaneLogFollowBench-" + DecimalText(GetCurrentProcessId());
    const UniqueHandle showWindow(CreateEventW(nullptr, TRUE, FALSE, eventName.c_str()));

    testing::ProcessOptions options;
    options.hidden = false;
    testing::ChildProcess editor = testing::ChildProcess::Start(JoinPath(testing::BinaryDirectory(), L"startup_child.exe"),
        {L"--wait=" + eventName, L"--window=1280x720", L"--stay"}, options);
    if (!editor.IsStarted()) {
        std::printf("log follow: the stand-in editor did not start\n");
        return 1;
    }

    std::atomic<bool> cancel{false};
    StartupMonitor monitor({.forcedDpi = 96, .cancelFlag = &cancel});
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    const std::uint64_t notBefore = (static_cast<std::uint64_t>(now.dwHighDateTime) << 32) | now.dwLowDateTime;

    bool watched = false;
    double cpuSeconds = 0;
    double wallSeconds = 0;
    std::thread watcher([&] {
        const ULONGLONG start = GetTickCount64();
        watched = WatchEditorStart(monitor, editor.Handle(), editor.Id(), cancel, log, notBefore);
        wallSeconds = static_cast<double>(GetTickCount64() - start) / 1000.0;
        FILETIME creation{}, exit{}, kernel{}, user{};
        GetThreadTimes(GetCurrentThread(), &creation, &exit, &kernel, &user);
        cpuSeconds = Seconds(kernel) + Seconds(user);
    });

    // The writer: markers at fixed fractions of the log, real lines between them, written in
    // chunks at a steady rate.
    UniqueFileHandle file(CreateFileW(log.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    const std::size_t markerEvery = kLogBytes / (std::size(kMarkerLines) + 1);
    std::size_t written = 0;
    std::size_t nextMarker = markerEvery;
    std::size_t markerIndex = 0;
    std::size_t fillerIndex = 0;
    const ULONGLONG writeStart = GetTickCount64();
    Bytes chunk;
    while (written < kLogBytes) {
        chunk.clear();
        while (chunk.size() < 65536) {
            if (markerIndex < std::size(kMarkerLines) && written + chunk.size() >= nextMarker) {
                chunk += kMarkerLines[markerIndex++];
                chunk += "\r\n";
                nextMarker += markerEvery;
            } else {
                chunk += filler[fillerIndex++ % filler.size()];
            }
        }
        DWORD done = 0;
        WriteFile(file.Get(), chunk.data(), static_cast<DWORD>(chunk.size()), &done, nullptr);
        written += done;
        const ULONGLONG due = writeStart + written * 1000 / kWriteBytesPerSecond;
        const ULONGLONG nowTick = GetTickCount64();
        if (due > nowTick) {
            Sleep(static_cast<DWORD>(due - nowTick));
        }
    }
    file.Reset();

    // The window comes once the watch has read the whole log (or after a generous limit).
    const ULONGLONG readLimit = GetTickCount64() + 120000;
    while (monitor.Snapshot().observedPhases.size() < std::size(kExpectedPhases) && GetTickCount64() < readLimit) {
        Sleep(100);
    }
    SetEvent(showWindow.Get());
    watcher.join();

    const std::vector<Text> observed = monitor.Snapshot().observedPhases;
    bool allSeen = observed.size() == std::size(kExpectedPhases);
    for (std::size_t index = 0; allSeen && index < observed.size(); ++index) {
        allSeen = observed[index] == kExpectedPhases[index];
    }
    std::printf("log follow: %.1f MB of real log lines, watch %s after %.1f s\n", static_cast<double>(written) / 1048576.0,
        watched ? "saw the window" : "ended without a window", wallSeconds);
    std::printf("log follow: markers seen %zu of %zu, in order: %s\n", observed.size() - 1, std::size(kMarkerLines),
        allSeen ? "yes" : "no");
    std::printf("log follow: watching thread CPU %.3f s over %.1f s = %.2f%% of one core (target < 2%%)\n", cpuSeconds,
        wallSeconds, wallSeconds > 0 ? cpuSeconds * 100.0 / wallSeconds : 0.0);
    if (!allSeen) {
        for (const Text& phase : observed) {
            std::printf("  seen: %s\n", TextToUtf8(phase).c_str());
        }
    }
    return watched && allSeen ? 0 : 1;
}
