#include "picker/PickerControls.h"

namespace korvane {

HWND FindPickerControl(const PickerState& picker, int id)
{
    const auto matches = [id](HWND control) { return control != nullptr && GetDlgCtrlID(control) == id; };
    for (HWND control : {picker.gameFolderEdit, picker.sdkEdit, picker.searchEdit, picker.statusLine, picker.modList,
             picker.languageCombo, picker.closeButton}) {
        if (matches(control)) {
            return control;
        }
    }
    for (HWND control : picker.actionButtons) {
        if (matches(control)) {
            return control;
        }
    }
    return nullptr;
}

}  // namespace korvane
