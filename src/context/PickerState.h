#pragma once
// The picker's part of the LaunchContext: window handles, fonts, the loaded SDK's values and the
// Mod list. Only the picker's window thread touches it.

#include "foundation/GdiplusImage.h"
#include "foundation/Text.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

#include <cstdint>
#include <vector>

namespace korvane {

// One row of the catalogue.
struct ModEntry {
    Text id;
    Text name;
    Text authorName;
    Text supportedGameVersions;  // the document's array, joined with ", "
    Text modProject;             // the row's identity and the key of its cover
    Text coverPath;
    UniqueGdiplusBitmap cover;
};

struct PickerState {
    HWND pickerWindow = nullptr;
    HWND gameFolderEdit = nullptr;
    HWND sdkEdit = nullptr;
    HWND searchEdit = nullptr;
    HWND modList = nullptr;
    HWND languageCombo = nullptr;
    HWND statusLine = nullptr;
    HWND startButton = nullptr;
    HWND closeButton = nullptr;
    HWND modTooltip = nullptr;
    std::vector<HWND> actionButtons;  // every button but Close, in creation order
    UniqueFont titleFont;
    UniqueFont bodyFont;
    // The colour answers to the controls, made on first use and kept for the run.
    UniqueBrush fieldBrush;
    UniqueBrush surfaceBrush;

    bool taskRunning = false;
    bool closeRequested = false;  // the window closes as soon as the task ends

    // The SDK on show.
    bool sdkLoaded = false;
    bool editorBuildMatches = true;
    Text gameTitle;
    Text gameVersion;
    Text engineVersion;
    UniqueGdiplusBitmap gameIcon;
    std::vector<ModEntry> mods;
    std::vector<std::size_t> visibleRows;  // indexes into `mods` that the search lets through

    std::int32_t hoverRow = -1;
    Text tooltipText;  // storage behind the tooltip
    Text statusText;   // the last text given to SetStatus
    std::uint64_t firstPaintMs = 0;
    std::uint32_t paintCount = 0;
    bool scrollbarDragging = false;
};

}  // namespace korvane
