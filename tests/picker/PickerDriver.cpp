#include "PickerDriver.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "picker/PickerIds.h"

namespace korvane::testing {

Text TextOf(HWND control)
{
    wchar_t text[4096] = {};
    SendMessageW(control, WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text));
    return text;
}

void Type(HWND edit, TextView text)
{
    SendMessageW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(Text(text).c_str()));
}

PickerProcess::PickerProcess(
    TextView launcher, std::vector<Text> arguments, TextView reportFolder, const ProcessOptions& options)
    : reportPath_(JoinPath(reportFolder, L"picker-report.json"))
{
    arguments.push_back(L"-KorvanePickerReport=" + reportPath_);
    ProcessOptions shown = options;
    shown.hidden = false;
    if (shown.currentDirectory.empty()) {
        shown.currentDirectory = ParentPath(launcher);
    }
    process_ = ChildProcess::Start(launcher, arguments, shown);
}

bool PickerProcess::WaitForWindow(DWORD timeoutMs)
{
    WaitUntil(process_, [this] { return (window_ = FindVisibleWindow(process_.Id(), kPickerWindowClass)) != nullptr; },
        timeoutMs);
    return window_ != nullptr;
}

void PickerProcess::ClickRow(int row, bool doubleClick) const
{
    const HWND list = Control(kModListId);
    RECT rowRect{};
    SendMessageW(list, LB_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&rowRect));
    const LPARAM point = MAKELPARAM((rowRect.left + rowRect.right) / 2, (rowRect.top + rowRect.bottom) / 2);
    PostMessageW(list, WM_LBUTTONDOWN, MK_LBUTTON, point);
    PostMessageW(list, WM_LBUTTONUP, 0, point);
    if (doubleClick) {
        PostMessageW(list, WM_LBUTTONDBLCLK, MK_LBUTTON, point);
        PostMessageW(list, WM_LBUTTONUP, 0, point);
    }
}

JsonValue PickerProcess::Report() const
{
    const Bytes bytes = ReadWholeFile(reportPath_, 1048576);
    try {
        return bytes.empty() ? JsonValue() : ParseJson(bytes);
    } catch (const std::exception&) {
        return {};  // caught while the launcher rewrote it
    }
}

bool PickerProcess::Settle() const
{
    DWORD_PTR ignored = 0;
    return SendMessageTimeoutW(window_, WM_NULL, 0, 0, SMTO_BLOCK, 60000, &ignored) != 0;
}

bool PickerProcess::Drain() const
{
    // Posted messages are taken in order: once a marker posted behind them has taken effect, they
    // all have. The marker moves the search field's text limit by one, and is then undone.
    const HWND search = Control(kSearchEditId);
    const LRESULT limit = SendMessageW(search, EM_GETLIMITTEXT, 0, 0);
    PostMessageW(search, EM_SETLIMITTEXT, static_cast<WPARAM>(limit ^ 1), 0);
    const bool drained =
        WaitUntil(process_, [&] { return SendMessageW(search, EM_GETLIMITTEXT, 0, 0) == (limit ^ 1); });
    SendMessageW(search, EM_SETLIMITTEXT, static_cast<WPARAM>(limit), 0);
    return drained && Settle();
}

bool PickerProcess::WaitForStatus(TextView status, DWORD timeoutMs)
{
    // The status line itself, not the report: a read of the report at the moment the launcher
    // rewrites it makes that write fail, since the report is written without sharing. Once the
    // command is done, the report is safe to read.
    return WaitUntil(process_, [&] { return TextOf(kStatusLineId) == status; }, timeoutMs) && Settle() &&
           TextOf(kStatusLineId) == status;
}

MessageBoxSeen PickerProcess::AnswerBox(int button)
{
    const auto box = WaitForMessageBox(process_.Id(), process_.Handle(), 60000);
    if (!box) {
        return {};
    }
    PressMessageBoxButton(box->window, button);
    WaitUntil(process_, [&] { return IsWindow(box->window) == FALSE; });
    return *box;
}

}  // namespace korvane::testing
