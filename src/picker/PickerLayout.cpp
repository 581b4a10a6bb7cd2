#include "picker/PickerLayout.h"

#include "picker/PickerIds.h"

#include <algorithm>

namespace korvane {

int ScaleToDpi(int value, std::uint32_t dpi) noexcept
{
    return MulDiv(value, static_cast<int>(dpi), 96);
}

std::vector<ControlPlacement> PickerLayout(int clientWidth, int clientHeight, std::uint32_t dpi)
{
    const int scale = static_cast<int>(dpi);
    const int w = MulDiv(clientWidth, 96, scale);
    const int h = MulDiv(clientHeight, 96, scale);
    const ControlPlacement at96[] = {
        {kLanguageComboId, w - 192, 24, 168, 240},  // the height of its open list
        {kSearchEditId, 320, 96, std::max(w - 448, 10), 36},
        {kRefreshId, w - 116, 96, 92, 36},
        {kModListId, 320, 148, std::max(w - 344, 10), std::max(h - 278, 150)},
        {kNewModId, 320, h - 112, 120, 36},
        {kImportModId, 452, h - 112, 120, 36},
        {kDeleteModId, 584, h - 112, 120, 36},
        {kSdkEditId, 40, 398, 240, 36},
        {kChooseSdkId, 40, 446, 240, 36},
        {kGameFolderEditId, 40, h - 82, 150, 34},
        {kChooseGameFolderId, 200, h - 82, 80, 34},
        {kStatusLineId, 320, h - 53, std::max(w - 580, 10), 36},
        {kCloseId, w - 260, h - 60, 96, 36},
        {kStartEditingId, w - 152, h - 60, 128, 36},
    };
    std::vector<ControlPlacement> placements;
    for (const ControlPlacement& place : at96) {
        placements.push_back({place.id, ScaleToDpi(place.x, dpi), ScaleToDpi(place.y, dpi),
            ScaleToDpi(place.width, dpi), ScaleToDpi(place.height, dpi)});
    }
    return placements;
}

}  // namespace korvane
