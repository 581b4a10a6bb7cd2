#pragma once
// How a test steers one run of the stand-in editor. The scenario file is the one named by the
// variable KORVANE_STANDIN_EDITOR_SCENARIO, or else "UnrealEditor.scenario.json" beside the
// editor; one JSON object whose keys are all optional:
//   "mode"        "normal" (default): splash, log, main window;
//                 "crashBeforeWindow": log lines, then the process dies with 0xC0000005 (or
//                   "exitCode") before any window;
//                 "exitBeforeWindow": log lines, then exit code 0 (or "exitCode") before any window;
//                 "noWindow": the splash and the whole log, but never a main window;
//                 "startLauncher": normal, and once the main window stands it starts
//                   KorvaneEditor.exe of its install as its child;
//                 "waitForSelf": as startLauncher, with -KorvaneWaitForEditorPid=<own id>.
//   "exitCode"    the code the editor ends with (default 0).
//   "runMs"       how long the editor runs after its main window stands; 0 (default) runs until
//                 the main window is closed. In "noWindow", 0 runs until killed.
//   "splashMs"    shortest time the splash stands (default 200).
//   "logPaceMs"   pause between log lines (default 10).
//   "shaderLines" number of shader compile lines (default 3).
//   "splitLine"   true: the "LogEngine: Initializing Engine" line reaches the log in two writes,
//                 a quarter second apart.
//   "launcherArguments" array of texts given to the launcher in startLauncher and waitForSelf.

#include "foundation/Text.h"

#include <windows.h>

#include <cstdint>
#include <vector>

namespace korvane::standins {

struct EditorScenario {
    Text mode = L"normal";
    DWORD exitCode = 0;
    bool exitCodeGiven = false;
    DWORD runMs = 0;
    DWORD splashMs = 200;
    DWORD logPaceMs = 10;
    std::uint32_t shaderLines = 3;
    bool splitLine = false;
    std::vector<Text> launcherArguments;
};

EditorScenario LoadEditorScenario();

}  // namespace korvane::standins
