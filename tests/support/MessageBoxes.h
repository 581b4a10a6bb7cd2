#pragma once
// Finding the windows that a child process shows, and answering its message boxes. Used by
// tests that check the text and language of a box, answer a question box, or wait for a window.

#include "TestSupport.h"

#include "foundation/Text.h"

#include <windows.h>

#include <optional>

namespace korvane::testing {

struct MessageBoxSeen {
    HWND window = nullptr;
    Text title;
    Text text;
};

// A visible top-level window of class `className` (case ignored) of process `processId`, with
// that title when one is given, or null.
HWND FindVisibleWindow(DWORD processId, TextView className, std::optional<TextView> title = std::nullopt);

// Waits until process `processId` shows such a window, or `process` (a handle to wait on, or
// null) ends, or `timeoutMs` passes; null unless shown. Polls the window list: there is nothing
// to wait on for a window of another process.
HWND WaitForVisibleWindow(DWORD processId, HANDLE process, TextView className, DWORD timeoutMs = 60000);

// The same for a dialog box (class #32770), with its title and text.
std::optional<MessageBoxSeen> WaitForMessageBox(DWORD processId, HANDLE process, DWORD timeoutMs = 30000);

// Presses the button with control id `buttonId` (IDOK, IDYES, IDNO, IDCANCEL) of the box.
void PressMessageBoxButton(HWND box, int buttonId);

// How a started child ended: its exit code, and the first box it showed, answered with OK.
struct RunEnd {
    DWORD exitCode = 0xFFFFFFFF;
    std::optional<MessageBoxSeen> box;
};
// Waits for the child's box or its end, answers the box, then waits for the end; a child that
// does not end within `timeoutMs` fails the test.
RunEnd WaitAnsweringBox(ChildProcess child, DWORD timeoutMs = 120000);

}  // namespace korvane::testing
