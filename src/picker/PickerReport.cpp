#include "picker/PickerReport.h"

#include "context/LaunchContext.h"
#include "foundation/Files.h"
#include "foundation/GdiSelection.h"
#include "picker/PickerCommands.h"
#include "picker/PickerControls.h"
#include "picker/PickerIds.h"
#include "picker/PickerTexts.h"

#include <objidl.h>
#include <gdiplus.h>

namespace korvane {
namespace {

namespace gdip = Gdiplus::DllExports;

constexpr wchar_t kPngEncoder[] = L"{557CF406-1A04-11D3-9A73-0000F81EF32E}";

void AppendMember(Text& json, const wchar_t* key, TextView value)
{
    json += json.empty() ? L"{\"" : L",\"";
    json += key;
    json += L"\":";
    json += value;
}

void AppendString(Text& json, const wchar_t* key, TextView value)
{
    AppendMember(json, key, QuoteJsonText(value));
}

void AppendNumber(Text& json, const wchar_t* key, std::uint64_t value)
{
    AppendMember(json, key, DecimalText(value));
}

void AppendBool(Text& json, const wchar_t* key, bool value)
{
    AppendMember(json, key, value ? L"true" : L"false");
}

struct PrintTarget {
    HWND window;
    HDC picture;
};

// Prints one descendant into a bitmap of its own and copies it to its place in the picture: a
// control that clips to its client area in device units then still lands where it stands.
BOOL CALLBACK PrintChild(HWND child, LPARAM parameter)
{
    const auto& target = *reinterpret_cast<const PrintTarget*>(parameter);
    RECT place{};
    GetClientRect(child, &place);
    const int width = place.right;
    const int height = place.bottom;
    MapWindowPoints(child, target.window, reinterpret_cast<POINT*>(&place), 2);
    const UniqueMemoryDc dc(CreateCompatibleDC(target.picture));
    const UniqueBitmap bitmap(CreateCompatibleBitmap(target.picture, width, height));
    if (width <= 0 || height <= 0 || !dc || !bitmap) {
        return TRUE;
    }
    const GdiSelection selection(dc.Get(), bitmap.Get());
    // What the control does not print itself shows the picture below it.
    BitBlt(dc.Get(), 0, 0, width, height, target.picture, place.left, place.top, SRCCOPY);
    SendMessageW(child, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc.Get()), PRF_CLIENT);
    BitBlt(target.picture, place.left, place.top, width, height, dc.Get(), 0, 0, SRCCOPY);
    return TRUE;
}

// The window's client area with its controls, as they print themselves, saved as PNG.
bool SaveSnapshot(HWND window, TextView path)
{
    RECT client{};
    GetClientRect(window, &client);
    const HDC windowDc = GetDC(window);
    if (windowDc == nullptr) {
        return false;
    }
    bool saved = false;
    {
        const UniqueMemoryDc picture(CreateCompatibleDC(windowDc));
        UniqueBitmap bitmap(CreateCompatibleBitmap(windowDc, client.right, client.bottom));
        if (picture && bitmap) {
            {
                const GdiSelection selection(picture.Get(), bitmap.Get());
                SendMessageW(window, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(picture.Get()), PRF_CLIENT);
                PrintTarget target{window, picture.Get()};
                EnumChildWindows(window, PrintChild, reinterpret_cast<LPARAM>(&target));
            }
            UniqueGdiplusBitmap image;
            CLSID encoder{};
            if (gdip::GdipCreateBitmapFromHBITMAP(bitmap.Get(), nullptr, image.Put()) == Gdiplus::Ok &&
                SUCCEEDED(CLSIDFromString(kPngEncoder, &encoder))) {
                saved = gdip::GdipSaveImageToFile(image.Get(), Text(path).c_str(), &encoder, nullptr) == Gdiplus::Ok;
            }
        }
    }
    ReleaseDC(window, windowDc);
    return saved;
}

}  // namespace

Bytes ComposePickerReport(const PickerReportValues& values)
{
    Text json;
    AppendNumber(json, L"firstPaintMs", values.firstPaintMs);
    AppendNumber(json, L"paintCount", values.paintCount);
    AppendNumber(json, L"dpi", values.dpi);
    AppendString(json, L"language", values.language);
    AppendNumber(json, L"modCount", values.modCount);
    AppendNumber(json, L"visibleModCount", values.visibleModCount);
    AppendString(json, L"selectedSource", values.selectedSource);
    AppendString(json, L"search", values.search);
    AppendString(json, L"sdkFile", values.sdkFile);
    AppendBool(json, L"deleteButtonVisible", values.deleteButtonVisible);
    AppendBool(json, L"deleteButtonEnabled", values.deleteButtonEnabled);
    AppendString(json, L"deleteButtonText", values.deleteButtonText);
    AppendBool(json, L"childStarted", values.childStarted);
    AppendString(json, L"sourceRowLabel", values.sourceRowLabel);
    AppendMember(json, L"sourceRowHeight", std::to_wstring(values.sourceRowHeight));
    AppendBool(json, L"snapshotSaved", values.snapshotSaved);
    AppendBool(json, L"windowVisible", values.windowVisible);
    AppendString(json, L"status", values.status);
    json += L'}';
    return TextToUtf8(json);
}

void WritePickerReport(LaunchContext& context)
{
    if (context.pickerReport.empty()) {
        return;
    }
    const PickerState& picker = context.picker;
    const HWND window = picker.pickerWindow;
    const ModEntry* selected = SelectedMod(context);
    const HWND deleteButton = FindPickerControl(picker, kDeleteModId);

    PickerReportValues values;
    values.selectedSource = selected != nullptr ? selected->modProject : Text();
    if (context.pickerPreview && picker.sdkLoaded && !context.pickerSnapshot.empty()) {
        values.snapshotSaved = SaveSnapshot(window, context.pickerSnapshot);
    }
    values.firstPaintMs = picker.firstPaintMs;
    values.paintCount = picker.paintCount;
    values.dpi = context.previewDpi;
    values.language = context.language;
    values.modCount = picker.mods.size();
    values.visibleModCount = picker.visibleRows.size();
    values.search = WindowTextOf(picker.searchEdit);
    values.sdkFile = WindowTextOf(picker.sdkEdit);
    values.deleteButtonVisible = (GetWindowLongPtrW(deleteButton, GWL_STYLE) & WS_VISIBLE) != 0;
    values.deleteButtonEnabled = IsWindowEnabled(deleteButton) != FALSE;
    values.deleteButtonText = WindowTextOf(deleteButton);
    values.childStarted = context.editorStarted;
    values.sourceRowLabel = kRowSource.Now();
    values.sourceRowHeight = static_cast<std::int32_t>(SendMessageW(picker.modList, LB_GETITEMHEIGHT, 0, 0));
    values.windowVisible = IsWindowVisible(window) != FALSE;
    values.status = picker.statusText;
    WriteWholeFile(context.pickerReport, ComposePickerReport(values));
}

}  // namespace korvane
