#include "ModFormDriver.h"

#include "ImageFiles.h"
#include "common/Png.h"

#include "foundation/GdiplusSession.h"
#include "foundation/Paths.h"


#include <algorithm>

namespace korvane::testing {
namespace {

constexpr int kNewModId = 1010;
constexpr int kFileNameEditId = 1152;  // the file-name box of the shell's choosers
constexpr int kFormChooseImageId = 2203;
constexpr int kFormTypeComboId = 2300;
constexpr COLORREF kCoverErrorColour = RGB(244, 137, 129);
constexpr COLORREF kCoverHintColour = RGB(148, 177, 193);

}  // namespace

HWND WaitForDialog(const ChildProcess& process, TextView title, DWORD timeoutMs)
{
    HWND dialog = nullptr;
    WaitUntil(process, [&] { return (dialog = FindProcessWindow(process.Id(), L"#32770", title)) != nullptr; }, timeoutMs);
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
    return standins::EncodeSolidPng(width, height,
        {GetRValue(colour), GetGValue(colour), GetBValue(colour)}, fileSize);
}

Bytes SolidJpeg(std::uint32_t width, std::uint32_t height, COLORREF colour)
{
    const GdiplusSession session;
    const ScratchDirectory folder(L"jpeg");
    const Text path = folder / L"image.jpg";
    WriteImageFile(path, width, height, ImageFormat::Jpeg,
        static_cast<std::uint32_t>(GetRValue(colour)) << 16 | GetGValue(colour) << 8 | GetBValue(colour));
    return ReadFileBytes(path);
}

}  // namespace korvane::testing
