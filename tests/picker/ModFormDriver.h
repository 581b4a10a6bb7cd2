#pragma once
// The Create Mod form, the shell's file choosers and the launcher's boxes, reached from outside as
// PickerDriver.h reaches the picker: by window class, caption and control ids, by messages and
// keystrokes, and by the pixels the form puts on the screen.

#include "PickerDriver.h"

#include <windows.h>

#include <vector>

namespace korvane::testing {

// Answers the chooser captioned `title` as a user does: types `path` into its file-name box and
// presses Return, or presses Cancel when `path` is empty. True when the chooser came and went.
bool AnswerFileChooser(const ChildProcess& process, TextView title, TextView path);

// A key pressed and released, posted to `window` as the keyboard would deliver it.
void PressKey(HWND window, WPARAM key);

// The control that has the keyboard focus on the thread of `window`, or null.
HWND FocusOf(HWND window);

// The screen's pixels in a rectangle, row by row from the top.
std::vector<COLORREF> ScreenPixels(RECT area);

class ModForm {
public:
    // Presses New Mod in the picker and waits for the form.
    explicit ModForm(PickerProcess& picker);

    bool IsOpen() const { return form_ != nullptr && IsWindow(form_) != FALSE; }
    HWND Window() const noexcept { return form_; }
    HWND Control(int id) const { return GetDlgItem(form_, id); }
    Text TextOf(int id) const;
    bool IsEnabled(int id) const { return IsWindowEnabled(Control(id)) != FALSE; }
    // Sets an edit's text; the edit reports the change to the form as typing would.
    void Type(int id, TextView text) const;
    // Types one character message per code unit, as the keyboard does, and waits until the edit
    // has taken them all.
    bool TypeKeys(int id, TextView text) const;
    void Press(int id) const { PostMessageW(Control(id), BM_CLICK, 0, 0); }
    // A key pressed on the control that has the focus.
    void Key(WPARAM key) const { PressKey(FocusOf(form_), key); }
    // Chooses a cover through the form's chooser; true once the form has dealt with the answer.
    bool ChooseCover(TextView path) const;
    bool WaitClosed() const;

    // How many pixels of the cover hint's place show the error's colour, and the hint's colour.
    std::size_t ErrorPixels() const { return HintPlacePixels(RGB(244, 137, 129)); }
    std::size_t HintPixels() const { return HintPlacePixels(RGB(148, 177, 193)); }
    // The colour at the middle of the cover tile.
    COLORREF TileCentre() const;

private:
    // The screen's pixels in a rectangle of the form's client area, given at 96 DPI.
    std::vector<COLORREF> Pixels(int x, int y, int width, int height) const;
    std::size_t HintPlacePixels(COLORREF colour) const;

    PickerProcess& picker_;
    HWND form_ = nullptr;
};

}  // namespace korvane::testing
