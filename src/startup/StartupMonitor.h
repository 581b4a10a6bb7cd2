#pragma once
// The shared state behind the start-up progress window. The launch flow, the preparation and
// the log watch write phase lines and the cache state into it from their threads; the window,
// on a thread of its own, shows them; the report reads what it measured. Without a window
// (it could not be made) the monitor keeps working: only the repaint is skipped.

#include "foundation/Text.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace korvane {

// Posted to the start-up window: repaint, no arguments.
inline constexpr UINT WM_STARTUP_REFRESH = 0x8029;
// How long construction waits for the window to stand.
inline constexpr DWORD kStartupWindowWaitMs = 5000;
// The history of phase lines stops growing here; the line itself still changes.
inline constexpr std::size_t kMaxObservedPhases = 128;

// What the monitor measured and shows at one moment, copied for the report.
struct StartupSnapshot {
    std::uint64_t firstPaintMs = 0;  // time to the end of the first paint plus 1; 0 before it
    std::uint64_t assetLoadMs = 0;
    std::uint64_t windowCreateMs = 0;
    std::uint64_t firstDrawMs = 0;
    std::uint32_t paintCount = 0;
    std::uint32_t dpi = 96;
    bool chinese = false;
    Text editorCulture;
    bool backgroundDrawn = false;
    bool logoLoaded = false;
    Text phaseText;
    std::vector<Text> observedPhases;
    Text cacheStatusText;
    std::int32_t cacheHit = -1;
    bool cacheVerified = false;
};

class StartupMonitor {
public:
    // Starts the window thread and returns when the window stands or kStartupWindowWaitMs
    // have passed. `forcedDpi` 0 follows the system. `cancelFlag` null: the window offers no
    // Cancel and a close ends it (the start-up preview).
    StartupMonitor(std::uint32_t forcedDpi, bool noBackground, bool chinese, std::atomic<bool>* cancelFlag);
    // Closes the window if Close has not done so yet.
    ~StartupMonitor();
    StartupMonitor(const StartupMonitor&) = delete;
    StartupMonitor& operator=(const StartupMonitor&) = delete;

    // Callable from any thread. Keeps a history of distinct successive lines (at most 128).
    void SetPhaseText(TextView text);
    // Callable from any thread. The status text is made in the monitor's own language.
    void SetCacheState(std::int32_t cacheHit, bool verified);
    // Stores the culture the editor starts with and makes the monitor speak Chinese exactly
    // for "zh-Hans" from now on. Texts published earlier keep their language. The caller sets
    // UiLanguageFlag itself.
    void SetEditorCulture(TextView culture);
    // Ends the window: `closing` first, so that the close does not count as a cancel, then
    // WM_CLOSE and the join. Idempotent; call it from the owning thread.
    void Close();

    bool IsChinese() const noexcept { return chinese_.load(); }
    // The window while it stands; null before, after, or when it could not be made.
    HWND WindowHandle() const noexcept { return windowHandle_.load(); }
    Text PhaseText() const;
    StartupSnapshot Snapshot() const;

private:
    // The window thread's side: the timing fields, the window handle, `dpi` and the flags.
    friend class StartupWindow;

    void PostRefresh() const noexcept;

    std::thread windowThread_;
    std::atomic<HWND> windowHandle_{nullptr};
    UniqueHandle readyEvent_;
    const std::uint64_t startTick_;
    std::atomic<std::uint64_t> firstPaintMs_{0};
    std::atomic<std::uint64_t> assetLoadMs_{0};
    std::atomic<std::uint64_t> windowCreateMs_{0};
    std::atomic<std::uint64_t> firstDrawMs_{0};
    std::atomic<std::uint32_t> paintCount_{0};

    // Held only to copy or assign the six fields below it.
    mutable std::mutex lock_;
    Text phaseText_;
    Text cacheStatusText_;
    std::int32_t cacheHit_ = -1;
    bool cacheVerified_ = false;
    std::vector<Text> observedPhases_;
    Text editorCulture_;

    // Written by the window thread only; read by the report.
    std::atomic<std::uint32_t> dpi_{96};
    std::atomic<bool> logoLoaded_{false};
    const std::uint32_t forcedDpi_;
    const bool noBackground_;
    std::atomic<bool> chinese_;
    std::atomic<bool>* const cancelFlag_;
    std::atomic<bool> closing_{false};
    std::atomic<bool> backgroundDrawn_{false};
};

}  // namespace korvane
