#pragma once
// The picker of a real launcher process, reached as a person or an automation tool reaches it:
// through its window's class and control ids, messages to the real controls, mouse messages on
// the list, and the report the launcher writes. Nothing here looks inside the process.

#include "MessageBoxes.h"
#include "TestSupport.h"

#include "foundation/Json.h"
#include "foundation/Text.h"

#include <windows.h>

#include <functional>
#include <optional>
#include <vector>

namespace korvane::testing {

// The text of a control of another process.
Text TextOf(HWND control);
// Sets an edit's text as typing would: the edit tells its parent of the change.
void Type(HWND edit, TextView text);

class PickerProcess {
public:
    // Starts the launcher at `launcher` with the arguments and a report next to `reportFolder`.
    PickerProcess(TextView launcher, std::vector<Text> arguments, TextView reportFolder,
        const ProcessOptions& options = {});

    ChildProcess& Process() noexcept { return process_; }
    HWND Window() const noexcept { return window_; }
    // Waits for the picker window; false when the process ended or it never came.
    bool WaitForWindow(DWORD timeoutMs = 60000);
    HWND Control(int id) const { return GetDlgItem(window_, id); }
    Text TextOf(int id) const { return testing::TextOf(Control(id)); }
    void Type(int id, TextView text) const { testing::Type(Control(id), text); }
    // A click on a button, posted, so that a box it opens does not hold this thread.
    void Click(int id) const { PostMessageW(Control(id), BM_CLICK, 0, 0); }
    // A click, then a double-click, on a row of the Mod list, as a mouse would make them.
    void ClickRow(int row, bool doubleClick = false) const;
    // The last report the launcher wrote; an empty value before the first.
    JsonValue Report() const;
    // Waits until the picker's window thread has finished what it was doing: a message sent now
    // is taken only between commands.
    bool Settle() const;
    // Waits until every message posted to the picker so far has been dealt with.
    bool Drain() const;
    // Waits until the status line reads `status` and the command that wrote it is done.
    bool WaitForStatus(TextView status, DWORD timeoutMs = 60000);
    // The next box the launcher shows, answered with `button`; empty when none came.
    MessageBoxSeen AnswerBox(int button = IDOK);
    // Waits for the launcher's end; its exit code, or 0xFFFFFFFF when it did not end.
    DWORD WaitForExit(DWORD timeoutMs = 120000) { return process_.Wait(timeoutMs) ? process_.ExitCode() : 0xFFFFFFFF; }

private:
    Text reportPath_;
    ChildProcess process_;
    HWND window_ = nullptr;
};

}  // namespace korvane::testing
