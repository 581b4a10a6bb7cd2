// A bare Win32 window that reports when its first paint has ended: the baseline for the
// windows' first paints. Arguments: "[-size=<width>x<height> -stayMs=<n>] <report path>"; by
// default a 720 x 370 pop-up like a splash window that ends at its first paint, else an
// ordinary main window (caption, frame) of that client size that stays shown for n
// milliseconds after it. The report is one decimal number, milliseconds from
// process start (GetTickCount64 at entry) to the end of the first paint, plus 1.
#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <string>

namespace {

ULONGLONG startTick = 0;
std::wstring reportPath;
bool painted = false;
UINT stayMs = 0;  // 0: end at the first paint

LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
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
    const DWORD style = stayMs == 0 ? WS_POPUP : WS_OVERLAPPEDWINDOW;
    RECT frame{0, 0, width, height};
    AdjustWindowRectEx(&frame, style, FALSE, WS_EX_APPWINDOW);
    HWND window = CreateWindowExW(WS_EX_APPWINDOW, windowClass.lpszClassName, L"Bare", style, 100, 100,
        frame.right - frame.left, frame.bottom - frame.top, nullptr, nullptr, instance, nullptr);
    ShowWindow(window, SW_SHOWNOACTIVATE);
    UpdateWindow(window);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message);
    }
    return 0;
}
