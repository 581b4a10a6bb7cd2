#pragma once
// The run-wide record of the launcher. wWinMain owns it as a local object and hands it by
// reference to every subsystem; it is never copied.

#include "foundation/Text.h"
#include "foundation/UniqueResource.h"
#include "language/LanguageChoice.h"
#include "picker/PickerState.h"

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace korvane {

// The editor started by LaunchEditor. Both handles are owned; the code that waits for the
// editor's end closes them by resetting this record.
struct EditorProcess {
    UniqueHandle process;
    UniqueHandle thread;
    DWORD processId = 0;
    DWORD threadId = 0;

    void Reset() noexcept
    {
        process.Reset();
        thread.Reset();
        processId = 0;
        threadId = 0;
    }
};

struct LaunchContext {
    LaunchContext() = default;
    LaunchContext(const LaunchContext&) = delete;
    LaunchContext& operator=(const LaunchContext&) = delete;

    Text editorRoot;         // folder of the launcher's executable
    Text requestedSdk;       // SDK named by the command line or the host steps, not validated
    Text preparationSdk;     // the SDK passed to the tool by LaunchEditor
    Text modFile;            // Mod source package to edit
    Text selectedMod;        // Mod id to edit
    Text modProjectFile;     // Mod.kmodproject of the prepared workspace
    std::vector<Text> passThroughArguments;  // arguments that matched no option, in order
    Text gameDirectory;      // validated game directory, from the SDK selection
    Text launchTarget;       // resolved .kvsdk, later the workspace's KorvaneSDK.uproject
    EditorProcess editorProcess;
    bool editorStarted = false;
    std::uint32_t previewDpi = 96;
    bool pickerPreview = false;
    bool pickerPreviewHidden = false;
    bool launchInProgress = false;
    std::vector<LanguageRow> languages;
    Text language;
    std::atomic<bool> cancelRequested{false};
    std::thread workerThread;
    Text editorSettingsFile;
    Text pickerFixture;
    Text pickerReport;
    Text pickerSnapshot;
    Text startupReport;
    std::uint32_t pickerPreviewMs = 0;
    std::uint64_t startTick = 0;

    PickerState picker;
};

// The directory that holds the running executable; empty when it cannot be had.
Text LocateEditorRoot();

}  // namespace korvane
