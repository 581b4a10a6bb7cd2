#include "startup/RoundedPanel.h"

#include "foundation/GdiSelection.h"
#include "foundation/UniqueResource.h"

#include <algorithm>

namespace korvane {

void DrawRoundedPanel(HDC dc, const RECT& rectangle, COLORREF fill, COLORREF border, std::uint32_t dpi, COLORREF corner)
{
    const int scale = static_cast<int>(dpi);
    const int penWidth = std::max(1, MulDiv(1, scale, 96));
    const int diameter = std::max(4, MulDiv(8, scale, 96));
    {
        const UniqueBrush cornerBrush(CreateSolidBrush(corner));
        FillRect(dc, &rectangle, cornerBrush.Get());
    }
    const UniqueBrush fillBrush(CreateSolidBrush(fill));
    const UniquePen borderPen(CreatePen(PS_SOLID, penWidth, border));
    const GdiSelection brushSelection(dc, fillBrush.Get());
    const GdiSelection penSelection(dc, borderPen.Get());
    RoundRect(dc, rectangle.left, rectangle.top, rectangle.right, rectangle.bottom, diameter, diameter);
}

}  // namespace korvane
