#include "startup/StartupMonitor.h"

#include "startup/CacheStatus.h"
#include "startup/StartupTexts.h"
#include "startup/StartupWindow.h"

#include <system_error>

namespace korvane {

StartupMonitor::StartupMonitor(const StartupMonitorOptions& options)
    : options_(options),
      readyEvent_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      startTick_(GetTickCount64()),
      phaseText_(kOpeningEditorPhase.In(options.chinese)),
      chinese_(options.chinese)
{
    try {
        windowThread_ = std::thread(StartupWindowThread, std::ref(*this));
    } catch (const std::system_error&) {
        return;  // no window: the setters and the report work all the same
    }
    if (readyEvent_) {
        WaitForSingleObject(readyEvent_.Get(), kStartupWindowWaitMs);
    }
}

StartupMonitor::~StartupMonitor()
{
    Close();
}

void StartupMonitor::Close()
{
    closing_.store(true);
    if (const HWND window = windowHandle_.load(); window != nullptr) {
        PostMessageW(window, WM_CLOSE, 0, 0);
    }
    if (windowThread_.joinable()) {
        windowThread_.join();
    }
}

void StartupMonitor::PostRefresh() const noexcept
{
    if (const HWND window = windowHandle_.load(); window != nullptr) {
        PostMessageW(window, WM_STARTUP_REFRESH, 0, 0);
    }
}

void StartupMonitor::SetPhaseText(TextView text)
{
    {
        const std::lock_guard<std::mutex> guard(lock_);
        phaseText_.assign(text);
        if (observedPhases_.empty() || (observedPhases_.size() < kMaxObservedPhases && observedPhases_.back() != text)) {
            observedPhases_.emplace_back(text);
        }
    }
    PostRefresh();
}

void StartupMonitor::SetCacheState(std::int32_t cacheHit, bool verified)
{
    Text status = CacheStatusText(cacheHit, verified, IsChinese());
    {
        const std::lock_guard<std::mutex> guard(lock_);
        cacheHit_ = cacheHit;
        cacheVerified_ = verified;
        cacheStatusText_ = std::move(status);
    }
    PostRefresh();
}

void StartupMonitor::SetEditorCulture(TextView culture)
{
    const std::lock_guard<std::mutex> guard(lock_);
    editorCulture_.assign(culture);
}

void StartupMonitor::SetChinese(bool chinese)
{
    chinese_.store(chinese);
    PostRefresh();
}

Text StartupMonitor::PhaseText() const
{
    const std::lock_guard<std::mutex> guard(lock_);
    return phaseText_;
}

StartupDisplay StartupMonitor::Display() const
{
    StartupDisplay display;
    {
        const std::lock_guard<std::mutex> guard(lock_);
        display.phaseText = phaseText_;
        display.cacheStatusText = cacheStatusText_;
    }
    display.chinese = IsChinese();
    display.showCancel = options_.cancelFlag != nullptr;
    display.elapsedMs = ElapsedMs();
    return display;
}

StartupSnapshot StartupMonitor::Snapshot() const
{
    StartupSnapshot snapshot;
    {
        const std::lock_guard<std::mutex> guard(lock_);
        snapshot.cacheStatusText = cacheStatusText_;
        snapshot.phaseText = phaseText_;
        snapshot.editorCulture = editorCulture_;
        snapshot.cacheHit = cacheHit_;
        snapshot.cacheVerified = cacheVerified_;
        snapshot.observedPhases = observedPhases_;
    }
    snapshot.firstPaintMs = firstPaintMs_.load();
    snapshot.assetLoadMs = assetLoadMs_.load();
    snapshot.windowCreateMs = windowCreateMs_.load();
    snapshot.firstDrawMs = firstDrawMs_.load();
    snapshot.paintCount = paintCount_.load();
    snapshot.dpi = dpi_.load();
    snapshot.chinese = chinese_.load();
    snapshot.backgroundDrawn = backgroundDrawn_.load();
    snapshot.logoLoaded = logoLoaded_.load();
    return snapshot;
}

bool StartupMonitor::RequestCancel()
{
    if (!CanCancel()) {
        return false;
    }
    options_.cancelFlag->store(true);
    SetPhaseText(kCancellingPhase.In(IsChinese()));
    return true;
}

void StartupMonitor::NoteAssetsLoaded(bool logoLoaded) noexcept
{
    logoLoaded_.store(logoLoaded);
    assetLoadMs_.store(ElapsedMs());
}

void StartupMonitor::NotePaint(std::uint64_t durationMs, std::optional<bool> backgroundDrawn) noexcept
{
    if (backgroundDrawn) {
        backgroundDrawn_.store(*backgroundDrawn);
    }
    paintCount_.fetch_add(1);
    if (firstPaintMs_.load() == 0) {
        firstDrawMs_.store(durationMs);
        firstPaintMs_.store(ElapsedMs() + 1);
    }
}

void StartupMonitor::SignalReady() noexcept
{
    SetEvent(readyEvent_.Get());
}

}  // namespace korvane
