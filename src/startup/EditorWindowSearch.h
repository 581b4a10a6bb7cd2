#pragma once
// Whether the editor's main window stands: a visible, unowned top-level window of its
// process that is larger than a splash screen and not of a splash class.

#include <windows.h>

namespace korvane {

struct EditorWindowSearch {
    DWORD processId = 0;
    bool found = false;
};

// EnumWindows callback; `context` points to an EditorWindowSearch. Stops the enumeration
// at the first window that qualifies. The title is not looked at.
BOOL CALLBACK IsEditorMainWindow(HWND window, LPARAM context);

// Enumerates all top-level windows with IsEditorMainWindow.
bool EditorMainWindowExists(DWORD processId);

}  // namespace korvane
