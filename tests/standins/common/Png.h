#pragma once
// Small PNG files made from nothing, for the covers and icons of sample catalogues. The
// encoder stores the pixels without compression: any decoder reads them, and the files stay
// small enough at cover sizes.

#include "foundation/Text.h"

#include <cstdint>
#include <vector>

namespace korvane::standins {

struct Rgb {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
};

// A PNG of 8-bit RGB pixels, row by row from the top; `pixels` holds width * height entries.
Bytes EncodePng(std::uint32_t width, std::uint32_t height, const std::vector<Rgb>& pixels);

// A cover picture: a diagonal gradient between two colours drawn from `seed`, crossed by a
// light band, so that covers of one catalogue are told apart at a glance.
Bytes MakeCoverPng(std::uint32_t width, std::uint32_t height, std::uint32_t seed);

}  // namespace korvane::standins
