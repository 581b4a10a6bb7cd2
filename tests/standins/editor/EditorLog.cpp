#include "editor/EditorLog.h"

#include "common/StandinSupport.h"

#include "foundation/Paths.h"

#include <cstdio>

namespace korvane::standins {
namespace {

// "[2026.11.23-11.22.01:123][  0]", the engine's prefix of a log line.
Bytes Stamp()
{
    SYSTEMTIME now{};
    GetSystemTime(&now);
    char buffer[64] = {};
    std::snprintf(buffer, sizeof(buffer), "[%04u.%02u.%02u-%02u.%02u.%02u:%03u][  0]", now.wYear, now.wMonth, now.wDay,
        now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
    return buffer;
}

Bytes Utf8(TextView text)
{
    return TextToUtf8(text);
}

Text ProjectName(const EditorRun& run)
{
    Text leaf = LastPathComponent(run.project);
    const size_t dot = leaf.rfind(L'.');
    return dot == Text::npos ? leaf : leaf.substr(0, dot);
}

}  // namespace

EngineLog::EngineLog(TextView path)
{
    if (path.empty()) {
        return;
    }
    MakeFolders(ParentPath(path));
    file_.Reset(CreateFileW(Text(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

void EngineLog::Raw(BytesView bytes)
{
    if (file_) {
        WriteAll(file_.Get(), bytes);
    }
}

void EngineLog::Line(BytesView text)
{
    Raw(Bytes(text) + "\n");
}

void EngineLog::WriteEarlyLines(const EditorRun& run, const EditorScenario& scenario)
{
    const auto pace = [&] {
        if (pause_ && scenario.logPaceMs > 0) {
            pause_(scenario.logPaceMs);
        }
    };
    SYSTEMTIME now{};
    GetLocalTime(&now);
    char opened[64] = {};
    std::snprintf(opened, sizeof(opened), "\xEF\xBB\xBFLog file open, %02u/%02u/%02u %02u:%02u:%02u", now.wMonth, now.wDay,
        now.wYear % 100, now.wHour, now.wMinute, now.wSecond);
    Line(opened);
    const char* const header[] = {
        "LogWindows: Failed to load 'aqProf.dll' (GetLastError=126)",
        "LogWindows: File 'aqProf.dll' does not exist",
        "LogProfilingDebugging: Loading WinPixEventRuntime.dll for PIX profiling (from ../../../Engine/Binaries/ThirdParty/Windows/WinPixEventRuntime/x64).",
        "LogWindows: Failed to load 'VtuneApi.dll' (GetLastError=126)",
        "LogConsoleResponse: Display: Failed to find resolution value strings in scalability ini. Falling back to default.",
    };
    for (const char* line : header) {
        Line(line);
        pace();
    }
    Line("LogInit: Display: Running engine for game: " + Utf8(ProjectName(run)));
    Line("LogInit: Build: ++UE5+Release-" + Utf8(run.engineVersion) + "-CL-0");
    Line("LogInit: Engine Version: " + Utf8(run.engineVersion) + ".1-0+++UE5+Release-" + Utf8(run.engineVersion));
    Line("LogInit: Command Line: " + Utf8(run.commandLine));
    Line("LogInit: Base Directory: " + Utf8(ExecutableFolder()) + "/");
    Line("LogInit: Allocator: Mimalloc");
    pace();
    Line("LogPluginManager: Mounting Engine plugin Korvane");
    Line("LogPluginManager: Mounting Engine plugin KorvaneAuthoring");
    pace();
    // Shader compile lines come in bursts, as a compiling engine writes them.
    const Bytes autogen = "LogShaderCompilers: Display: Compiling shader autogen file: "
                          "../../../Engine/Intermediate/ShaderAutogen/PCD3D_SM6/AutogenShaderHeaders.ush";
    Bytes burst;
    for (std::uint32_t index = 0; index < scenario.shaderLines; ++index) {
        burst += Stamp() + (index == 0 ? autogen
                                       : "LogShaderCompilers: Display: Compiling shader MI_KorvaneMod_" +
                                    std::to_string(index) + " (PCD3D_SM6, 3 permutations)") +
            "\n";
        if ((index + 1) % 250 == 0) {
            Raw(burst);
            burst.clear();
            pace();
        }
    }
    Raw(burst);
    pace();
    Line(Stamp() + "LogStreaming: Display: FlushAsyncLoading(1): 1 QueuedPackages, 0 AsyncPackages");
    const Bytes initializing = Stamp() + "LogEngine: Initializing Engine...\n";
    if (scenario.splitLine) {
        // The launcher must see the line once, when its end arrives.
        const size_t half = initializing.find("Initializing") + 4;
        Raw(BytesView(initializing).substr(0, half));
        if (pause_) {
            pause_(250);
        }
        Raw(BytesView(initializing).substr(half));
    } else {
        Raw(initializing);
    }
    pace();
}

void EngineLog::WriteInitialisedLines(const EditorRun& run, const EditorScenario& scenario)
{
    const auto pace = [&] {
        if (pause_ && scenario.logPaceMs > 0) {
            pause_(scenario.logPaceMs);
        }
    };
    Line(Stamp() + "LogKorvane: Display: Registered automatic read-only policies without loading assets (SDK content)");
    pace();
    Line(Stamp() + "LogKorvane: Display: Standalone Mod project " + Utf8(run.selectedMod) + " mounted from " +
        Utf8(run.modProject));
    pace();
    Line(Stamp() + "LogKorvane: Display: Mod authoring policy active for " + Utf8(run.selectedMod));
    pace();
    Line(Stamp() + "LogInit: Display: Engine is initialized. Leaving FEngineLoop::Init()");
    pace();
    Line(Stamp() + "LogLoad: (Engine Initialization) Total time: 4.21 seconds");
    pace();
}

void EngineLog::WriteReadyLines()
{
    Line(Stamp() + "LogSlate: Took 0.000112 seconds to synchronously load lazily loaded font '../../../Engine/Content/Slate/Fonts/Roboto-Regular.ttf' (155K)");
    Line(Stamp() + "LogKorvane: Display: Editor main frame is ready");
}

void EngineLog::WriteExitLines(DWORD exitCode)
{
    Line(Stamp() + "LogExit: Preparing to exit.");
    Line(Stamp() + "LogExit: Exiting with code " + std::to_string(exitCode) + ".");
    Line("Log file closed");
}

}  // namespace korvane::standins
