#include "picker/PickerPaint.h"

#include "context/LaunchContext.h"
#include "foundation/GdiSelection.h"
#include "picker/PickerLayout.h"
#include "picker/PickerTexts.h"
#include "picker/Theme.h"
#include "startup/RoundedPanel.h"

namespace korvane {
namespace {

struct Surface {
    HDC dc;
    std::uint32_t dpi;

    RECT At(int left, int top, int right, int bottom) const noexcept
    {
        return RECT{ScaleToDpi(left, dpi), ScaleToDpi(top, dpi), ScaleToDpi(right, dpi), ScaleToDpi(bottom, dpi)};
    }
    void Fill(const RECT& rectangle, COLORREF colour) const
    {
        const UniqueBrush brush(CreateSolidBrush(colour));
        FillRect(dc, &rectangle, brush.Get());
    }
};

void PaintSurface(const LaunchContext& context, const Surface& s, int width, int height)
{
    const PickerState& picker = context.picker;
    const HFONT body = picker.bodyFont.Get();
    const HFONT title = picker.titleFont.Get();
    s.Fill(RECT{0, 0, ScaleToDpi(width, s.dpi) + 1, ScaleToDpi(height, s.dpi) + 1}, palette::kWindow);
    DrawRoundedPanel(s.dc, s.At(24, 24, 296, height - 24), palette::kSdkPanel, palette::kBorder, s.dpi, palette::kWindow);

    const RECT iconBox = s.At(78, 80, 258, 236);
    if (picker.gameIcon) {
        DrawFittedImage(s.dc, picker.gameIcon.Get(), iconBox);
    } else {
        DrawRoundedPanel(s.dc, iconBox, palette::kButtonFill, palette::kBorder, s.dpi, palette::kSdkPanel);
        const Text letter = picker.gameTitle.empty() ? Text(kSdkHeading) : picker.gameTitle.substr(0, 1);
        DrawThemeText(s.dc, letter, iconBox, title, RGB(81, 213, 214), kTileFormat);
    }

    DrawThemeText(s.dc, kSdkHeading, s.At(40, 40, 280, 64), body, RGB(105, 219, 201), kLineFormat);
    DrawThemeText(s.dc, picker.gameTitle.empty() ? kChooseSdkTitle.Now() : picker.gameTitle, s.At(40, 252, 280, 282),
        body, RGB(232, 244, 255), kLineFormat);
    DrawThemeText(s.dc, kGameVersionLabel.Now() + picker.gameVersion, s.At(40, 292, 280, 314), body, RGB(164, 185, 206),
        kLineFormat);
    DrawThemeText(s.dc, kEnginePrefix + picker.engineVersion.substr(0, picker.engineVersion.find(L'-')),
        s.At(40, 320, 280, 342), body, RGB(105, 219, 201), kLineFormat);
    s.Fill(s.At(40, 358, 280, 359), palette::kBorder);
    DrawThemeText(s.dc, kSdkFileLabel.Now(), s.At(40, 370, 280, 390), body, RGB(205, 223, 236), kLineFormat);
    DrawThemeText(s.dc, kGameFolderLabel.Now(), s.At(40, height - 112, 280, height - 90), body, RGB(148, 177, 193),
        kLineFormat);
    DrawThemeText(s.dc, kChooseModHeading.Now(), s.At(320, 20, width - 212, 62), title, RGB(231, 248, 255), kLineFormat);
    DrawThemeText(s.dc, kChooseModSubheading.Now(), s.At(320, 62, width - 24, 84), body, RGB(164, 185, 206),
        kLineFormat);
}

}  // namespace

void PaintPicker(const LaunchContext& context, HDC dc)
{
    RECT client{};
    GetClientRect(context.picker.pickerWindow, &client);
    const std::uint32_t dpi = context.previewDpi;
    const int width = MulDiv(client.right, 96, static_cast<int>(dpi));
    const int height = MulDiv(client.bottom, 96, static_cast<int>(dpi));
    const UniqueMemoryDc buffer(CreateCompatibleDC(dc));
    const UniqueBitmap bitmap(CreateCompatibleBitmap(dc, client.right, client.bottom));
    if (!buffer || !bitmap) {
        PaintSurface(context, Surface{dc, dpi}, width, height);
        return;
    }
    {
        const GdiSelection selection(buffer.Get(), bitmap.Get());
        PaintSurface(context, Surface{buffer.Get(), dpi}, width, height);
        BitBlt(dc, 0, 0, client.right, client.bottom, buffer.Get(), 0, 0, SRCCOPY);
    }
}

}  // namespace korvane
