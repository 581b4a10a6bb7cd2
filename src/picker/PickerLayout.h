#pragma once
// Where the picker's controls stand for a client size and DPI: a table at 96 DPI whose every
// value is scaled on its own, so that each edge lands on MulDiv(value, dpi, 96).

#include <windows.h>

#include <cstdint>
#include <vector>

namespace korvane {

inline constexpr int kPickerClientWidth = 1024;
inline constexpr int kPickerClientHeight = 640;
inline constexpr int kPickerMinTrackWidth = 940;
inline constexpr int kPickerMinTrackHeight = 660;
inline constexpr int kModRowHeight = 116;
inline constexpr int kModCardGap = 8;
inline constexpr int kLanguageRowHeight = 28;
inline constexpr int kLanguageFieldHeight = 26;

int ScaleToDpi(int value, std::uint32_t dpi) noexcept;

struct ControlPlacement {
    int id;
    int x;
    int y;
    int width;
    int height;
};

// Every control but the tooltip, in pixels of a client area of `clientWidth` by `clientHeight`.
std::vector<ControlPlacement> PickerLayout(int clientWidth, int clientHeight, std::uint32_t dpi);

}  // namespace korvane
