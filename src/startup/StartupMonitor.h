#pragma once
// The shared state behind the start-up progress window. The launch flow, the preparation and
// the log watch write phase lines and the cache state into it from their threads; the window,
// on a thread of its own, shows them and reports what it measured; the report reads both.
// Without a window (it could not be made) the monitor keeps working: only the repaint is skipped.

#include "foundation/Text.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace korvane {

// Posted to the start-up window: repaint, no arguments.
inline constexpr UINT WM_STARTUP_REFRESH = 0x8029;
// How long construction waits for the window to stand.
inline constexpr DWORD kStartupWindowWaitMs = 5000;
// The history of phase lines stops growing here; the line itself still changes.
inline constexpr std::size_t kMaxObservedPhases = 128;

struct StartupMonitorOptions {
    std::uint32_t forcedDpi = 0;              // 0 follows the system
    bool noBackground = false;                // the background art is not loaded
    bool chinese = false;                     // language of the monitor's texts until the editor's is known
    std::atomic<bool>* cancelFlag = nullptr;  // null: no Cancel, and a close ends the window (the preview)
};

// What the window draws at one moment.
struct StartupDisplay {
    Text phaseText;
    Text cacheStatusText;
    bool chinese = false;
    bool showCancel = false;
    std::uint64_t elapsedMs = 0;
};

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
    // have passed.
    explicit StartupMonitor(const StartupMonitorOptions& options);
    // Closes the window if Close has not done so yet.
    ~StartupMonitor();
    StartupMonitor(const StartupMonitor&) = delete;
    StartupMonitor& operator=(const StartupMonitor&) = delete;

    // Callable from any thread. Keeps a history of distinct successive lines (at most 128).
    void SetPhaseText(TextView text);
    // Callable from any thread. The status text is made in the monitor's own language.
    void SetCacheState(std::int32_t cacheHit, bool verified);
    // Stores the culture the editor starts with. The caller then sets the language with
    // SetChinese, and UiLanguageFlag itself.
    void SetEditorCulture(TextView culture);
    // From now on the monitor's texts are made in Chinese, or English. Texts published earlier
    // keep their language.
    void SetChinese(bool chinese);
    // Ends the window: `closing` first, so that the close does not count as a cancel, then
    // WM_CLOSE and the join. Idempotent; call it from the owning thread.
    void Close();

    bool IsChinese() const noexcept { return chinese_.load(); }
    // The window while it stands; null before, after, or when it could not be made.
    HWND WindowHandle() const noexcept { return windowHandle_.load(); }
    Text PhaseText() const;
    StartupSnapshot Snapshot() const;

    // The window thread's side.
    const StartupMonitorOptions& Options() const noexcept { return options_; }
    StartupDisplay Display() const;
    // Sets the cancel flag and shows "Cancelling…" when a cancel is possible: there is a flag
    // and the owner is not closing the window. Gives whether it was.
    bool RequestCancel();
    bool CanCancel() const noexcept { return options_.cancelFlag != nullptr && !closing_.load(); }
    bool IsClosing() const noexcept { return closing_.load(); }
    void NoteDpi(std::uint32_t dpi) noexcept { dpi_.store(dpi); }
    void NoteAssetsLoaded(bool logoLoaded) noexcept;
    void NoteWindowCreated(std::uint64_t durationMs) noexcept { windowCreateMs_.store(durationMs); }
    // A finished paint that took `durationMs`; `backgroundDrawn` when it tried the art.
    void NotePaint(std::uint64_t durationMs, std::optional<bool> backgroundDrawn) noexcept;
    // The window stands (or, with null, is gone): from now on refreshes reach it.
    void PublishWindow(HWND window) noexcept { windowHandle_.store(window); }
    // Construction may go on: the window stands or could not be made.
    void SignalReady() noexcept;

private:
    std::uint64_t ElapsedMs() const noexcept { return GetTickCount64() - startTick_; }
    void PostRefresh() const noexcept;

    const StartupMonitorOptions options_;
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

    std::atomic<std::uint32_t> dpi_{96};
    std::atomic<bool> logoLoaded_{false};
    std::atomic<bool> chinese_;
    std::atomic<bool> closing_{false};
    std::atomic<bool> backgroundDrawn_{false};
};

}  // namespace korvane
