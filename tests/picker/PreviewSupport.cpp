#include "PreviewSupport.h"

#include "CapturedRun.h"

#include "foundation/GdiplusSession.h"

#include <objidl.h>
#include <gdiplus.h>

#include <gtest/gtest.h>

namespace korvane::testing {

PngPicture PngPicture::Load(TextView path)
{
    PngPicture picture;
    const GdiplusSession session;
    if (!session.IsActive()) {
        return picture;
    }
    Gdiplus::Bitmap image(Text(path).c_str());
    if (image.GetLastStatus() != Gdiplus::Ok) {
        return picture;
    }
    const int width = static_cast<int>(image.GetWidth());
    const int height = static_cast<int>(image.GetHeight());
    const Gdiplus::Rect all(0, 0, width, height);
    Gdiplus::BitmapData data{};
    if (image.LockBits(&all, Gdiplus::ImageLockModeRead, PixelFormat32bppARGB, &data) != Gdiplus::Ok) {
        return picture;
    }
    picture.width_ = width;
    picture.height_ = height;
    picture.pixels_.resize(static_cast<std::size_t>(width) * height);
    for (int y = 0; y < height; ++y) {
        const auto* row = reinterpret_cast<const std::uint32_t*>(static_cast<const BYTE*>(data.Scan0) + y * data.Stride);
        std::copy(row, row + width, picture.pixels_.begin() + static_cast<std::ptrdiff_t>(y) * width);
    }
    image.UnlockBits(&data);
    return picture;
}

Rgb PngPicture::At(int x, int y) const
{
    if (x < 0 || y < 0 || x >= width_ || y >= height_) {
        return {};
    }
    const std::uint32_t pixel = pixels_[static_cast<std::size_t>(y) * width_ + x];
    return {static_cast<int>((pixel >> 16) & 0xFF), static_cast<int>((pixel >> 8) & 0xFF), static_cast<int>(pixel & 0xFF)};
}

Bytes ToolPreviewDocument(const SampleInstall& install)
{
    const CapturedRun run = RunCaptured(install.ToolPath(), {L"sdk-preview", L"--sdk", install.SdkPath()});
    EXPECT_EQ(run.exitCode, 0u) << run.err;
    return run.out;
}

}  // namespace korvane::testing
