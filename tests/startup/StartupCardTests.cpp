// The card drawn into a bitmap of our own: where long texts stop.
#include "foundation/GdiSelection.h"
#include "foundation/UniqueResource.h"
#include "startup/StartupPaint.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace korvane {
namespace {

constexpr std::uint32_t kBase = 0x07111F;  // 7, 17, 31

class CardPicture {
public:
    explicit CardPicture(const StartupCard& card)
    {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof(info.bmiHeader);
        info.bmiHeader.biWidth = kStartupCardWidth;
        info.bmiHeader.biHeight = -kStartupCardHeight;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        void* bits = nullptr;
        bitmap_.Reset(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
        dc_.Reset(CreateCompatibleDC(nullptr));
        const GdiSelection selection(dc_.Get(), bitmap_.Get());
        EXPECT_FALSE(DrawStartupCard(dc_.Get(), card)) << "no art given, none drawn";
        GdiFlush();
        pixels_ = static_cast<const std::uint32_t*>(bits);
    }

    // Pixels other than the base fill in a rectangle.
    int Marked(int left, int top, int right, int bottom) const
    {
        int count = 0;
        for (int y = top; y < bottom; ++y) {
            for (int x = left; x < right; ++x) {
                count += (pixels_[y * kStartupCardWidth + x] & 0xFFFFFF) == kBase ? 0 : 1;
            }
        }
        return count;
    }

private:
    UniqueBitmap bitmap_;
    UniqueMemoryDc dc_;
    const std::uint32_t* pixels_ = nullptr;
};

TEST(StartupCard, LongTextsStopAtTheirRectangles)
{
    const StartupFonts fonts = CreateStartupFonts(96);
    StartupCard card;
    card.fonts = &fonts;
    card.elapsedMs = 5000;
    card.cacheStatusText = Text(200, L'W');
    card.phaseText.clear();
    for (int word = 0; word < 60; ++word) {
        card.phaseText += L"Preparing ";
    }

    card.showCancel = true;
    const CardPicture withCancel(card);
    EXPECT_GT(withCancel.Marked(42, 313, 582, 336), 500) << "the detail line";
    EXPECT_EQ(withCancel.Marked(582, 313, 600, 336), 0) << "cut before the Cancel button";
    EXPECT_GT(withCancel.Marked(42, 267, 678, 306), 1000) << "the phase line";
    EXPECT_EQ(withCancel.Marked(42, 306, 678, 309), 0) << "two lines at most, the rest cut";
    EXPECT_GT(withCancel.Marked(600, 309, 678, 339), 500) << "the button";

    card.showCancel = false;
    const CardPicture alone(card);
    EXPECT_GT(alone.Marked(582, 313, 678, 336), 100) << "without a button the line runs on to 678";
    EXPECT_EQ(alone.Marked(678, 313, 720, 336), 0);
    EXPECT_EQ(alone.Marked(600, 337, 678, 339), 0) << "no button";
}

}  // namespace
}  // namespace korvane
