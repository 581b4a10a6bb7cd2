#pragma once
// The owner of a GDI+ bitmap, and the thumbnails the picker shows: decoded and scaled once on a
// worker thread, so that painting only draws a small bitmap.

#include "foundation/Text.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

namespace Gdiplus {
class GpBitmap;
}

namespace korvane {

struct GdiplusBitmapTraits {
    using Value = Gdiplus::GpBitmap*;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept;
};

// A GDI+ bitmap; needs GDI+ started for as long as it lives.
using UniqueGdiplusBitmap = UniqueResource<GdiplusBitmapTraits>;

// The pixel limit of a thumbnail's source: wider or taller images are refused.
inline constexpr unsigned kThumbnailSourceLimit = 4096;
// The long side of a thumbnail.
inline constexpr unsigned kThumbnailSize = 512;

struct ImageSize {
    unsigned width = 0;
    unsigned height = 0;
};

// The size of a thumbnail of a `source` image: scaled to at most 512 on its long side and never
// up, each side truncated and at least 1.
ImageSize ThumbnailSize(ImageSize source) noexcept;

// Any image GDI+ can read, as a 32-bit premultiplied ARGB bitmap of ThumbnailSize drawn with
// high-quality bicubic interpolation. None for an empty path, a path that is no file, a file
// that does not decode, or an image over 4096 pixels on either side. Runs on any thread.
UniqueGdiplusBitmap LoadThumbnail(TextView path);

// What the image library makes of a file: whether it decodes, whether its content is PNG
// (whatever the file is called), and its size.
struct ImageFileInfo {
    bool decodes = false;
    bool png = false;
    ImageSize size;
};
ImageFileInfo InspectImageFile(TextView path);

// The bitmap's size; 0 by 0 for none.
ImageSize BitmapSize(Gdiplus::GpBitmap* bitmap) noexcept;

// Draws `bitmap` into `box` of `dc`, scaled by the smaller of the two ratios (up or down) and
// centred, with high-quality bicubic interpolation; nothing for a bitmap of no width or height.
void DrawFittedImage(HDC dc, Gdiplus::GpBitmap* bitmap, const RECT& box);

}  // namespace korvane
