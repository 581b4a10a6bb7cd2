#include "picker/PickerControls.h"

namespace korvane {

std::vector<HWND> PickerControls(const PickerState& picker)
{
    std::vector<HWND> controls{picker.gameFolderEdit, picker.sdkEdit, picker.searchEdit, picker.statusLine,
        picker.modList, picker.languageCombo, picker.closeButton};
    controls.insert(controls.end(), picker.actionButtons.begin(), picker.actionButtons.end());
    return controls;
}

HWND FindPickerControl(const PickerState& picker, int id)
{
    for (HWND control : PickerControls(picker)) {
        if (control != nullptr && GetDlgCtrlID(control) == id) {
            return control;
        }
    }
    return nullptr;
}

}  // namespace korvane
