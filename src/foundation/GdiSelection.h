#pragma once
// Scope-bound GDI pairings: an object selected into a DC is put back, a painted DC ends
// with EndPaint. Neither owns the object or the DC itself.

#include <windows.h>

namespace korvane {

class GdiSelection {
public:
    GdiSelection(HDC dc, HGDIOBJ object) noexcept : dc_(dc), previous_(SelectObject(dc, object)) {}
    ~GdiSelection()
    {
        if (previous_ != nullptr && previous_ != HGDI_ERROR) {
            SelectObject(dc_, previous_);
        }
    }
    GdiSelection(const GdiSelection&) = delete;
    GdiSelection& operator=(const GdiSelection&) = delete;

    bool Succeeded() const noexcept { return previous_ != nullptr && previous_ != HGDI_ERROR; }

private:
    HDC dc_;
    HGDIOBJ previous_;
};

class PaintScope {
public:
    explicit PaintScope(HWND window) noexcept : window_(window), dc_(BeginPaint(window, &paint_)) {}
    ~PaintScope()
    {
        if (dc_ != nullptr) {
            EndPaint(window_, &paint_);
        }
    }
    PaintScope(const PaintScope&) = delete;
    PaintScope& operator=(const PaintScope&) = delete;

    HDC Dc() const noexcept { return dc_; }

private:
    HWND window_;
    PAINTSTRUCT paint_{};
    HDC dc_;
};

}  // namespace korvane
