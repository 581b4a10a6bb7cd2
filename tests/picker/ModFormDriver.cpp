#include "ModFormDriver.h"

#include "foundation/GdiplusSession.h"
#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"

#include <objidl.h>
#include <gdiplus.h>

#include <algorithm>

namespace korvane::testing {
namespace {

constexpr int kNewModId = 1010;
constexpr int kFileNameEditId = 1152;  // the file-name box of the shell's choosers
constexpr int kFormChooseImageId = 2203;
constexpr int kFormTypeComboId = 2300;
constexpr COLORREF kCoverErrorColour = RGB(244, 137, 129);
constexpr COLORREF kCoverHintColour = RGB(148, 177, 193);

struct DialogSearch {
    DWORD processId;
    Text title;
    HWND found;
};

HWND FindDialog(DWORD processId, TextView title)
{
    DialogSearch search{processId, Text(title), nullptr};
    EnumWindows(
        [](HWND window, LPARAM parameter) -> BOOL {
            auto& wanted = *reinterpret_cast<DialogSearch*>(parameter);
            DWORD owner = 0;
            GetWindowThreadProcessId(window, &owner);
            wchar_t name[64] = {};
            GetClassNameW(window, name, 64);
            wchar_t caption[256] = {};
            GetWindowTextW(window, caption, 256);
            if (owner == wanted.processId && Text(L"#32770") == name && wanted.title == caption &&
                IsWindowVisible(window)) {
                wanted.found = window;
                return FALSE;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

void AppendBigEndian(Bytes& bytes, std::uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<char>((value >> shift) & 0xFF));
    }
}

std::uint32_t Crc32(const char* data, std::size_t size)
{
    std::uint32_t crc = 0xFFFFFFFFu;
    for (std::size_t index = 0; index < size; ++index) {
        crc ^= static_cast<std::uint8_t>(data[index]);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
        }
    }
    return ~crc;
}

void AppendChunk(Bytes& png, const char (&type)[5], const Bytes& data)
{
    AppendBigEndian(png, static_cast<std::uint32_t>(data.size()));
    const std::size_t typeStart = png.size();
    png.append(type, 4);
    png += data;
    AppendBigEndian(png, Crc32(png.data() + typeStart, png.size() - typeStart));
}

// zlib without compression: stored blocks of at most 65535 bytes and the Adler-32 sum.
Bytes StoredZlib(const Bytes& raw)
{
    Bytes out("\x78\x01", 2);
    std::size_t offset = 0;
    do {
        const std::size_t length = std::min<std::size_t>(65535, raw.size() - offset);
        const bool last = offset + length == raw.size();
        out.push_back(last ? '\x01' : '\x00');
        for (const std::uint32_t word : {static_cast<std::uint32_t>(length), static_cast<std::uint32_t>(~length & 0xFFFF)}) {
            out.push_back(static_cast<char>(word & 0xFF));
            out.push_back(static_cast<char>((word >> 8) & 0xFF));
        }
        out.append(raw, offset, length);
        offset += length;
    } while (offset < raw.size());
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (const char byte : raw) {
        a = (a + static_cast<std::uint8_t>(byte)) % 65521;
        b = (b + a) % 65521;
    }
    AppendBigEndian(out, (b << 16) | a);
    return out;
}

struct GdiplusImageTraits {
    using Value = Gdiplus::GpBitmap*;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { Gdiplus::DllExports::GdipDisposeImage(value); }
};

}  // namespace

HWND WaitForDialog(const ChildProcess& process, TextView title, DWORD timeoutMs)
{
    HWND dialog = nullptr;
    WaitUntil(process, [&] { return (dialog = FindDialog(process.Id(), title)) != nullptr; }, timeoutMs);
    return dialog;
}

bool AnswerFileChooser(const ChildProcess& process, TextView title, TextView path)
{
    const HWND chooser = WaitForDialog(process, title);
    if (chooser == nullptr) {
        return false;
    }
    if (path.empty()) {
        PostMessageW(GetDlgItem(chooser, IDCANCEL), BM_CLICK, 0, 0);
    } else {
        const HWND name = GetDlgItem(chooser, kFileNameEditId);
        SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(Text(path).c_str()));
        PressKey(name, VK_RETURN);
    }
    return WaitUntil(process, [&] { return IsWindow(chooser) == FALSE; }, 30000);
}

void PressKey(HWND window, WPARAM key)
{
    const LPARAM scan = static_cast<LPARAM>(MapVirtualKeyW(static_cast<UINT>(key), MAPVK_VK_TO_VSC)) << 16;
    PostMessageW(window, WM_KEYDOWN, key, scan | 1);
    PostMessageW(window, WM_KEYUP, key, scan | 1 | (1LL << 30) | (1LL << 31));
}

HWND FocusOf(HWND window)
{
    GUITHREADINFO info{};
    info.cbSize = sizeof(info);
    return GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info) ? info.hwndFocus : nullptr;
}

namespace {

struct Canvas {
    HDC dc = nullptr;
    HBITMAP bitmap = nullptr;
    HGDIOBJ old = nullptr;
    const RGBQUAD* bits = nullptr;
    int width = 0;
    int height = 0;

    Canvas(int w, int h) : width(w), height(h)
    {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof(info.bmiHeader);
        info.bmiHeader.biWidth = w;
        info.bmiHeader.biHeight = -h;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        dc = CreateCompatibleDC(nullptr);
        void* memory = nullptr;
        bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &memory, nullptr, 0);
        bits = static_cast<const RGBQUAD*>(memory);
        old = SelectObject(dc, bitmap);
    }
    ~Canvas()
    {
        SelectObject(dc, old);
        DeleteObject(bitmap);
        DeleteDC(dc);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    std::vector<COLORREF> Pixels() const
    {
        GdiFlush();
        std::vector<COLORREF> pixels;
        for (int index = 0; bits != nullptr && index < width * height; ++index) {
            pixels.push_back(RGB(bits[index].rgbRed, bits[index].rgbGreen, bits[index].rgbBlue));
        }
        return pixels;
    }
};

}  // namespace

std::vector<COLORREF> ScreenPixels(RECT area)
{
    const Canvas canvas(area.right - area.left, area.bottom - area.top);
    const HDC screen = GetDC(nullptr);
    BitBlt(canvas.dc, 0, 0, canvas.width, canvas.height, screen, area.left, area.top, SRCCOPY);
    ReleaseDC(nullptr, screen);
    return canvas.Pixels();
}

double IconLikeness(HWND control, const wchar_t* icon)
{
    RECT area{};
    GetWindowRect(control, &area);
    const std::vector<COLORREF> shown = ScreenPixels(area);
    if (shown.empty()) {
        return 0.0;
    }
    const Canvas drawn(area.right - area.left, area.bottom - area.top);
    const HBRUSH background = CreateSolidBrush(shown.front());  // a corner, outside the icon's shape
    const RECT whole{0, 0, drawn.width, drawn.height};
    FillRect(drawn.dc, &whole, background);
    DeleteObject(background);
    DrawIconEx(drawn.dc, 0, 0, LoadIconW(nullptr, icon), drawn.width, drawn.height, 0, nullptr, DI_NORMAL);
    const std::vector<COLORREF> expected = drawn.Pixels();
    std::size_t same = 0;
    for (std::size_t index = 0; index < shown.size() && index < expected.size(); ++index) {
        same += shown[index] == expected[index] ? 1 : 0;
    }
    return static_cast<double>(same) / static_cast<double>(shown.size());
}

ModForm::ModForm(PickerProcess& picker) : picker_(picker)
{
    picker.Click(kNewModId);
    WaitUntil(picker.Process(),
        [this] { return (form_ = FindProcessWindow(picker_.Process().Id(), L"KorvaneLauncherForm")) != nullptr; });
}

Text ModForm::TextOf(int id) const
{
    wchar_t text[1024] = {};
    SendMessageW(Control(id), WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text));
    return text;
}

void ModForm::Type(int id, TextView text) const
{
    SendMessageW(Control(id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(Text(text).c_str()));
}

bool ModForm::TypeKeys(int id, TextView text) const
{
    const HWND edit = Control(id);
    for (const wchar_t unit : text) {
        PostMessageW(edit, WM_CHAR, unit, 1);
    }
    // Posted messages arrive in order: once the whole text is selected, every key before that
    // selection has been taken (while typing, the selection is an empty caret).
    PostMessageW(edit, EM_SETSEL, 0, -1);
    return WaitUntil(picker_.Process(), [&] {
        const auto selection = static_cast<DWORD>(SendMessageW(edit, EM_GETSEL, 0, 0));
        return LOWORD(selection) == 0 && HIWORD(selection) > 0;
    });
}

void ModForm::Press(int id) const
{
    PostMessageW(Control(id), BM_CLICK, 0, 0);
}

void ModForm::Key(WPARAM key) const
{
    PressKey(FocusOf(form_), key);
}

bool ModForm::FocusOn(int id) const
{
    const HWND target = Control(id);
    for (int step = 0; step < 12 && FocusOf(form_) != target; ++step) {
        const HWND before = FocusOf(form_);
        PressKey(before, VK_TAB);
        WaitUntil(picker_.Process(), [&] { return FocusOf(form_) != before; }, 5000);
    }
    return FocusOf(form_) == target;
}

bool ModForm::ChooseType(int row) const
{
    const HWND combo = Control(kFormTypeComboId);
    const auto selected = [&] { return static_cast<int>(SendMessageW(combo, CB_GETCURSEL, 0, 0)); };
    for (int step = 0; step < 4 && selected() != row; ++step) {
        const int before = selected();
        PressKey(combo, before < row ? VK_DOWN : VK_UP);
        WaitUntil(picker_.Process(), [&] { return selected() != before; }, 5000);
    }
    return selected() == row;
}

bool ModForm::ChooseCover(TextView path) const
{
    const Text before = TextOf(kFormChooseImageId);
    Press(kFormChooseImageId);
    if (!AnswerFileChooser(picker_.Process(), L"Choose a PNG cover", path)) {
        return false;
    }
    // The chooser returns inside the command; a message sent now is taken once the command is done.
    DWORD_PTR ignored = 0;
    return SendMessageTimeoutW(form_, WM_NULL, 0, 0, SMTO_BLOCK, 30000, &ignored) != 0;
}

bool ModForm::WaitClosed() const
{
    return WaitUntil(picker_.Process(), [this] { return !IsOpen(); });
}

std::vector<COLORREF> ModForm::Pixels(int x, int y, int width, int height) const
{
    RECT client{};
    GetClientRect(form_, &client);
    const int dpi = MulDiv(client.right, 96, 720);
    POINT origin{MulDiv(x, dpi, 96), MulDiv(y, dpi, 96)};
    ClientToScreen(form_, &origin);
    return ScreenPixels(
        RECT{origin.x, origin.y, origin.x + MulDiv(width, dpi, 96), origin.y + MulDiv(height, dpi, 96)});
}

std::size_t ModForm::ErrorPixels() const
{
    const auto pixels = Pixels(456, 370, 232, 40);
    return static_cast<std::size_t>(std::count(pixels.begin(), pixels.end(), kCoverErrorColour));
}

std::size_t ModForm::HintPixels() const
{
    const auto pixels = Pixels(456, 370, 232, 40);
    return static_cast<std::size_t>(std::count(pixels.begin(), pixels.end(), kCoverHintColour));
}

COLORREF ModForm::TileCentre() const
{
    const auto pixels = Pixels(456 + 116, 108 + 102, 1, 1);
    return pixels.empty() ? CLR_INVALID : pixels.front();
}

Bytes SolidPng(std::uint32_t width, std::uint32_t height, COLORREF colour, std::size_t fileSize)
{
    // One bit per pixel into a palette of one colour: even 2048 x 2048 stays near half a MiB.
    const std::size_t rowBytes = (width + 7) / 8;
    Bytes raw;
    raw.reserve((rowBytes + 1) * height);
    for (std::uint32_t row = 0; row < height; ++row) {
        raw.append(rowBytes + 1, '\0');
    }
    Bytes png("\x89PNG\r\n\x1a\n", 8);
    Bytes header;
    AppendBigEndian(header, width);
    AppendBigEndian(header, height);
    header.append("\x01\x03\x00\x00\x00", 5);
    AppendChunk(png, "IHDR", header);
    const char palette[] = {static_cast<char>(GetRValue(colour)), static_cast<char>(GetGValue(colour)),
        static_cast<char>(GetBValue(colour))};
    AppendChunk(png, "PLTE", Bytes(palette, 3));
    AppendChunk(png, "IDAT", StoredZlib(raw));
    constexpr std::size_t kChunkOverhead = 12;
    constexpr std::size_t kLeast = kChunkOverhead + 8;  // "Comment" and its terminator
    while (fileSize > png.size() + kChunkOverhead) {
        std::size_t rest = fileSize - png.size() - kChunkOverhead;  // room before the end chunk
        std::size_t data = std::min<std::size_t>(rest - kChunkOverhead, 60000);
        if (rest - kChunkOverhead - data != 0 && rest - kChunkOverhead - data < kLeast) {
            data -= kLeast;  // leave enough for one more comment
        }
        Bytes comment("Comment", 8);
        comment.append(data - 8, 'x');
        AppendChunk(png, "tEXt", comment);
    }
    AppendChunk(png, "IEND", Bytes());
    return png;
}

Bytes SolidJpeg(std::uint32_t width, std::uint32_t height, COLORREF colour)
{
    namespace gdip = Gdiplus::DllExports;
    const GdiplusSession session;
    UniqueResource<GdiplusImageTraits> bitmap;
    gdip::GdipCreateBitmapFromScan0(
        static_cast<INT>(width), static_cast<INT>(height), 0, PixelFormat24bppRGB, nullptr, bitmap.Put());
    for (std::uint32_t y = 0; bitmap && y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            gdip::GdipBitmapSetPixel(bitmap.Get(), static_cast<INT>(x), static_cast<INT>(y),
                0xFF000000u | (GetRValue(colour) << 16) | (GetGValue(colour) << 8) | GetBValue(colour));
        }
    }
    CLSID jpeg{};
    CLSIDFromString(L"{557CF401-1A04-11D3-9A73-0000F81EF32E}", &jpeg);
    const ScratchDirectory folder(L"jpeg");
    const Text path = folder / L"image.jpg";
    if (!bitmap || gdip::GdipSaveImageToFile(bitmap.Get(), path.c_str(), &jpeg, nullptr) != Gdiplus::Ok) {
        return {};
    }
    bitmap.Reset();
    return ReadFileBytes(path);
}

}  // namespace korvane::testing
