#pragma once
// What the picker preview leaves behind, read back from outside: its PNG picture pixel by pixel,
// and the preview document that the stand-in tool answers for an install, to serve as fixture.

#include "SampleInstall.h"

#include "foundation/Text.h"

#include <cstdint>
#include <ostream>
#include <vector>

namespace korvane::testing {

struct Rgb {
    int red = -1;
    int green = -1;
    int blue = -1;
    bool operator==(const Rgb&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Rgb& colour)
{
    return out << '(' << colour.red << ',' << colour.green << ',' << colour.blue << ')';
}

// A PNG decoded by GDI+ into memory, so the file is not held open.
class PngPicture {
public:
    // An empty picture (0 by 0) when the file is missing or no image.
    static PngPicture Load(TextView path);

    int Width() const noexcept { return width_; }
    int Height() const noexcept { return height_; }
    // The colour at a pixel; (-1,-1,-1) outside the picture.
    Rgb At(int x, int y) const;

private:
    int width_ = 0;
    int height_ = 0;
    std::vector<std::uint32_t> pixels_;  // 0xAARRGGBB, rows from the top
};

// The answer of `KorvaneTool.exe sdk-preview --sdk <SDK>` of the install, run for real.
Bytes ToolPreviewDocument(const SampleInstall& install);

}  // namespace korvane::testing
