#include "common/Png.h"

#include <algorithm>
#include <array>

namespace korvane::standins {
namespace {

std::uint32_t Crc32(BytesView bytes)
{
    static const std::array<std::uint32_t, 256> table = [] {
        std::array<std::uint32_t, 256> values{};
        for (std::uint32_t index = 0; index < 256; ++index) {
            std::uint32_t value = index;
            for (int bit = 0; bit < 8; ++bit) {
                value = (value & 1) ? 0xEDB88320u ^ (value >> 1) : value >> 1;
            }
            values[index] = value;
        }
        return values;
    }();
    std::uint32_t crc = 0xFFFFFFFFu;
    for (const char byte : bytes) {
        crc = table[(crc ^ static_cast<std::uint8_t>(byte)) & 0xFF] ^ (crc >> 8);
    }
    return crc ^ 0xFFFFFFFFu;
}

void PutBigEndian(Bytes& out, std::uint32_t value)
{
    out += static_cast<char>(value >> 24);
    out += static_cast<char>(value >> 16);
    out += static_cast<char>(value >> 8);
    out += static_cast<char>(value);
}

void PutChunk(Bytes& out, const char* type, BytesView data)
{
    PutBigEndian(out, static_cast<std::uint32_t>(data.size()));
    Bytes typed(type, 4);
    typed += data;
    out += typed;
    PutBigEndian(out, Crc32(typed));
}

// A zlib stream of stored deflate blocks.
Bytes StoreInZlib(BytesView raw)
{
    Bytes out("\x78\x01", 2);
    size_t offset = 0;
    do {
        const size_t length = std::min<size_t>(raw.size() - offset, 65535);
        const bool last = offset + length == raw.size();
        out += static_cast<char>(last ? 1 : 0);
        out += static_cast<char>(length & 0xFF);
        out += static_cast<char>(length >> 8);
        out += static_cast<char>(~length & 0xFF);
        out += static_cast<char>((~length >> 8) & 0xFF);
        out.append(raw.substr(offset, length));
        offset += length;
    } while (offset < raw.size());
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (const char byte : raw) {
        a = (a + static_cast<std::uint8_t>(byte)) % 65521;
        b = (b + a) % 65521;
    }
    PutBigEndian(out, (b << 16) | a);
    return out;
}

Rgb Mix(Rgb from, Rgb to, std::uint32_t step, std::uint32_t steps)
{
    const auto channel = [&](std::uint8_t x, std::uint8_t y) {
        return static_cast<std::uint8_t>((x * (steps - step) + y * step) / steps);
    };
    return {channel(from.red, to.red), channel(from.green, to.green), channel(from.blue, to.blue)};
}

}  // namespace

Bytes EncodePng(std::uint32_t width, std::uint32_t height, const std::vector<Rgb>& pixels)
{
    Bytes png("\x89PNG\r\n\x1A\n", 8);
    Bytes header;
    PutBigEndian(header, width);
    PutBigEndian(header, height);
    header += Bytes("\x08\x02\x00\x00\x00", 5);  // 8 bits, RGB, deflate, no filter method, no interlace
    PutChunk(png, "IHDR", header);
    Bytes raw;
    raw.reserve(static_cast<size_t>(height) * (width * 3 + 1));
    for (std::uint32_t y = 0; y < height; ++y) {
        raw += '\0';  // no filter on this row
        for (std::uint32_t x = 0; x < width; ++x) {
            const Rgb& pixel = pixels[static_cast<size_t>(y) * width + x];
            raw += static_cast<char>(pixel.red);
            raw += static_cast<char>(pixel.green);
            raw += static_cast<char>(pixel.blue);
        }
    }
    PutChunk(png, "IDAT", StoreInZlib(raw));
    PutChunk(png, "IEND", {});
    return png;
}

Bytes EncodeSolidPng(std::uint32_t width, std::uint32_t height, Rgb colour, size_t fileSize)
{
    Bytes png("\x89PNG\r\n\x1A\n", 8);
    Bytes header;
    PutBigEndian(header, width);
    PutBigEndian(header, height);
    header += Bytes("\x01\x03\x00\x00\x00", 5);  // 1 bit, palette, deflate, no filter method, no interlace
    PutChunk(png, "IHDR", header);
    const char palette[] = {static_cast<char>(colour.red), static_cast<char>(colour.green), static_cast<char>(colour.blue)};
    PutChunk(png, "PLTE", BytesView(palette, 3));
    const size_t rowBytes = (width + 7) / 8;
    PutChunk(png, "IDAT", StoreInZlib(Bytes((rowBytes + 1) * height, '\0')));
    constexpr size_t kChunkOverhead = 12;
    constexpr size_t kLeast = kChunkOverhead + 8;  // "Comment", its terminator and a chunk's frame
    while (fileSize > png.size() + kChunkOverhead) {
        const size_t rest = fileSize - png.size() - kChunkOverhead;  // room before the end chunk
        size_t data = std::min<size_t>(rest - kChunkOverhead, 60000);
        if (rest - kChunkOverhead - data != 0 && rest - kChunkOverhead - data < kLeast) {
            data -= kLeast;  // leave enough for one more comment
        }
        Bytes comment("Comment", 8);
        comment.append(data - 8, 'x');
        PutChunk(png, "tEXt", comment);
    }
    PutChunk(png, "IEND", {});
    return png;
}

Bytes MakeCoverPng(std::uint32_t width, std::uint32_t height, std::uint32_t seed)
{
    static const Rgb palette[] = {
        {0x1B, 0x4F, 0x72}, {0xC0, 0x39, 0x2B}, {0x27, 0xAE, 0x60}, {0x8E, 0x44, 0xAD},
        {0xF3, 0x9C, 0x12}, {0x16, 0xA0, 0x85}, {0x2C, 0x3E, 0x50}, {0xD3, 0x54, 0x00},
        {0x29, 0x80, 0xB9}, {0x7D, 0x3C, 0x98}, {0xE6, 0x7E, 0x22}, {0x1A, 0xBC, 0x9C},
    };
    const size_t count = std::size(palette);
    const Rgb from = palette[seed % count];
    const Rgb to = palette[(seed * 7 + 3) % count];
    std::vector<Rgb> pixels(static_cast<size_t>(width) * height);
    const std::uint32_t steps = width + height;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            Rgb pixel = Mix(from, to, x + y, steps);
            const std::uint32_t band = (x + 2 * (height - y)) % (width / 2 + 1);
            if (band < width / 12 + 2) {
                pixel = Mix(pixel, {0xFF, 0xFF, 0xFF}, 1, 3);
            }
            pixels[static_cast<size_t>(y) * width + x] = pixel;
        }
    }
    return EncodePng(width, height, pixels);
}

}  // namespace korvane::standins
