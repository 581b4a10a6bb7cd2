// The covers of a preview: LoadPreviewImages over 200 covers of 2048 x 2048 PNG, against
// decoding the same files with GDI+ and drawing each into a 512 x 512 premultiplied bitmap in a
// plain loop, in the same run. Target: the ratio stays under 1.2.
#include "BenchTiming.h"
#include "TestSupport.h"

#include "foundation/GdiplusSession.h"
#include "tool/PreviewLoading.h"

#include <objidl.h>
#include <gdiplus.h>

#include <cstdio>
#include <vector>

using namespace korvane;
using korvane::bench::Median;
using korvane::bench::NowMs;
namespace gdip = Gdiplus::DllExports;

namespace {

constexpr int kCovers = 200;
constexpr int kSide = 2048;
constexpr int kRounds = 3;

// A cover with some structure to it, unlike a flat fill that would decode in no time.
bool WriteCover(const Text& path, int seed)
{
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(kSide) * kSide);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const auto r = static_cast<std::uint32_t>((x + seed * 7) & 0xFF);
            const auto g = static_cast<std::uint32_t>((y * 3 + seed) & 0xFF);
            const auto b = static_cast<std::uint32_t>(((x ^ y) + seed * 13) & 0xFF);
            pixels[static_cast<std::size_t>(y) * kSide + x] = 0xFF000000u | r << 16 | g << 8 | b;
        }
    }
    Gdiplus::GpBitmap* bitmap = nullptr;
    if (gdip::GdipCreateBitmapFromScan0(kSide, kSide, kSide * 4, PixelFormat32bppARGB,
            reinterpret_cast<BYTE*>(pixels.data()), &bitmap) != Gdiplus::Ok) {
        return false;
    }
    const CLSID png{0x557cf406, 0x1a04, 0x11d3, {0x9a, 0x73, 0x00, 0x00, 0xf8, 0x1e, 0xf3, 0x2e}};
    const bool saved = gdip::GdipSaveImageToFile(bitmap, path.c_str(), &png, nullptr) == Gdiplus::Ok;
    gdip::GdipDisposeImage(bitmap);
    return saved;
}

// The plain loop: decode, draw into 512 x 512 premultiplied ARGB with bicubic, keep.
double PlainLoop(const std::vector<Text>& covers)
{
    std::vector<Gdiplus::GpBitmap*> kept;
    const double start = NowMs();
    for (const Text& cover : covers) {
        Gdiplus::GpImage* image = nullptr;
        if (gdip::GdipLoadImageFromFile(cover.c_str(), &image) != Gdiplus::Ok) {
            continue;
        }
        Gdiplus::GpBitmap* thumbnail = nullptr;
        gdip::GdipCreateBitmapFromScan0(512, 512, 0, PixelFormat32bppPARGB, nullptr, &thumbnail);
        Gdiplus::GpGraphics* graphics = nullptr;
        gdip::GdipGetImageGraphicsContext(thumbnail, &graphics);
        gdip::GdipSetInterpolationMode(graphics, Gdiplus::InterpolationModeHighQualityBicubic);
        gdip::GdipDrawImageRectI(graphics, image, 0, 0, 512, 512);
        gdip::GdipDeleteGraphics(graphics);
        gdip::GdipDisposeImage(image);
        kept.push_back(thumbnail);
    }
    const double elapsed = NowMs() - start;
    for (Gdiplus::GpBitmap* thumbnail : kept) {
        gdip::GdipDisposeImage(thumbnail);
    }
    return elapsed;
}

double Product(const Text& document)
{
    WorkResult result;
    result.preview = ParseJson(TextToUtf8(document));
    const double start = NowMs();
    LoadPreviewImages(result);
    const double elapsed = NowMs() - start;
    if (result.covers.size() != static_cast<std::size_t>(kCovers) || !result.covers.begin()->second) {
        std::printf("LoadPreviewImages kept %zu covers\n", result.covers.size());
    }
    return elapsed;
}

}  // namespace

int wmain()
{
    const GdiplusSession gdiplus;
    testing::ScratchDirectory scratch(L"bench-preview-images");
    std::vector<Text> covers;
    Text document = L"{\"mods\":[";
    for (int index = 0; index < kCovers; ++index) {
        const Text number = DecimalText(static_cast<std::uint64_t>(index));
        covers.push_back(scratch / (L"cover-" + number + L".png"));
        if (!WriteCover(covers.back(), index)) {
            std::printf("could not write the covers\n");
            return 1;
        }
        document += Text(index == 0 ? L"" : L",") + L"{\"modProject\":" + QuoteJsonText(L"C:\\Mods\\" + number + L".umod") +
            L",\"coverPath\":" + QuoteJsonText(covers.back()) + L"}";
    }
    document += L"]}";
    std::vector<double> product;
    std::vector<double> plain;
    for (int round = 0; round < kRounds; ++round) {
        plain.push_back(PlainLoop(covers));
        product.push_back(Product(document));
    }
    const double productPerCover = Median(product) / kCovers;
    const double plainPerCover = Median(plain) / kCovers;
    std::printf("preview images, %d covers of %d x %d PNG: LoadPreviewImages %.2f ms per cover, plain GDI+ loop %.2f ms "
                "per cover (%d rounds)\n",
        kCovers, kSide, kSide, productPerCover, plainPerCover, kRounds);
    std::printf("preview images ratio LoadPreviewImages/plain loop: %.2f (target < 1.2)\n", productPerCover / plainPerCover);
    return 0;
}
