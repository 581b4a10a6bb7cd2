#pragma once
// Follows a starting editor until its main window stands.

#include "foundation/Text.h"

#include <windows.h>

#include <atomic>
#include <cstdint>

namespace korvane {

class StartupMonitor;

// Every 100 ms: ends the editor with kCancelledExitCode on a cancel, follows the log once (phase lines
// go to the monitor) and looks for the editor's main window. True when the window stands;
// false when the process ended first or was ended on a cancel. There is no overall limit.
// `logPath` may be empty (then only windows are looked for). `notBefore` is a FILETIME as a
// 100-ns count taken right before the editor was started; 0 means no limit.
bool WatchEditorStart(StartupMonitor& monitor, HANDLE process, DWORD processId, std::atomic<bool>& cancelRequested,
    TextView logPath, std::uint64_t notBefore);

}  // namespace korvane
