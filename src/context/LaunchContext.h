#pragma once
// The run-wide record of the launcher. wWinMain owns it as a local object and hands it by
// reference to every subsystem; it is never copied.

#include "context/LanguageRow.h"
#include "context/PickerState.h"
#include "foundation/Process.h"
#include "foundation/Text.h"

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace korvane {

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
    Text workspaceProject;   // KorvaneSDK.uproject of the prepared workspace: the editor's project
    std::vector<Text> passThroughArguments;  // arguments that matched no option, in order
    Text gameDirectory;      // validated game directory, from the SDK selection
    Text launchTarget;       // the resolved .kvsdk
    // The editor started by LaunchEditor. The code that waits for its end closes both handles.
    StartedProcess editorProcess;
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
