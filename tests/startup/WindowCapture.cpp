#include "WindowCapture.h"

#include "foundation/GdiSelection.h"
#include "foundation/GdiplusSession.h"
#include "foundation/UniqueResource.h"

#include <objidl.h>
#include <gdiplus.h>

namespace korvane::testing {

ScreenImage ScreenImage::OfWindow(HWND window)
{
    ScreenImage image;
    RECT bounds{};
    if (!GetWindowRect(window, &bounds)) {
        return image;
    }
    image.width_ = bounds.right - bounds.left;
    image.height_ = bounds.bottom - bounds.top;
    image.pixels_.assign(static_cast<std::size_t>(image.width_) * static_cast<std::size_t>(image.height_), 0);

    HDC screen = GetDC(nullptr);
    const UniqueMemoryDc memory(CreateCompatibleDC(screen));
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = image.width_;
    info.bmiHeader.biHeight = -image.height_;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    const UniqueBitmap section(CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (section && bits != nullptr) {
        const GdiSelection selection(memory.Get(), section.Get());
        BitBlt(memory.Get(), 0, 0, image.width_, image.height_, screen, bounds.left, bounds.top, SRCCOPY);
        GdiFlush();
        const auto* source = static_cast<const std::uint32_t*>(bits);
        image.pixels_.assign(source, source + image.pixels_.size());
    }
    ReleaseDC(nullptr, screen);
    return image;
}

Colour ScreenImage::At(int x, int y) const
{
    if (x < 0 || y < 0 || x >= width_ || y >= height_) {
        return Colour{-1, -1, -1};
    }
    const std::uint32_t pixel = pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)];
    return Colour{static_cast<int>((pixel >> 16) & 0xFF), static_cast<int>((pixel >> 8) & 0xFF), static_cast<int>(pixel & 0xFF)};
}

bool ScreenImage::SavePng(TextView path) const
{
    const GdiplusSession session;
    if (!session.IsActive() || width_ == 0) {
        return false;
    }
    std::vector<std::uint32_t> copy = pixels_;
    for (std::uint32_t& pixel : copy) {
        pixel |= 0xFF000000u;  // opaque
    }
    Gdiplus::Bitmap bitmap(width_, height_, width_ * 4, PixelFormat32bppARGB, reinterpret_cast<BYTE*>(copy.data()));
    // The PNG encoder of GDI+.
    const CLSID pngEncoder{0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
    const Text target(path);
    return bitmap.Save(target.c_str(), &pngEncoder, nullptr) == Gdiplus::Ok;
}

}  // namespace korvane::testing
