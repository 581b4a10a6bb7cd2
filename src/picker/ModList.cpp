#include "picker/ModList.h"

#include "context/LaunchContext.h"
#include "foundation/GdiSelection.h"
#include "picker/PickerLayout.h"
#include "picker/PickerTexts.h"
#include "picker/Theme.h"
#include "startup/RoundedPanel.h"

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>

namespace korvane {
namespace {

constexpr UINT_PTR kModListSubclassId = 4;
constexpr int kScrollGrip = 12;
constexpr int kWheelRows = 3;

void Fill(HDC dc, const RECT& rectangle, COLORREF colour)
{
    const UniqueBrush brush(CreateSolidBrush(colour));
    FillRect(dc, &rectangle, brush.Get());
}

RECT Offset(const RECT& card, int left, int top, int right, int height, std::uint32_t dpi)
{
    const int y = card.top + ScaleToDpi(top, dpi);
    return RECT{card.left + ScaleToDpi(left, dpi), y, card.right - ScaleToDpi(right, dpi), y + ScaleToDpi(height, dpi)};
}

int TopIndex(HWND list)
{
    return static_cast<int>(SendMessageW(list, LB_GETTOPINDEX, 0, 0));
}

void ScrollTo(HWND list, int top, const ModListPage& page)
{
    SendMessageW(list, LB_SETTOPINDEX, static_cast<WPARAM>(std::clamp(top, 0, page.maxTop)), 0);
}

void DragTo(const LaunchContext& context, HWND list, int y)
{
    RECT client{};
    GetClientRect(list, &client);
    const ModListPage page = ModListPageOf(context);
    const int track = std::max(1, static_cast<int>(client.bottom) - ScaleToDpi(kScrollGrip, context.previewDpi));
    ScrollTo(list, MulDiv(y, page.maxTop, track), page);
    InvalidateRect(list, nullptr, FALSE);
}

void PaintOverRows(const LaunchContext& context, HWND list)
{
    const HDC dc = GetDC(list);
    if (dc == nullptr) {
        return;
    }
    const std::uint32_t dpi = context.previewDpi;
    RECT client{};
    GetClientRect(list, &client);
    if (context.picker.visibleRows.empty()) {
        Fill(dc, client, palette::kField);
        RECT textArea = client;
        InflateRect(&textArea, -ScaleToDpi(24, dpi), -ScaleToDpi(24, dpi));
        DrawThemeText(dc, kEmptyListText.Now(), textArea, context.picker.bodyFont.Get(), RGB(164, 185, 206),
            DT_CENTER | DT_VCENTER | DT_WORDBREAK);
    }
    const ModListPage page = ModListPageOf(context);
    if (page.maxTop > 0) {
        const int pad = ScaleToDpi(6, dpi);
        const RECT track{client.right - ScaleToDpi(8, dpi), pad, client.right - ScaleToDpi(3, dpi), client.bottom - pad};
        Fill(dc, track, palette::kField);
        const int span = client.bottom - 2 * pad;
        const int thumbHeight = std::max(ScaleToDpi(24, dpi), span * page.page / std::max(1, page.rows));
        const int thumbTop = pad + MulDiv(span - thumbHeight, std::min(TopIndex(list), page.maxTop), page.maxTop);
        Fill(dc, RECT{track.left, thumbTop, track.right, thumbTop + thumbHeight}, palette::kScrollThumb);
    }
    ReleaseDC(list, dc);
}

LRESULT CALLBACK ModListProc(HWND list, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR data)
{
    auto& context = *reinterpret_cast<LaunchContext*>(data);
    PickerState& picker = context.picker;
    switch (message) {
    case WM_MOUSEMOVE: {
        const LRESULT hit = SendMessageW(list, LB_ITEMFROMPOINT, 0, lParam);
        const std::int32_t row = HIWORD(hit) != 0 ? -1 : static_cast<std::int32_t>(LOWORD(hit));
        if (row != picker.hoverRow) {
            SendMessageW(picker.modTooltip, TTM_POP, 0, 0);
            picker.hoverRow = row;
        }
        if (picker.scrollbarDragging) {
            DragTo(context, list, GET_Y_LPARAM(lParam));
            return 0;
        }
        break;
    }
    case WM_MOUSEWHEEL: {
        const ModListPage page = ModListPageOf(context);
        if (page.maxTop > 0) {
            const int notches = GET_WHEEL_DELTA_WPARAM(wParam) / WHEEL_DELTA;
            ScrollTo(list, TopIndex(list) - kWheelRows * notches, page);
            return 0;
        }
        break;
    }
    case WM_LBUTTONDOWN: {
        RECT client{};
        GetClientRect(list, &client);
        if (ModListPageOf(context).maxTop > 0 &&
            GET_X_LPARAM(lParam) >= client.right - ScaleToDpi(kScrollGrip, context.previewDpi)) {
            picker.scrollbarDragging = true;
            SetCapture(list);
            DragTo(context, list, GET_Y_LPARAM(lParam));
            return 0;
        }
        break;
    }
    case WM_LBUTTONUP:
        if (picker.scrollbarDragging) {
            picker.scrollbarDragging = false;
            ReleaseCapture();
            return 0;
        }
        break;
    case WM_CAPTURECHANGED:
        picker.scrollbarDragging = false;
        break;
    case WM_PAINT: {
        const LRESULT result = DefSubclassProc(list, message, wParam, lParam);
        PaintOverRows(context, list);
        return result;
    }
    case WM_NCDESTROY:
        RemoveWindowSubclass(list, ModListProc, kModListSubclassId);
        break;
    default:
        break;
    }
    return DefSubclassProc(list, message, wParam, lParam);
}

}  // namespace

ModListPage ModListPageOf(const LaunchContext& context)
{
    RECT client{};
    GetClientRect(context.picker.modList, &client);
    ModListPage page;
    page.rows = static_cast<int>(context.picker.visibleRows.size());
    page.page = std::max(1, static_cast<int>(client.bottom) / ScaleToDpi(kModRowHeight, context.previewDpi));
    page.maxTop = std::max(0, page.rows - page.page);
    return page;
}

void SubclassModList(LaunchContext& context)
{
    SetWindowSubclass(context.picker.modList, ModListProc, kModListSubclassId, reinterpret_cast<DWORD_PTR>(&context));
}

void DrawModRow(const LaunchContext& context, const DRAWITEMSTRUCT& item)
{
    const PickerState& picker = context.picker;
    if (item.itemID == static_cast<UINT>(-1) || item.itemData >= picker.mods.size()) {
        return;
    }
    const ModEntry& mod = picker.mods[item.itemData];
    const std::uint32_t dpi = context.previewDpi;
    const HDC dc = item.hDC;
    Fill(dc, item.rcItem, palette::kWindow);
    RECT card = item.rcItem;
    card.bottom -= ScaleToDpi(kModCardGap, dpi);
    const bool selected = (item.itemState & ODS_SELECTED) != 0;
    DrawRoundedPanel(dc, card, selected ? palette::kSelectedCard : palette::kField,
        selected ? palette::kSelectedCardBorder : palette::kBorder, dpi, palette::kWindow);

    const RECT thumbnail{card.left + ScaleToDpi(10, dpi), card.top + ScaleToDpi(10, dpi), card.left + ScaleToDpi(82, dpi),
        card.bottom - ScaleToDpi(10, dpi)};
    Fill(dc, thumbnail, palette::kThumbnailBox);
    if (mod.cover) {
        DrawFittedImage(dc, mod.cover.Get(), thumbnail);
    } else {
        DrawThemeText(dc, L"M", thumbnail, picker.titleFont.Get(), RGB(86, 213, 212), kTileFormat);
    }

    const HFONT body = picker.bodyFont.Get();
    DrawThemeText(dc, mod.name, Offset(card, 96, 8, 10, 25, dpi), body, RGB(232, 244, 255), kLineFormat);
    DrawThemeText(dc, mod.authorName + kRowSeparator + mod.id, Offset(card, 96, 34, 10, 21, dpi), body,
        RGB(165, 185, 203), kLineFormat);
    DrawThemeText(dc, kRowGameVersions.Now() + mod.supportedGameVersions, Offset(card, 96, 59, 10, 22, dpi), body,
        RGB(105, 219, 201), kLineFormat);
    DrawThemeText(dc, kRowSource.Now() + mod.modProject, Offset(card, 96, 84, 10, 20, dpi), body, RGB(148, 177, 193),
        DT_PATH_ELLIPSIS | DT_NOPREFIX | DT_SINGLELINE | DT_VCENTER);
}

}  // namespace korvane
