#include "foundation/GdiplusImage.h"

#include "foundation/Paths.h"

#include <objidl.h>
#include <gdiplus.h>

#include <algorithm>

namespace korvane {
namespace {

namespace gdip = Gdiplus::DllExports;

// A GDI+ image from a file; released as soon as the thumbnail is made, so that the file is not
// held open.
struct GdiplusImageTraits {
    using Value = Gdiplus::GpImage*;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { gdip::GdipDisposeImage(value); }
};
using UniqueGdiplusImage = UniqueResource<GdiplusImageTraits>;

struct GdiplusGraphicsTraits {
    using Value = Gdiplus::GpGraphics*;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { gdip::GdipDeleteGraphics(value); }
};
using UniqueGdiplusGraphics = UniqueResource<GdiplusGraphicsTraits>;

ImageSize SizeOf(Gdiplus::GpImage* image) noexcept
{
    UINT width = 0;
    UINT height = 0;
    if (image == nullptr || gdip::GdipGetImageWidth(image, &width) != Gdiplus::Ok ||
        gdip::GdipGetImageHeight(image, &height) != Gdiplus::Ok) {
        return {};
    }
    return {width, height};
}

}  // namespace

void GdiplusBitmapTraits::Close(Value value) noexcept
{
    gdip::GdipDisposeImage(value);
}

ImageSize ThumbnailSize(ImageSize source) noexcept
{
    const unsigned longSide = std::max(source.width, source.height);
    const double scale = longSide == 0 ? 1.0 : std::min(1.0, static_cast<double>(kThumbnailSize) / longSide);
    const auto side = [scale](unsigned value) {
        return std::max(1u, static_cast<unsigned>(static_cast<double>(value) * scale));
    };
    return {side(source.width), side(source.height)};
}

UniqueGdiplusBitmap LoadThumbnail(TextView path)
{
    if (path.empty() || !IsRegularFile(path)) {
        return {};
    }
    UniqueGdiplusImage source;
    if (gdip::GdipLoadImageFromFile(Text(path).c_str(), source.Put()) != Gdiplus::Ok || !source) {
        return {};
    }
    const ImageSize sourceSize = SizeOf(source.Get());
    if (sourceSize.width == 0 || sourceSize.height == 0 || sourceSize.width > kThumbnailSourceLimit ||
        sourceSize.height > kThumbnailSourceLimit) {
        return {};
    }
    const ImageSize size = ThumbnailSize(sourceSize);
    UniqueGdiplusBitmap thumbnail;
    if (gdip::GdipCreateBitmapFromScan0(static_cast<INT>(size.width), static_cast<INT>(size.height), 0,
            PixelFormat32bppPARGB, nullptr, thumbnail.Put()) != Gdiplus::Ok) {
        return {};
    }
    UniqueGdiplusGraphics graphics;
    if (gdip::GdipGetImageGraphicsContext(thumbnail.Get(), graphics.Put()) != Gdiplus::Ok) {
        return {};
    }
    gdip::GdipGraphicsClear(graphics.Get(), 0);  // transparent
    gdip::GdipSetInterpolationMode(graphics.Get(), Gdiplus::InterpolationModeHighQualityBicubic);
    if (gdip::GdipDrawImageRectI(graphics.Get(), source.Get(), 0, 0, static_cast<INT>(size.width),
            static_cast<INT>(size.height)) != Gdiplus::Ok) {
        return {};
    }
    return thumbnail;
}

ImageFileInfo InspectImageFile(TextView path)
{
    ImageFileInfo info;
    UniqueGdiplusImage image;
    if (path.empty() || gdip::GdipLoadImageFromFile(Text(path).c_str(), image.Put()) != Gdiplus::Ok || !image) {
        return info;
    }
    info.decodes = true;
    GUID format{};
    // ImageFormatPNG: the decoder that read the content, not the file's name.
    constexpr GUID kPngFormat{0xb96b3caf, 0x0728, 0x11d3, {0x9d, 0x7b, 0x00, 0x00, 0xf8, 0x1e, 0xf3, 0x2e}};
    info.png = gdip::GdipGetImageRawFormat(image.Get(), &format) == Gdiplus::Ok && IsEqualGUID(format, kPngFormat);
    info.size = SizeOf(image.Get());
    return info;
}

ImageSize BitmapSize(Gdiplus::GpBitmap* bitmap) noexcept
{
    return SizeOf(bitmap);
}

void DrawFittedImage(HDC dc, Gdiplus::GpBitmap* bitmap, const RECT& box)
{
    const ImageSize size = BitmapSize(bitmap);
    if (size.width == 0 || size.height == 0) {
        return;
    }
    const float boxWidth = static_cast<float>(box.right - box.left);
    const float boxHeight = static_cast<float>(box.bottom - box.top);
    const float scale = std::min(boxHeight / static_cast<float>(size.height), boxWidth / static_cast<float>(size.width));
    const float width = static_cast<float>(size.width) * scale;
    const float height = static_cast<float>(size.height) * scale;
    UniqueGdiplusGraphics graphics;
    if (gdip::GdipCreateFromHDC(dc, graphics.Put()) != Gdiplus::Ok) {
        return;
    }
    gdip::GdipSetInterpolationMode(graphics.Get(), Gdiplus::InterpolationModeHighQualityBicubic);
    gdip::GdipSetPixelOffsetMode(graphics.Get(), Gdiplus::PixelOffsetModeHalf);
    gdip::GdipDrawImageRect(graphics.Get(), bitmap, static_cast<float>(box.left) + (boxWidth - width) / 2,
        static_cast<float>(box.top) + (boxHeight - height) / 2, width, height);
}

}  // namespace korvane
