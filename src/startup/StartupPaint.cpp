#include "startup/StartupPaint.h"

#include "foundation/GdiSelection.h"
#include "startup/RoundedPanel.h"
#include "startup/StartupTexts.h"

namespace korvane {
namespace {

constexpr COLORREF kBaseFill = RGB(7, 17, 31);
constexpr COLORREF kTitleColour = RGB(229, 250, 255);
constexpr COLORREF kSubtitleColour = RGB(132, 194, 210);
constexpr COLORREF kDividerColour = RGB(28, 58, 73);
constexpr COLORREF kPhaseColour = RGB(225, 239, 244);
constexpr COLORREF kDetailColour = RGB(132, 166, 181);
constexpr COLORREF kButtonFill = RGB(22, 39, 55);
constexpr COLORREF kButtonBorder = RGB(35, 56, 73);
constexpr COLORREF kButtonCorner = RGB(11, 21, 36);
constexpr COLORREF kButtonTextColour = RGB(204, 223, 236);
constexpr COLORREF kTrackColour = RGB(20, 46, 60);

constexpr int kTrackLeft = 42;
constexpr int kTrackTop = 350;
constexpr int kTrackRight = 678;
constexpr int kTrackBottom = 353;
constexpr int kTrackLength = kTrackRight - kTrackLeft;  // 636
constexpr std::uint64_t kBarPassMs = 2400;
// The detail line stops short of the Cancel button when there is one.
constexpr int kDetailRightWithCancel = 582;
constexpr int kDetailRightAlone = 678;

void FillSolid(HDC dc, const RECT& rectangle, COLORREF colour)
{
    const UniqueBrush brush(CreateSolidBrush(colour));
    FillRect(dc, &rectangle, brush.Get());
}

void DrawLine(HDC dc, TextView text, RECT rectangle, HFONT font, COLORREF colour, UINT format)
{
    const GdiSelection selection(dc, font);
    SetTextColor(dc, colour);
    DrawTextW(dc, text.data(), static_cast<int>(text.size()), &rectangle, format);
}

bool DrawBackground(HDC dc, HBITMAP background, const RECT& client)
{
    BITMAP info{};
    if (GetObjectW(background, sizeof(info), &info) == 0) {
        return false;
    }
    const UniqueMemoryDc source(CreateCompatibleDC(dc));
    if (!source) {
        return false;
    }
    const GdiSelection selection(source.Get(), background);
    SetStretchBltMode(dc, HALFTONE);
    SetBrushOrgEx(dc, 0, 0, nullptr);
    return StretchBlt(dc, 0, 0, client.right, client.bottom, source.Get(), 0, 0, info.bmWidth, info.bmHeight, SRCCOPY)
        != FALSE;
}

void DrawMovingBar(HDC dc, std::uint64_t elapsedMs, std::uint32_t dpi)
{
    const GdiSelection selection(dc, GetStockObject(DC_BRUSH));
    for (int index = 0; index < kBarColumns; ++index) {
        const BarColumn column = MovingBarColumn(elapsedMs, index);
        SetDCBrushColor(dc, column.colour);
        const RECT rectangle = ScaledRect(kTrackLeft + column.x, kTrackTop, kTrackLeft + column.x + 1, kTrackBottom, dpi);
        FillRect(dc, &rectangle, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    }
}

}  // namespace

int ScaleForDpi(int value, std::uint32_t dpi) noexcept
{
    return MulDiv(value, static_cast<int>(dpi), 96);
}

RECT ScaledRect(int left, int top, int right, int bottom, std::uint32_t dpi) noexcept
{
    return RECT{ScaleForDpi(left, dpi), ScaleForDpi(top, dpi), ScaleForDpi(right, dpi), ScaleForDpi(bottom, dpi)};
}

RECT CancelButtonRect(std::uint32_t dpi) noexcept
{
    return ScaledRect(600, 309, 678, 339, dpi);
}

StartupFonts CreateStartupFonts(std::uint32_t dpi)
{
    const auto make = [dpi](int height, int weight) {
        return UniqueFont(CreateFontW(-ScaleForDpi(height, dpi), 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
            OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY, DEFAULT_PITCH | FF_DONTCARE, L"Segoe UI"));
    };
    StartupFonts fonts;
    fonts.title = make(35, 600);
    fonts.subtitle = make(15, 400);
    fonts.detail = make(13, 400);
    return fonts;
}

Text StartupDetailText(std::uint64_t elapsedMs, TextView cacheStatus, bool chinese)
{
    Text text = kWaitedBefore.In(chinese);
    text += DecimalText(elapsedMs / 1000);
    text += kWaitedAfter.In(chinese);
    if (!cacheStatus.empty()) {
        text += kDetailSeparator;
        text += cacheStatus;
    }
    return text;
}

BarColumn MovingBarColumn(std::uint64_t elapsedMs, int index) noexcept
{
    const int head = static_cast<int>(((elapsedMs % kBarPassMs) * kTrackLength) / kBarPassMs);
    const int x = (head + index) % kTrackLength;
    return BarColumn{x, RGB(34, 211 + (2 * index) / 5, 238 - (47 * index) / 96)};
}

bool DrawStartupCard(HDC dc, const StartupCard& card)
{
    const std::uint32_t dpi = card.dpi;
    const RECT client{0, 0, ScaleForDpi(kStartupCardWidth, dpi), ScaleForDpi(kStartupCardHeight, dpi)};
    FillSolid(dc, client, kBaseFill);
    const bool backgroundDrawn = card.background != nullptr && DrawBackground(dc, card.background, client);
    if (card.logo != nullptr) {
        const int size = ScaleForDpi(128, dpi);
        DrawIconEx(dc, ScaleForDpi(62, dpi), ScaleForDpi(112, dpi), card.logo, size, size, 0, nullptr, DI_NORMAL);
    }
    SetBkMode(dc, TRANSPARENT);
    DrawLine(dc, kProductName, ScaledRect(230, 124, 684, 178, dpi), card.fonts->title.Get(), kTitleColour,
        DT_SINGLELINE | DT_NOPREFIX);
    DrawLine(dc, kStartupSubtitle.In(card.chinese), ScaledRect(233, 185, 684, 218, dpi), card.fonts->subtitle.Get(),
        kSubtitleColour, DT_SINGLELINE | DT_NOPREFIX);
    FillSolid(dc, ScaledRect(42, 246, 678, 247, dpi), kDividerColour);

    DrawLine(dc, card.phaseText, ScaledRect(42, 267, 678, 306, dpi), card.fonts->subtitle.Get(), kPhaseColour,
        DT_WORDBREAK | DT_NOPREFIX | DT_END_ELLIPSIS);
    const int detailRight = card.showCancel ? kDetailRightWithCancel : kDetailRightAlone;
    DrawLine(dc, StartupDetailText(card.elapsedMs, card.cacheStatusText, card.chinese),
        ScaledRect(42, 313, detailRight, 336, dpi), card.fonts->detail.Get(), kDetailColour,
        DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    if (card.showCancel) {
        const RECT button = CancelButtonRect(dpi);
        // Corners and border stay 8 and 1 pixels at every DPI while the rectangle scales.
        DrawRoundedPanel(dc, button, kButtonFill, kButtonBorder, 96, kButtonCorner);
        DrawLine(dc, kCancelButtonText.In(card.chinese), button, card.fonts->detail.Get(), kButtonTextColour,
            DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    }
    FillSolid(dc, ScaledRect(kTrackLeft, kTrackTop, kTrackRight, kTrackBottom, dpi), kTrackColour);
    DrawMovingBar(dc, card.elapsedMs, dpi);
    return backgroundDrawn;
}

}  // namespace korvane
