#include "ScreenPicture.h"

#include "foundation/GdiSelection.h"
#include "foundation/UniqueResource.h"

namespace korvane::testing {

ScreenPicture ScreenPicture::Of(HDC source, RECT area)
{
    ScreenPicture picture{area.right - area.left, area.bottom - area.top, {}};
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(info.bmiHeader), picture.width, -picture.height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    const UniqueMemoryDc memory(CreateCompatibleDC(source));
    const UniqueBitmap section(CreateDIBSection(source, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    const GdiSelection selection(memory.Get(), section.Get());
    if (bits != nullptr &&
        BitBlt(memory.Get(), 0, 0, picture.width, picture.height, source, area.left, area.top, SRCCOPY)) {
        GdiFlush();
        const auto* first = static_cast<const DWORD*>(bits);
        picture.pixels.assign(first, first + picture.width * picture.height);
    }
    return picture;
}

ScreenPicture ScreenPicture::OfScreen(RECT area)
{
    const HDC screen = GetDC(nullptr);
    ScreenPicture picture = Of(screen, area);
    ReleaseDC(nullptr, screen);
    return picture;
}

COLORREF ScreenPicture::At(int x, int y) const
{
    if (x < 0 || y < 0 || x >= width || y >= height || pixels.empty()) {
        return CLR_INVALID;
    }
    const DWORD pixel = pixels[static_cast<std::size_t>(y) * width + x];
    return RGB((pixel >> 16) & 0xFF, (pixel >> 8) & 0xFF, pixel & 0xFF);
}

}  // namespace korvane::testing
