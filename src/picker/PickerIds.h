#pragma once
// The picker's window class, control identifiers, private messages and timer.

#include <windows.h>

namespace korvane {

inline constexpr wchar_t kPickerWindowClass[] = L"KorvaneLauncherWindow";

enum PickerControlId : int {
    kGameFolderEditId = 1001,
    kChooseGameFolderId = 1002,
    kStartEditingId = 1003,
    kCloseId = 1004,
    kStatusLineId = 1005,
    kSdkEditId = 1006,
    kChooseSdkId = 1007,
    kSearchEditId = 1008,
    kModListId = 1009,
    kNewModId = 1010,
    kImportModId = 1011,
    kDeleteModId = 1012,
    kRefreshId = 1014,
    kLanguageComboId = 1015,
};

// A finished task: lParam owns the heap WorkResult.
inline constexpr UINT WM_TASK_FINISHED = 0x8046;
// Start the first load.
inline constexpr UINT WM_PICKER_INITIAL_LOAD = 0x8048;
// Closes a preview after its time.
inline constexpr UINT_PTR kPreviewCloseTimerId = 7;

}  // namespace korvane
