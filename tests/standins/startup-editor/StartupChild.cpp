// A small program that plays a starting editor for the start-up tests: it writes a log and
// shows windows, step by step, as its arguments say. The steps run in order:
//   --log=<path>             create (or truncate) the log, shared for reading, writing and deleting
//   --write=<text>           append the text and an LF, as UTF-8
//   --signal=<event name>    set a named event that the test made
//   --wait=<event name>      wait for a named event that the test made
//   --window=<w>x<h>[:<class>]  show a top-level window of that outer size (class made up if absent)
//   --owned-window=<w>x<h>   show a window owned by the last window
//   --hidden-window=<w>x<h>  create a window and leave it hidden
//   --exit=<code>            end at once with that code
//   --stay                   keep the windows up until the process is ended from outside
// Without --exit or --stay the program ends with code 0 after the last step.
#include <windows.h>
#include <shellapi.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

HANDLE logFile = INVALID_HANDLE_VALUE;
HWND lastWindow = nullptr;

bool TakeValue(const std::wstring& argument, const wchar_t* option, std::wstring& value)
{
    const std::wstring prefix(option);
    if (argument.compare(0, prefix.size(), prefix) != 0) {
        return false;
    }
    value = argument.substr(prefix.size());
    return true;
}

void AppendToLog(const std::wstring& text)
{
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(), length, nullptr, nullptr);
    bytes += '\n';
    DWORD written = 0;
    SetFilePointer(logFile, 0, nullptr, FILE_END);
    WriteFile(logFile, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    FlushFileBuffers(logFile);
}

LRESULT CALLBACK ChildWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return DefWindowProcW(window, message, wParam, lParam);
}

HWND MakeWindow(const std::wstring& size, DWORD style, HWND owner)
{
    wchar_t* end = nullptr;
    const int width = static_cast<int>(std::wcstol(size.c_str(), &end, 10));
    const int height = static_cast<int>(std::wcstol(end + 1, &end, 10));
    std::wstring className = L"StartupChildWindow";
    if (*end == L':') {
        className = end + 1;
    }
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = ChildWindowProc;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    windowClass.lpszClassName = className.c_str();
    RegisterClassExW(&windowClass);
    HWND window = CreateWindowExW(0, className.c_str(), L"Stand-in editor", style, 10, 10, width, height, owner, nullptr,
        GetModuleHandleW(nullptr), nullptr);
    if (window != nullptr && (style & WS_VISIBLE) != 0) {
        UpdateWindow(window);
    }
    return window;
}

void PumpForever()
{
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message);
    }
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int)
{
    int count = 0;
    LPWSTR* argv = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::wstring> arguments(argv + 1, argv + count);
    LocalFree(argv);
    for (const std::wstring& argument : arguments) {
        std::wstring value;
        if (TakeValue(argument, L"--log=", value)) {
            logFile = CreateFileW(value.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        } else if (TakeValue(argument, L"--write=", value)) {
            AppendToLog(value);
        } else if (TakeValue(argument, L"--signal=", value)) {
            HANDLE event = OpenEventW(EVENT_MODIFY_STATE, FALSE, value.c_str());
            SetEvent(event);
            CloseHandle(event);
        } else if (TakeValue(argument, L"--wait=", value)) {
            HANDLE event = OpenEventW(SYNCHRONIZE, FALSE, value.c_str());
            WaitForSingleObject(event, INFINITE);
            CloseHandle(event);
        } else if (TakeValue(argument, L"--window=", value)) {
            lastWindow = MakeWindow(value, WS_POPUP | WS_VISIBLE, nullptr);
        } else if (TakeValue(argument, L"--owned-window=", value)) {
            MakeWindow(value, WS_POPUP | WS_VISIBLE, lastWindow);
        } else if (TakeValue(argument, L"--hidden-window=", value)) {
            MakeWindow(value, WS_POPUP, nullptr);
        } else if (TakeValue(argument, L"--exit=", value)) {
            return static_cast<int>(std::wcstoul(value.c_str(), nullptr, 10));
        } else if (argument == L"--stay") {
            PumpForever();
        }
    }
    return 0;
}
