#include "ImageFiles.h"

#include "foundation/GdiplusImage.h"

#include <objidl.h>
#include <gdiplus.h>

#include <gtest/gtest.h>

namespace korvane::testing {

void WriteImageFile(TextView path, unsigned width, unsigned height, ImageFormat format, std::uint32_t colour)
{
    namespace gdip = Gdiplus::DllExports;
    UniqueGdiplusBitmap bitmap;
    ASSERT_EQ(gdip::GdipCreateBitmapFromScan0(static_cast<INT>(width), static_cast<INT>(height), 0,
                  PixelFormat32bppARGB, nullptr, bitmap.Put()),
        Gdiplus::Ok);
    Gdiplus::GpGraphics* graphics = nullptr;
    ASSERT_EQ(gdip::GdipGetImageGraphicsContext(bitmap.Get(), &graphics), Gdiplus::Ok);
    gdip::GdipGraphicsClear(graphics, 0xFF000000u | colour);
    gdip::GdipDeleteGraphics(graphics);
    // The encoders GDI+ names ImageEncoderPNG and ImageEncoderJPEG.
    const CLSID encoder = format == ImageFormat::Png
        ? CLSID{0x557cf406, 0x1a04, 0x11d3, {0x9a, 0x73, 0x00, 0x00, 0xf8, 0x1e, 0xf3, 0x2e}}
        : CLSID{0x557cf401, 0x1a04, 0x11d3, {0x9a, 0x73, 0x00, 0x00, 0xf8, 0x1e, 0xf3, 0x2e}};
    ASSERT_EQ(gdip::GdipSaveImageToFile(bitmap.Get(), Text(path).c_str(), &encoder, nullptr), Gdiplus::Ok)
        << TextToUtf8(path);
}

}  // namespace korvane::testing
