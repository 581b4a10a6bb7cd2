#include "picker/Theme.h"

#include "context/LaunchContext.h"
#include "foundation/GdiSelection.h"
#include "picker/PickerLayout.h"
#include "startup/RoundedPanel.h"

#include <commctrl.h>
#include <dwmapi.h>

#include <algorithm>

namespace korvane {
namespace {

constexpr UINT_PTR kEditSubclassId = 1;
constexpr UINT_PTR kComboSubclassId = 2;
constexpr UINT_PTR kButtonSubclassId = 3;

constexpr int kEditMargin = 10;
constexpr int kEditInset = 2;

// A number carried in a window property; 0 when absent.
UINT_PTR PropertyNumber(HWND window, const wchar_t* name) noexcept
{
    return reinterpret_cast<UINT_PTR>(GetPropW(window, name));
}

std::uint32_t EditDpi(HWND edit) noexcept
{
    const UINT_PTR stored = PropertyNumber(edit, kControlDpiProperty);
    return stored != 0 ? static_cast<std::uint32_t>(stored) : GetDpiForWindow(edit);
}

void SetEditMargins(HWND edit)
{
    const int margin = ScaleToDpi(kEditMargin, EditDpi(edit));
    SendMessageW(edit, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, MAKELPARAM(margin, margin));
}

// The frame worked out anew and the margins set again. Re-centring resizes the client area,
// which comes back through WM_SIZE; the property keeps that from doing it all a second time.
void RecentreEdit(HWND edit)
{
    SetPropW(edit, kCenteringProperty, reinterpret_cast<HANDLE>(1));
    SetWindowPos(edit, nullptr, 0, 0, 0, 0, SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    RemovePropW(edit, kCenteringProperty);
    SetEditMargins(edit);
}

int FontHeight(HWND control)
{
    const HDC dc = GetDC(control);
    if (dc == nullptr) {
        return 0;
    }
    TEXTMETRICW metrics{};
    {
        const GdiSelection font(dc, reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)));
        GetTextMetricsW(dc, &metrics);
    }
    ReleaseDC(control, dc);
    return metrics.tmHeight;
}

// The client rectangle narrowed for the frame and cut to one line of text, centred.
void CentreClientArea(HWND edit, RECT& client)
{
    const int inset = std::max(1, ScaleToDpi(kEditInset, EditDpi(edit)));
    client.left = std::min(client.left + inset, client.right);
    client.right = std::max(client.right - inset, client.left);
    const int available = client.bottom - client.top;
    const int textHeight = std::min(FontHeight(edit), available);
    client.top += (available - textHeight) / 2;
    client.bottom = client.top + textHeight;
}

void DrawEditPanel(HWND edit, HDC dc, const RECT& bounds)
{
    const COLORREF border = GetFocus() == edit ? palette::kFocusBorder : palette::kBorder;
    DrawRoundedPanel(dc, bounds, palette::kField, border, EditDpi(edit), SurfaceBackgroundOf(edit));
}

void PaintEditFrame(HWND edit)
{
    const HDC dc = GetWindowDC(edit);
    if (dc == nullptr) {
        return;
    }
    RECT window{};
    GetWindowRect(edit, &window);
    RECT client{};
    GetClientRect(edit, &client);
    MapWindowPoints(edit, nullptr, reinterpret_cast<POINT*>(&client), 2);
    OffsetRect(&client, -window.left, -window.top);
    OffsetRect(&window, -window.left, -window.top);
    ExcludeClipRect(dc, client.left, client.top, client.right, client.bottom);
    DrawEditPanel(edit, dc, window);
    ReleaseDC(edit, dc);
}

// The edit as a picture: its panel, then its text or cue inside its margins.
void PrintEdit(HWND edit, HDC dc)
{
    RECT bounds{};
    GetClientRect(edit, &bounds);
    DrawEditPanel(edit, dc, bounds);
    const LRESULT margins = SendMessageW(edit, EM_GETMARGINS, 0, 0);
    RECT textArea = bounds;
    textArea.left += LOWORD(margins);
    textArea.right -= HIWORD(margins);
    const HFONT font = reinterpret_cast<HFONT>(SendMessageW(edit, WM_GETFONT, 0, 0));
    const int length = GetWindowTextLengthW(edit);
    if (length > 0) {
        Text text(static_cast<std::size_t>(length) + 1, L'\0');
        text.resize(static_cast<std::size_t>(GetWindowTextW(edit, text.data(), length + 1)));
        DrawThemeText(dc, text, textArea, font, palette::kEditText, kLineFormat | DT_NOPREFIX);
        return;
    }
    wchar_t cue[513] = {};
    SendMessageW(edit, EM_GETCUEBANNER, reinterpret_cast<WPARAM>(cue), 512);
    DrawThemeText(dc, cue, textArea, font, palette::kCueText, kLineFormat | DT_NOPREFIX);
}

LRESULT CALLBACK StyledEditProc(HWND edit, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR)
{
    switch (message) {
    case WM_NCCALCSIZE: {
        const LRESULT result = DefSubclassProc(edit, message, wParam, lParam);
        RECT& client = wParam != FALSE ? reinterpret_cast<NCCALCSIZE_PARAMS*>(lParam)->rgrc[0]
                                       : *reinterpret_cast<RECT*>(lParam);
        CentreClientArea(edit, client);
        return result;
    }
    case WM_NCPAINT:
        PaintEditFrame(edit);
        return 0;
    case WM_PRINT:
        if ((lParam & PRF_CLIENT) != 0) {
            PrintEdit(edit, reinterpret_cast<HDC>(wParam));
            return 0;
        }
        break;
    case WM_SETFONT:
    case WM_SIZE: {
        const LRESULT result = DefSubclassProc(edit, message, wParam, lParam);
        if (GetPropW(edit, kCenteringProperty) == nullptr) {
            RecentreEdit(edit);
        }
        return result;
    }
    case WM_SETFOCUS:
    case WM_KILLFOCUS: {
        const LRESULT result = DefSubclassProc(edit, message, wParam, lParam);
        RedrawWindow(edit, nullptr, nullptr, RDW_INVALIDATE | RDW_FRAME);
        return result;
    }
    case WM_NCDESTROY: {
        const LRESULT result = DefSubclassProc(edit, message, wParam, lParam);
        RemovePropW(edit, kControlDpiProperty);
        RemoveWindowSubclass(edit, StyledEditProc, kEditSubclassId);
        return result;
    }
    default:
        break;
    }
    return DefSubclassProc(edit, message, wParam, lParam);
}

void PaintCombo(HWND combo, HDC dc, std::uint32_t dpi)
{
    RECT client{};
    GetClientRect(combo, &client);
    const bool highlighted = GetFocus() == combo || SendMessageW(combo, CB_GETDROPPEDSTATE, 0, 0) != FALSE;
    DrawRoundedPanel(dc, client, palette::kField, highlighted ? palette::kFocusBorder : palette::kBorder, dpi,
        SurfaceBackgroundOf(combo));

    const LRESULT selected = SendMessageW(combo, CB_GETCURSEL, 0, 0);
    if (selected != CB_ERR) {
        const LRESULT length = SendMessageW(combo, CB_GETLBTEXTLEN, static_cast<WPARAM>(selected), 0);
        if (length != CB_ERR && length < 1024) {
            wchar_t text[1024] = {};
            SendMessageW(combo, CB_GETLBTEXT, static_cast<WPARAM>(selected), reinterpret_cast<LPARAM>(text));
            RECT textArea = client;
            textArea.left += ScaleToDpi(12, dpi);
            textArea.right -= ScaleToDpi(24, dpi);
            DrawThemeText(dc, text, textArea, reinterpret_cast<HFONT>(SendMessageW(combo, WM_GETFONT, 0, 0)),
                palette::kComboText, kLineFormat);
        }
    }

    const int padding = ScaleToDpi(12, dpi);
    const int arrowArea = ScaleToDpi(24, dpi);
    const int half = std::max(2, 2 * padding / 5);
    const int x = client.right - arrowArea / 2;
    const int y = client.bottom / 2;
    const POINT corners[] = {{x - half, y - half / 2}, {x + half, y - half / 2}, {x, y + half / 2 + 1}};
    const UniqueBrush arrow(CreateSolidBrush(palette::kComboArrow));
    const GdiSelection brush(dc, arrow.Get());
    const GdiSelection pen(dc, GetStockObject(NULL_PEN));
    Polygon(dc, corners, 3);
}

LRESULT CALLBACK StyledComboProc(HWND combo, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR data)
{
    const auto* dpi = reinterpret_cast<const std::uint32_t*>(data);
    switch (message) {
    case WM_ERASEBKGND:
    case WM_NCPAINT:
        return 1;
    case WM_SETFOCUS:
    case WM_KILLFOCUS: {
        const LRESULT result = DefSubclassProc(combo, message, wParam, lParam);
        InvalidateRect(combo, nullptr, FALSE);
        return result;
    }
    case WM_PAINT: {
        const PaintScope paint(combo);
        if (paint.Dc() != nullptr) {
            PaintCombo(combo, paint.Dc(), *dpi);
        }
        return 0;
    }
    case WM_PRINTCLIENT:
        PaintCombo(combo, reinterpret_cast<HDC>(wParam), *dpi);
        return 0;
    case WM_NCDESTROY:
        RemoveWindowSubclass(combo, StyledComboProc, kComboSubclassId);
        break;
    default:
        break;
    }
    return DefSubclassProc(combo, message, wParam, lParam);
}

LRESULT CALLBACK ButtonSurfaceProc(HWND button, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR)
{
    if (message == WM_ERASEBKGND) {
        RECT client{};
        GetClientRect(button, &client);
        const UniqueBrush surface(CreateSolidBrush(SurfaceBackgroundOf(button)));
        FillRect(reinterpret_cast<HDC>(wParam), &client, surface.Get());
        return 1;
    }
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(button, ButtonSurfaceProc, kButtonSubclassId);
    }
    return DefSubclassProc(button, message, wParam, lParam);
}

}  // namespace

COLORREF SurfaceBackgroundOf(HWND control) noexcept
{
    const UINT_PTR stored = PropertyNumber(control, kSurfaceBackgroundProperty);
    return stored != 0 ? static_cast<COLORREF>(stored) : palette::kWindow;
}

UniqueFont CreateThemeFont(int height, int weight, std::uint32_t dpi)
{
    return UniqueFont(CreateFontW(-ScaleToDpi(height, dpi), 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
        OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY, DEFAULT_PITCH | FF_DONTCARE, L"Segoe UI"));
}

void CreatePickerFonts(LaunchContext& context)
{
    PickerState& picker = context.picker;
    picker.titleFont = CreateThemeFont(28, 600, context.previewDpi);
    picker.bodyFont = CreateThemeFont(15, 400, context.previewDpi);
    // Before the window is first shown nothing needs redrawing: the show paints it all.
    const BOOL redraw = IsWindowVisible(picker.pickerWindow);
    const auto giveFont = [&picker, redraw](HWND control) {
        if (control != nullptr) {
            SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(picker.bodyFont.Get()), redraw);
        }
    };
    for (HWND control : {picker.gameFolderEdit, picker.sdkEdit, picker.searchEdit, picker.modList, picker.statusLine,
             picker.languageCombo, picker.closeButton}) {
        giveFont(control);
    }
    for (HWND button : picker.actionButtons) {
        giveFont(button);
    }
    for (HWND edit : {picker.gameFolderEdit, picker.sdkEdit, picker.searchEdit}) {
        if (edit != nullptr) {
            StyleEditControl(edit, context.previewDpi);
        }
    }
}

void StyleEditControl(HWND edit, std::uint32_t dpi)
{
    // A styled edit keeps its frame and margins in step with its font and size by itself, so
    // styling it again at the same DPI would only repeat two window-manager round trips.
    // The DPI property is set only here, just before subclassing.
    if (dpi != 0 && PropertyNumber(edit, kControlDpiProperty) == dpi) {
        return;
    }
    if (dpi != 0) {
        SetPropW(edit, kControlDpiProperty, reinterpret_cast<HANDLE>(static_cast<UINT_PTR>(dpi)));
    }
    SetWindowSubclass(edit, StyledEditProc, kEditSubclassId, 0);
    RecentreEdit(edit);
}

void StyleComboControl(HWND combo, const std::uint32_t* dpi)
{
    SetWindowSubclass(combo, StyledComboProc, kComboSubclassId, reinterpret_cast<DWORD_PTR>(dpi));
}

void StyleButtonSurface(HWND button)
{
    SetWindowSubclass(button, ButtonSurfaceProc, kButtonSubclassId, 0);
}

void DrawStyledButton(const DRAWITEMSTRUCT& item, HFONT font, bool primary)
{
    const bool disabled = (item.itemState & ODS_DISABLED) != 0;
    const bool focused = (item.itemState & ODS_FOCUS) != 0;
    const COLORREF quietBorder = focused ? palette::kFocusBorder : palette::kBorder;
    COLORREF fill = palette::kButtonFill;
    COLORREF border = quietBorder;
    COLORREF text = palette::kButtonText;
    if (disabled) {
        fill = palette::kButtonDisabled;
        text = palette::kButtonTextDisabled;
    } else if (primary) {
        fill = palette::kPrimaryFill;
        border = focused ? palette::kFocusBorder : palette::kPrimaryFill;
        text = palette::kPrimaryText;
    } else if ((item.itemState & ODS_SELECTED) != 0) {
        fill = palette::kButtonPressed;
    }
    DrawRoundedPanel(item.hDC, item.rcItem, fill, border, GetDpiForWindow(item.hwndItem), SurfaceBackgroundOf(item.hwndItem));
    const int length = GetWindowTextLengthW(item.hwndItem);
    Text caption(static_cast<std::size_t>(length) + 1, L'\0');
    caption.resize(static_cast<std::size_t>(GetWindowTextW(item.hwndItem, caption.data(), length + 1)));
    DrawThemeText(item.hDC, caption, item.rcItem, font, text, kTileFormat | DT_END_ELLIPSIS);
}

void DrawComboRow(const DRAWITEMSTRUCT& item, HFONT font, std::uint32_t dpi)
{
    const UniqueBrush fill(CreateSolidBrush((item.itemState & ODS_SELECTED) != 0 ? palette::kSelectedDropRow : palette::kField));
    FillRect(item.hDC, &item.rcItem, fill.Get());
    if (item.itemID == static_cast<UINT>(-1)) {
        return;
    }
    wchar_t text[128] = {};
    const LRESULT length = SendMessageW(item.hwndItem, CB_GETLBTEXTLEN, item.itemID, 0);
    if (length != CB_ERR && length < 128) {
        SendMessageW(item.hwndItem, CB_GETLBTEXT, item.itemID, reinterpret_cast<LPARAM>(text));
    }
    RECT textArea = item.rcItem;
    textArea.left += ScaleToDpi(9, dpi);
    DrawThemeText(item.hDC, text, textArea, font, palette::kDropRowText, kLineFormat);
}

void ApplyDarkTitleBar(HWND window)
{
    const BOOL dark = TRUE;
    if (FAILED(DwmSetWindowAttribute(window, 20, &dark, sizeof(dark)))) {
        DwmSetWindowAttribute(window, 19, &dark, sizeof(dark));  // the attribute's number before Windows 10 20H1
    }
    const COLORREF caption = palette::kWindow;
    const COLORREF captionText = RGB(226, 241, 251);
    const COLORREF border = RGB(25, 43, 58);
    DwmSetWindowAttribute(window, 35, &caption, sizeof(caption));
    DwmSetWindowAttribute(window, 36, &captionText, sizeof(captionText));
    DwmSetWindowAttribute(window, 34, &border, sizeof(border));
}

void DrawThemeText(HDC dc, TextView text, RECT rectangle, HFONT font, COLORREF colour, UINT format)
{
    const GdiSelection selection(dc, font);
    const int oldMode = SetBkMode(dc, TRANSPARENT);
    const COLORREF oldColour = SetTextColor(dc, colour);
    DrawTextW(dc, text.data(), static_cast<int>(text.size()), &rectangle, format);
    SetTextColor(dc, oldColour);
    SetBkMode(dc, oldMode);
}

}  // namespace korvane
