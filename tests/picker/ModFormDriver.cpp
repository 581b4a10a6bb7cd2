#include "ModFormDriver.h"

#include <algorithm>

namespace korvane::testing {
namespace {

constexpr int kNewModId = 1010;
constexpr int kFileNameEditId = 1152;  // the file-name box of the shell's choosers
constexpr int kFormChooseImageId = 2203;

}  // namespace

bool AnswerFileChooser(const ChildProcess& process, TextView title, TextView path)
{
    HWND chooser = nullptr;
    WaitUntil(process, [&] { return (chooser = FindVisibleWindow(process.Id(), L"#32770", title)) != nullptr; }, 30000);
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

std::vector<COLORREF> ScreenPixels(RECT area)
{
    const int width = area.right - area.left;
    const int height = area.bottom - area.top;
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    const HDC screen = GetDC(nullptr);
    const HDC dc = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ old = SelectObject(dc, bitmap);
    BitBlt(dc, 0, 0, width, height, screen, area.left, area.top, SRCCOPY);
    GdiFlush();
    std::vector<COLORREF> pixels;
    for (int index = 0; bits != nullptr && index < width * height; ++index) {
        const RGBQUAD& bit = static_cast<const RGBQUAD*>(bits)[index];
        pixels.push_back(RGB(bit.rgbRed, bit.rgbGreen, bit.rgbBlue));
    }
    SelectObject(dc, old);
    DeleteObject(bitmap);
    DeleteDC(dc);
    ReleaseDC(nullptr, screen);
    return pixels;
}

ModForm::ModForm(PickerProcess& picker) : picker_(picker)
{
    picker.Click(kNewModId);
    WaitUntil(picker.Process(),
        [this] { return (form_ = FindVisibleWindow(picker_.Process().Id(), L"KorvaneLauncherForm")) != nullptr; });
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

bool ModForm::ChooseCover(TextView path) const
{
    Press(kFormChooseImageId);
    // The chooser returns inside the command; a message sent now is taken once the command is done.
    DWORD_PTR ignored = 0;
    return AnswerFileChooser(picker_.Process(), L"Choose a PNG cover", path) &&
           SendMessageTimeoutW(form_, WM_NULL, 0, 0, SMTO_BLOCK, 30000, &ignored) != 0;
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

std::size_t ModForm::HintPlacePixels(COLORREF colour) const
{
    const auto pixels = Pixels(456, 370, 232, 40);
    return static_cast<std::size_t>(std::count(pixels.begin(), pixels.end(), colour));
}

COLORREF ModForm::TileCentre() const
{
    const auto pixels = Pixels(456 + 116, 108 + 102, 1, 1);
    return pixels.empty() ? CLR_INVALID : pixels.front();
}

}  // namespace korvane::testing
