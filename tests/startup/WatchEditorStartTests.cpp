// Watching a real child process that plays the starting editor (startup_child.exe, built
// beside these tests): its log and its windows. Its early end and a cancel, with the editor
// ended by the cancelled code, are checked on whole launches.
#include "TestSupport.h"

#include "foundation/Paths.h"
#include "startup/EditorWindowSearch.h"
#include "startup/StartupMonitor.h"
#include "startup/WatchEditorStart.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using Lines = std::vector<Text>;

// Shown: its windows must be seen.
testing::ChildProcess StartChild(const Lines& steps)
{
    testing::ProcessOptions options;
    options.hidden = false;
    testing::ChildProcess child =
        testing::ChildProcess::Start(JoinPath(testing::BinaryDirectory(), L"startup_child.exe"), steps, options);
    EXPECT_TRUE(child.IsStarted());
    return child;
}

std::uint64_t Now()
{
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return (static_cast<std::uint64_t>(now.dwHighDateTime) << 32) | now.dwLowDateTime;
}

TEST(EditorWindowSearch, OnlyAVisibleUnownedWindowLargerThanASplashCounts)
{
    const std::pair<Lines, bool> cases[] = {
        {{L"--window=300x151"}, false},
        {{L"--window=301x151"}, true},
        {{L"--window=301x150"}, false},
        {{L"--window=1280x720:UnrealSPLASHWindow"}, false},  // a splash class, whatever its size
        {{L"--hidden-window=1280x720"}, false},
        {{L"--window=200x100", L"--owned-window=1280x720"}, false},
        {{}, false},
    };
    for (const auto& [windows, counts] : cases) {
        Lines steps = windows;
        steps.push_back(L"--stay");
        testing::ChildProcess child = StartChild(steps);
        EXPECT_EQ(WaitForInputIdle(child.Handle(), 30000), 0u) << "its windows made, it waits for messages";
        EXPECT_EQ(EditorMainWindowExists(child.Id()), counts) << (windows.empty() ? L"" : windows.back());
        child.Kill();
    }
}

TEST(WatchEditorStart, LogMarkersMoveThePhaseUntilTheMainWindowStands)
{
    testing::ScratchDirectory scratch(L"watch-log");
    const Text log = scratch / L"Saved\\Logs\\KorvaneLauncher-1-2.log";
    testing::MakeDirectories(scratch / L"Saved\\Logs");
    std::atomic<bool> cancel{false};
    StartupMonitor monitor({.forcedDpi = 96, .noBackground = true, .cancelFlag = &cancel});
    const std::uint64_t notBefore = Now();
    testing::ChildProcess child = StartChild({L"--log=" + log, L"--write=LogInit: Display: Running engine",
        L"--write=LogShaderCompilers: Display: Compiling shader autogen file: a",
        L"--write=LogShaderCompilers: Display: Compiling shader autogen file: b",
        L"--write=LogEngine: Initializing Engine...",
        L"--write=LogInit: Display: Engine is initialized. Leaving FEngineLoop::Init()",
        L"--write=LogLoad: (Engine Initialization) Total time: 36.29 seconds", L"--window=200x100:SplashScreen",
        L"--window=1280x720", L"--stay"});
    EXPECT_TRUE(WatchEditorStart(monitor, child.Handle(), child.Id(), cancel, log, notBefore));
    EXPECT_EQ(monitor.Snapshot().observedPhases,
        (Lines{L"Loading editor modules and the interface…", L"Preparing rendering and shaders…",
            L"Initializing the Editor engine…", L"Engine initialized; preparing the Editor interface…"}));
    EXPECT_FALSE(cancel.load());
    EXPECT_EQ(WaitForSingleObject(child.Handle(), 0), static_cast<DWORD>(WAIT_TIMEOUT)) << "the editor runs on";
}

TEST(WatchEditorStart, OldLogOrNoLogLeavesOnlyTheWindowSearch)
{
    testing::ScratchDirectory scratch(L"watch-old");
    const Text log = scratch / L"Editor.log";
    testing::WriteFileBytes(log, "LogEngine: Initializing Engine...\n");
    std::atomic<bool> cancel{false};
    for (const bool chinese : {true, false}) {
        StartupMonitor monitor({.forcedDpi = 96, .noBackground = true, .chinese = chinese, .cancelFlag = &cancel});
        testing::ChildProcess child = StartChild({L"--window=800x600", L"--stay"});
        // In Chinese the log is an hour too old; in English there is none.
        EXPECT_TRUE(WatchEditorStart(
            monitor, child.Handle(), child.Id(), cancel, chinese ? log : L"", chinese ? Now() + 36000000000ull : 0));
        EXPECT_EQ(monitor.Snapshot().observedPhases,
            Lines{chinese ? L"正在加载编辑器模块与界面…" : L"Loading editor modules and the interface…"});
    }
}

}  // namespace
}  // namespace korvane
