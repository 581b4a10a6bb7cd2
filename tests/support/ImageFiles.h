#pragma once
// Real image files for tests of what the launcher decodes: written by GDI+, in one colour, at
// any size. GDI+ must be started by the caller (a GdiplusSession).

#include "foundation/Text.h"

#include <cstdint>

namespace korvane::testing {

enum class ImageFormat { Png, Jpeg };

// Writes a `width` by `height` image of one opaque colour (0xRRGGBB) to `path`.
void WriteImageFile(TextView path, unsigned width, unsigned height, ImageFormat format = ImageFormat::Png,
    std::uint32_t colour = 0x3366CC);

}  // namespace korvane::testing
