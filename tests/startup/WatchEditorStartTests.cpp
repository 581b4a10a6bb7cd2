// Watching a real child process that plays the starting editor: its log, its windows, its
// end, and a cancel.
#include "StartupChild.h"
#include "TestSupport.h"

#include "startup/EditorWindowSearch.h"
#include "startup/StartupMonitor.h"
#include "startup/StartupPaint.h"
#include "startup/WatchEditorStart.h"

#include <gtest/gtest.h>

#include <thread>

namespace korvane {
namespace {

using testing::NamedEvent;
using testing::ScratchDirectory;
using testing::StartChild;
using Lines = std::vector<Text>;

std::uint64_t Now()
{
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return (static_cast<std::uint64_t>(now.dwHighDateTime) << 32) | now.dwLowDateTime;
}

// Whether the child's windows, once all are up, count as the editor's main window.
bool ChildWindowsCount(const std::vector<Text>& windowSteps)
{
    NamedEvent ready;
    std::vector<Text> steps = windowSteps;
    steps.push_back(L"--signal=" + ready.Name());
    steps.push_back(L"--stay");
    testing::ChildProcess child = StartChild(steps);
    EXPECT_TRUE(ready.Wait(30000));
    const bool counts = EditorMainWindowExists(child.Id());
    child.Kill();
    return counts;
}

TEST(EditorWindowSearch, OnlyAVisibleUnownedWindowLargerThanASplashCounts)
{
    EXPECT_FALSE(ChildWindowsCount({L"--window=300x151"}));
    EXPECT_TRUE(ChildWindowsCount({L"--window=301x151"}));
    EXPECT_FALSE(ChildWindowsCount({L"--window=301x150"}));
    EXPECT_FALSE(ChildWindowsCount({L"--window=1280x720:UnrealSPLASHWindow"})) << "a splash class, whatever its size";
    EXPECT_TRUE(ChildWindowsCount({L"--window=1280x720:UnrealWindow"}));
    EXPECT_FALSE(ChildWindowsCount({L"--hidden-window=1280x720"}));
    EXPECT_FALSE(ChildWindowsCount({L"--window=200x100", L"--owned-window=1280x720"})) << "owned windows are skipped";
    EXPECT_FALSE(ChildWindowsCount({})) << "no window at all";
}

TEST(WatchEditorStart, LogMarkersMoveThePhaseUntilTheMainWindowStands)
{
    ScratchDirectory scratch(L"watch-log");
    const Text log = scratch / L"Saved\\Logs\\KorvaneLauncher-1-2.log";
    testing::MakeDirectories(scratch / L"Saved\\Logs");
    std::atomic<bool> cancel{false};
    StartupMonitor monitor(96, true, false, &cancel);
    const std::uint64_t notBefore = Now();
    testing::ChildProcess child = StartChild({L"--log=" + log, L"--write=LogInit: Display: Running engine",
        L"--write=LogShaderCompilers: Display: Compiling shader autogen file: a",
        L"--write=LogShaderCompilers: Display: Compiling shader autogen file: b",
        L"--write=LogEngine: Initializing Engine...", L"--write=LogInit: Display: Engine is initialized. Leaving FEngineLoop::Init()",
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
    ScratchDirectory scratch(L"watch-old");
    const Text log = scratch / L"Editor.log";
    testing::WriteFileBytes(log, "LogEngine: Initializing Engine...\n");
    std::atomic<bool> cancel{false};
    const std::uint64_t notBefore = Now() + 36000000000ull;  // the file is an hour too old

    {
        StartupMonitor monitor(96, true, true, &cancel);
        testing::ChildProcess child = StartChild({L"--window=800x600", L"--stay"});
        EXPECT_TRUE(WatchEditorStart(monitor, child.Handle(), child.Id(), cancel, log, notBefore));
        EXPECT_EQ(monitor.Snapshot().observedPhases, Lines{L"正在加载编辑器模块与界面…"});
    }
    {
        StartupMonitor monitor(96, true, false, &cancel);
        testing::ChildProcess child = StartChild({L"--window=800x600", L"--stay"});
        EXPECT_TRUE(WatchEditorStart(monitor, child.Handle(), child.Id(), cancel, L"", 0));
        EXPECT_EQ(monitor.Snapshot().observedPhases, Lines{L"Loading editor modules and the interface…"});
    }
}

TEST(WatchEditorStart, EditorThatEndsBeforeAnyWindowGivesFalseWhateverItsCode)
{
    std::atomic<bool> cancel{false};
    StartupMonitor monitor(96, true, false, &cancel);
    for (const wchar_t* code : {L"0", L"3", L"3221225477"}) {
        testing::ChildProcess child = StartChild({L"--window=200x100", L"--exit=" + Text(code)});
        EXPECT_FALSE(WatchEditorStart(monitor, child.Handle(), child.Id(), cancel, L"", 0));
        EXPECT_EQ(DecimalText(child.ExitCode()), code);
    }
    EXPECT_FALSE(cancel.load());
}

TEST(WatchEditorStart, CancelEndsTheEditorWithCode1223)
{
    // The flag set beforehand: the first pass ends it.
    {
        std::atomic<bool> cancel{true};
        StartupMonitor monitor(96, true, false, &cancel);
        testing::ChildProcess child = StartChild({L"--stay"});
        EXPECT_FALSE(WatchEditorStart(monitor, child.Handle(), child.Id(), cancel, L"", 0));
        EXPECT_TRUE(child.Wait(0));
        EXPECT_EQ(child.ExitCode(), 1223u);
    }
    // The Cancel button of the start-up window pressed during the watch.
    {
        std::atomic<bool> cancel{false};
        StartupMonitor monitor(96, true, false, &cancel);
        ASSERT_NE(monitor.WindowHandle(), nullptr);
        NamedEvent started;
        testing::ChildProcess child = StartChild({L"--window=300x100", L"--signal=" + started.Name(), L"--stay"});
        std::thread author([&] {
            started.Wait(30000);
            const RECT button = CancelButtonRect(96);
            SendMessageW(monitor.WindowHandle(), WM_LBUTTONUP, 0, MAKELPARAM(button.left + 5, button.top + 5));
        });
        const bool result = WatchEditorStart(monitor, child.Handle(), child.Id(), cancel, L"", 0);
        author.join();
        EXPECT_FALSE(result);
        EXPECT_TRUE(cancel.load());
        EXPECT_EQ(child.ExitCode(), 1223u);
        EXPECT_EQ(monitor.PhaseText(), L"Cancelling…");
    }
}

}  // namespace
}  // namespace korvane
