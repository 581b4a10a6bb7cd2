#include "editor/EditorWindows.h"

namespace korvane::standins {
namespace {

constexpr wchar_t kSplashClass[] = L"SplashScreenClass";
constexpr wchar_t kMainClass[] = L"UnrealWindow";

}  // namespace

EditorWindows::EditorWindows(HINSTANCE instance) : instance_(instance)
{
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = &EditorWindows::Procedure;
    windowClass.hInstance = instance;
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    windowClass.lpszClassName = kSplashClass;
    RegisterClassExW(&windowClass);
    windowClass.lpszClassName = kMainClass;
    RegisterClassExW(&windowClass);
}

EditorWindows::~EditorWindows()
{
    CloseSplash();
    CloseMain();
}

void EditorWindows::ShowSplash(TextView text)
{
    splash_ = CreateWindowExW(0, kSplashClass, Text(text).c_str(), WS_POPUP | WS_VISIBLE | WS_BORDER, 200, 200, 600, 240,
        nullptr, nullptr, instance_, this);
    UpdateWindow(splash_);
}

void EditorWindows::CloseSplash()
{
    if (splash_ != nullptr) {
        const HWND window = splash_;
        splash_ = nullptr;
        DestroyWindow(window);
    }
}

void EditorWindows::ShowMain(TextView title)
{
    main_ = CreateWindowExW(0, kMainClass, Text(title).c_str(), WS_OVERLAPPEDWINDOW | WS_VISIBLE, 80, 80, 1024, 720,
        nullptr, nullptr, instance_, this);
    mainShown_ = main_ != nullptr;
    UpdateWindow(main_);
}

void EditorWindows::CloseMain()
{
    if (main_ != nullptr) {
        DestroyWindow(main_);
    }
}

bool EditorWindows::PumpFor(DWORD ms)
{
    const ULONGLONG end = ms == INFINITE ? ~0ull : GetTickCount64() + ms;
    for (;;) {
        MSG message{};
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        if (MainClosed()) {
            return false;
        }
        const ULONGLONG now = GetTickCount64();
        if (now >= end) {
            return true;
        }
        const ULONGLONG left = end - now;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, left > 60000 ? 60000 : static_cast<DWORD>(left), QS_ALLINPUT);
    }
}

LRESULT CALLBACK EditorWindows::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NCCREATE) {
        const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
    }
    auto* self = reinterpret_cast<EditorWindows*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    switch (message) {
    case WM_PAINT: {
        PAINTSTRUCT paint{};
        const HDC dc = BeginPaint(window, &paint);
        wchar_t title[512] = {};
        GetWindowTextW(window, title, static_cast<int>(std::size(title)));
        RECT area{};
        GetClientRect(window, &area);
        DrawTextW(dc, title, -1, &area, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
        EndPaint(window, &paint);
        return 0;
    }
    case WM_DESTROY:
        if (self != nullptr && window == self->main_) {
            self->main_ = nullptr;
        }
        if (self != nullptr && window == self->splash_) {
            self->splash_ = nullptr;
        }
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

}  // namespace korvane::standins
