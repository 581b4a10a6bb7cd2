// A bare Win32 window that reports when its first paint has ended: the baseline for the
// windows' first paints. Arguments: "[-size=<width>x<height> -stayMs=<n>] <report path>"; by
// default a 720 x 370 pop-up like a splash window that ends at its first paint, else an
// ordinary main window (caption, frame) of that client size that stays shown for n
// milliseconds after it. The report is one decimal number, milliseconds from
// process start (GetTickCount64 at entry) to the end of the first paint, plus 1.
//
// Built a second time as controls_window.exe (KORVANE_BARE_CONTROLS, with the launcher's
// manifest): the same window, which makes the picker's seventeen controls in WM_CREATE, of
// the same classes and styles and in the same order, and nothing else (no fonts, texts, theme
// or owner drawing), then shows itself as the picker does. It is the least any picker of that
// make-up can take to its first paint, which tells the cost of the controls themselves from
// the cost of the picker's own code.
#include <windows.h>
#ifdef KORVANE_BARE_CONTROLS
#include <commctrl.h>
#endif

#include <cstdio>
#include <cwchar>
#include <string>

namespace {

ULONGLONG startTick = 0;
std::wstring reportPath;
bool painted = false;
UINT stayMs = 0;  // 0: end at the first paint

#ifdef KORVANE_BARE_CONTROLS
void CreatePickerControls(HWND window)
{
    struct Control {
        const wchar_t* className;
        DWORD style;
        int id;
    };
    const Control controls[] = {{L"EDIT", 0x50010080, 1001}, {L"EDIT", 0x50010080, 1006}, {L"EDIT", 0x50010080, 1008},
        {L"STATIC", 0x50000000, 1005}, {L"LISTBOX", 0x50010111, 1009}, {TOOLTIPS_CLASSW, 0x80000003, 0},
        {L"COMBOBOX", 0x50010213, 1015}, {L"BUTTON", 0x5001000B, 1002}, {L"BUTTON", 0x5001000B, 1007},
        {L"BUTTON", 0x5001000B, 1014}, {L"BUTTON", 0x5001000B, 1010}, {L"BUTTON", 0x5001000B, 1011},
        {L"BUTTON", 0x5001000B, 1012}, {L"BUTTON", 0x5001000B, 1003}, {L"BUTTON", 0x5001000B, 1004}};
    int y = 8;
    for (const Control& control : controls) {
        const bool tooltip = control.id == 0;
        CreateWindowExW(tooltip ? WS_EX_TOPMOST : 0, control.className, nullptr, control.style, 8, y, 200,
            control.id == 1015 ? 240 : 30, tooltip ? nullptr : window,
            reinterpret_cast<HMENU>(static_cast<INT_PTR>(control.id)), GetModuleHandleW(nullptr), nullptr);
        y += tooltip ? 0 : 36;
    }
}
#endif

LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
#ifdef KORVANE_BARE_CONTROLS
    case WM_CREATE:
        CreatePickerControls(window);
        return 0;
#endif
    case WM_PAINT: {
        PAINTSTRUCT paint;
        HDC dc = BeginPaint(window, &paint);
        RECT client;
        GetClientRect(window, &client);
        HBRUSH brush = CreateSolidBrush(RGB(7, 17, 31));
        FillRect(dc, &client, brush);
        DeleteObject(brush);
        EndPaint(window, &paint);
        if (!painted) {
            painted = true;
            const ULONGLONG elapsed = GetTickCount64() - startTick + 1;
            HANDLE file = CreateFileW(reportPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
            if (file != INVALID_HANDLE_VALUE) {
                char text[32];
                const int length = std::snprintf(text, sizeof(text), "%llu", elapsed);
                DWORD written = 0;
                WriteFile(file, text, static_cast<DWORD>(length), &written, nullptr);
                CloseHandle(file);
            }
            if (stayMs == 0) {
                PostQuitMessage(0);
            } else {
                SetTimer(window, 1, stayMs, nullptr);
            }
        }
        return 0;
    }
    case WM_TIMER:
        DestroyWindow(window);
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR commandLine, int)
{
    startTick = GetTickCount64();
#ifdef KORVANE_BARE_CONTROLS
    // Loaded here, after the start is taken, as the launcher's delay-load does.
    const HMODULE commonControlsLibrary = LoadLibraryW(L"comctl32.dll");
    const auto initCommonControls = reinterpret_cast<BOOL(WINAPI*)(const INITCOMMONCONTROLSEX*)>(
        reinterpret_cast<void*>(GetProcAddress(commonControlsLibrary, "InitCommonControlsEx")));
    const INITCOMMONCONTROLSEX commonControls{sizeof(INITCOMMONCONTROLSEX), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
    if (initCommonControls != nullptr) {
        initCommonControls(&commonControls);
    }
#endif
    int width = 720;
    int height = 370;
    std::wstring arguments = commandLine;
    if (arguments.rfind(L"-size=", 0) == 0) {
        std::swscanf(arguments.c_str(), L"-size=%dx%d -stayMs=%u", &width, &height, &stayMs);
        const std::size_t tail = arguments.find(L' ', arguments.find(L"-stayMs="));
        arguments = tail == std::wstring::npos ? std::wstring() : arguments.substr(tail + 1);
    }
    reportPath = arguments;
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = WindowProc;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = L"KorvaneBareWindow";
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    RegisterClassExW(&windowClass);
#ifdef KORVANE_BARE_CONTROLS
    const DWORD style = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;
#else
    const DWORD style = stayMs == 0 ? WS_POPUP : WS_OVERLAPPEDWINDOW;
#endif
    RECT frame{0, 0, width, height};
    AdjustWindowRectEx(&frame, style, FALSE, WS_EX_APPWINDOW);
    HWND window = CreateWindowExW(WS_EX_APPWINDOW, windowClass.lpszClassName, L"Bare", style, 100, 100,
        frame.right - frame.left, frame.bottom - frame.top, nullptr, nullptr, instance, nullptr);
#ifdef KORVANE_BARE_CONTROLS
    SetWindowPos(window, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW | SWP_NOREDRAW);
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
#else
    ShowWindow(window, SW_SHOWNOACTIVATE);
#endif
    UpdateWindow(window);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message);
    }
    return 0;
}
