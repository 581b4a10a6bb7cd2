#include "MessageBoxes.h"

#include <gtest/gtest.h>

namespace korvane::testing {
namespace {

struct Search {
    DWORD processId = 0;
    TextView className;
    std::optional<TextView> title;
    HWND found = nullptr;
};

Text WindowText(HWND window)
{
    const int length = GetWindowTextLengthW(window);
    Text text(static_cast<size_t>(length) + 1, L'\0');
    GetWindowTextW(window, text.data(), length + 1);
    text.resize(static_cast<size_t>(length));
    return text;
}

BOOL CALLBACK FindWindowOfClass(HWND window, LPARAM parameter)
{
    auto* search = reinterpret_cast<Search*>(parameter);
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    wchar_t className[128] = {};
    const int length = GetClassNameW(window, className, 128);
    if (owner == search->processId && IsWindowVisible(window) &&
        EqualsIgnoringCase(TextView(className, static_cast<size_t>(length)), search->className) &&
        (!search->title || WindowText(window) == *search->title)) {
        search->found = window;
        return FALSE;
    }
    return TRUE;
}

}  // namespace

HWND FindVisibleWindow(DWORD processId, TextView className, std::optional<TextView> title)
{
    Search search{processId, className, title, nullptr};
    EnumWindows(FindWindowOfClass, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND WaitForVisibleWindow(DWORD processId, HANDLE process, TextView className, DWORD timeoutMs)
{
    const ULONGLONG deadline = GetTickCount64() + timeoutMs;
    for (;;) {
        if (HWND found = FindVisibleWindow(processId, className)) {
            return found;
        }
        if (GetTickCount64() >= deadline) {
            return nullptr;
        }
        // Poll briefly; an ended process cannot show a window any more.
        if (process == nullptr) {
            Sleep(20);
        } else if (WaitForSingleObject(process, 20) == WAIT_OBJECT_0) {
            return nullptr;
        }
    }
}

std::optional<MessageBoxSeen> WaitForMessageBox(DWORD processId, HANDLE process, DWORD timeoutMs)
{
    const HWND found = WaitForVisibleWindow(processId, process, L"#32770", timeoutMs);
    if (found == nullptr) {
        return std::nullopt;
    }
    MessageBoxSeen seen{found, WindowText(found), {}};
    // The message text is the static control with id 0xFFFF.
    if (HWND label = GetDlgItem(found, 0xFFFF)) {
        seen.text = WindowText(label);
    }
    return seen;
}

void PressMessageBoxButton(HWND box, int buttonId)
{
    PostMessageW(box, WM_COMMAND, MAKEWPARAM(buttonId, BN_CLICKED), reinterpret_cast<LPARAM>(GetDlgItem(box, buttonId)));
}

RunEnd WaitAnsweringBox(ChildProcess child, DWORD timeoutMs)
{
    RunEnd end{0xFFFFFFFF, WaitForMessageBox(child.Id(), child.Handle(), timeoutMs)};
    if (end.box) {
        PressMessageBoxButton(end.box->window, IDOK);
    }
    EXPECT_TRUE(child.Wait(timeoutMs)) << "the child did not end";
    end.exitCode = child.ExitCode();
    return end;
}

}  // namespace korvane::testing
