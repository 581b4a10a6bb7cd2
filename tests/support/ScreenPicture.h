#pragma once
// Pixels as a person sees them, copied from the screen.

#include <windows.h>

#include <vector>

namespace korvane::testing {

struct ScreenPicture {
    // The pixels of `area` of `source` (the screen's DC: screen coordinates).
    static ScreenPicture Of(HDC source, RECT area);
    static ScreenPicture OfScreen(RECT area);

    // The window's pixels once `shown` holds, five seconds at most: a paint reaches the screen a
    // little after the paint itself, and nothing signals that. Test programs share one display,
    // so the window is raised first.
    template <typename Predicate>
    static ScreenPicture OfWindow(HWND window, Predicate shown)
    {
        SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
        RECT bounds{};
        GetWindowRect(window, &bounds);
        ScreenPicture picture = OfScreen(bounds);
        for (const ULONGLONG deadline = GetTickCount64() + 5000; !shown(picture) && GetTickCount64() < deadline;) {
            Sleep(20);
            picture = OfScreen(bounds);
        }
        return picture;
    }

    // CLR_INVALID outside the picture.
    COLORREF At(int x, int y) const;

    template <typename Test>
    int Count(RECT area, Test test) const
    {
        int count = 0;
        for (int y = area.top; y < area.bottom; ++y) {
            for (int x = area.left; x < area.right; ++x) {
                count += test(At(x, y)) ? 1 : 0;
            }
        }
        return count;
    }

    int width = 0;
    int height = 0;
    std::vector<DWORD> pixels;  // 0x00RRGGBB, rows from the top
};

}  // namespace korvane::testing
