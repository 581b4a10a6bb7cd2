#pragma once
// The look shared by the picker and its Create Mod form: a dark surface with rounded panels,
// made of plain Windows controls whose drawing is taken over by subclasses. Style data rides on
// four window properties. Everything here runs on the window thread.

#include "context/PickerState.h"

#include <windows.h>

#include <cstdint>

namespace korvane {

struct LaunchContext;

namespace palette {
inline constexpr COLORREF kWindow = RGB(11, 21, 36);
inline constexpr COLORREF kField = RGB(20, 32, 48);  // fields and cards
inline constexpr COLORREF kSdkPanel = RGB(17, 29, 43);
inline constexpr COLORREF kBorder = RGB(35, 56, 73);  // neutral borders and dividers
inline constexpr COLORREF kFocusBorder = RGB(62, 173, 192);
inline constexpr COLORREF kSelectedCard = RGB(22, 51, 67);
inline constexpr COLORREF kSelectedCardBorder = RGB(54, 177, 196);
inline constexpr COLORREF kSelectedDropRow = RGB(30, 60, 77);
inline constexpr COLORREF kThumbnailBox = RGB(34, 48, 65);
inline constexpr COLORREF kScrollThumb = RGB(50, 81, 100);
inline constexpr COLORREF kComboArrow = RGB(129, 169, 190);
inline constexpr COLORREF kPrimaryFill = RGB(93, 224, 204);
inline constexpr COLORREF kPrimaryText = RGB(8, 29, 37);
inline constexpr COLORREF kButtonFill = RGB(22, 39, 55);
inline constexpr COLORREF kButtonPressed = RGB(29, 59, 75);
inline constexpr COLORREF kButtonDisabled = RGB(17, 29, 43);
inline constexpr COLORREF kButtonText = RGB(204, 223, 236);
inline constexpr COLORREF kButtonTextDisabled = RGB(86, 106, 123);
inline constexpr COLORREF kSystemEditText = RGB(227, 239, 250);
inline constexpr COLORREF kEditText = RGB(215, 232, 244);  // also the form's statics
inline constexpr COLORREF kCueText = RGB(129, 154, 173);
inline constexpr COLORREF kComboText = RGB(207, 229, 244);
inline constexpr COLORREF kDropRowText = RGB(213, 233, 246);
}  // namespace palette

// The window properties, each holding a number in the handle.
inline constexpr wchar_t kStatusColorProperty[] = L"KorvaneStatusColor";
inline constexpr wchar_t kControlDpiProperty[] = L"KorvaneControlDpi";
inline constexpr wchar_t kSurfaceBackgroundProperty[] = L"KorvaneSurfaceBackground";
inline constexpr wchar_t kCenteringProperty[] = L"KorvaneCentering";

// The colour behind a control's rounded corners: its KorvaneSurfaceBackground, else the window's.
COLORREF SurfaceBackgroundOf(HWND control) noexcept;

// "Segoe UI" at a character height of `height` (at 96 DPI) scaled to `dpi`.
UniqueFont CreateThemeFont(int height, int weight, std::uint32_t dpi);

// Makes both fonts anew for the picker's DPI, hands the body font to every control and styles
// the three edits.
void CreatePickerFonts(LaunchContext& context);

// Subclasses an edit so that it draws a rounded frame and centres its single line; `dpi` 0
// follows the edit's own DPI.
void StyleEditControl(HWND edit, std::uint32_t dpi);

// Subclasses a combo box so that it draws its field itself; `dpi` is read at each paint.
void StyleComboControl(HWND combo, const std::uint32_t* dpi);

// Subclasses a button so that its background is the surface it stands on.
void StyleButtonSurface(HWND button);

// An owner-drawn button in the theme's look; `primary` is the look of Start editing.
void DrawStyledButton(const DRAWITEMSTRUCT& item, HFONT font, bool primary);

// An owner-drawn row of a drop-down list.
void DrawComboRow(const DRAWITEMSTRUCT& item, HFONT font, std::uint32_t dpi);

// A dark caption, its text and border colours; failures are ignored.
void ApplyDarkTitleBar(HWND window);

// Draws `text` in `rectangle` with `font` and `colour` on a transparent background; the font
// is put back afterwards.
void DrawThemeText(HDC dc, TextView text, RECT rectangle, HFONT font, COLORREF colour, UINT format);

// The flags of a one-line text that ends in an ellipsis.
inline constexpr UINT kLineFormat = DT_END_ELLIPSIS | DT_SINGLELINE | DT_VCENTER;
// The flags of a letter tile.
inline constexpr UINT kTileFormat = DT_CENTER | DT_VCENTER | DT_SINGLELINE;

}  // namespace korvane
