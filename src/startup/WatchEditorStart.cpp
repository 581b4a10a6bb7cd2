#include "startup/WatchEditorStart.h"

#include "context/SharedConstants.h"
#include "startup/EditorLogFollower.h"
#include "startup/EditorWindowSearch.h"
#include "startup/StartupMarkers.h"
#include "startup/StartupMonitor.h"
#include "startup/StartupTexts.h"

namespace korvane {
namespace {

constexpr DWORD kWatchPollMs = 100;
constexpr DWORD kWaitAfterKillMs = 5000;

bool ProcessStillRuns(HANDLE process)
{
    return WaitForSingleObject(process, kWatchPollMs) == WAIT_TIMEOUT;
}

}  // namespace

bool WatchEditorStart(StartupMonitor& monitor, HANDLE process, DWORD processId, std::atomic<bool>& cancelRequested,
    TextView logPath, std::uint64_t notBefore)
{
    monitor.SetPhaseText(kLoadingEditorPhase.In(monitor.IsChinese()));
    EditorLogFollower follower{Text(logPath), notBefore};
    const auto onLine = [&monitor](TextView line) {
        const Text phase = MatchStartupMarker(line, monitor.IsChinese());
        if (!phase.empty()) {
            monitor.SetPhaseText(phase);
        }
    };

    if (!ProcessStillRuns(process)) {
        return false;
    }
    for (;;) {
        if (cancelRequested.load()) {
            TerminateProcess(process, kCancelledExitCode);
            WaitForSingleObject(process, kWaitAfterKillMs);
            return false;
        }
        if (!logPath.empty()) {
            follower.FollowOnce(onLine);
        }
        if (EditorMainWindowExists(processId)) {
            return true;
        }
        if (!ProcessStillRuns(process)) {
            return false;
        }
    }
}

}  // namespace korvane
