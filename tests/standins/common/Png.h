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

// A PNG of one colour, one bit a pixel through a one-entry palette, so that even 2048 x 2048
// stays near half a MiB; padded with comment chunks to exactly `fileSize` bytes when that is
// larger, for tests of size limits.
Bytes EncodeSolidPng(std::uint32_t width, std::uint32_t height, Rgb colour, size_t fileSize = 0);

// A cover picture: a diagonal gradient between two colours drawn from `seed`, crossed by a
// light band, so that covers of one catalogue are told apart at a glance.
Bytes MakeCoverPng(std::uint32_t width, std::uint32_t height, std::uint32_t seed);

}  // namespace korvane::standins
