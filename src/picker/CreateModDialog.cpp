#include "picker/CreateModDialog.h"

#include "context/LaunchContext.h"
#include "foundation/GdiSelection.h"
#include "foundation/Paths.h"
#include "picker/FileChoosers.h"
#include "picker/PickerCommands.h"
#include "picker/PickerLayout.h"
#include "picker/PickerTexts.h"
#include "picker/Theme.h"
#include "startup/RoundedPanel.h"
#include "tool/ToolCommand.h"

#include <commctrl.h>

#include <algorithm>

namespace korvane {
namespace {

constexpr DWORD kFormStyle = WS_CAPTION | WS_SYSMENU;
constexpr DWORD kFormExStyle = WS_EX_DLGMODALFRAME;
constexpr DWORD kEditStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | ES_AUTOHSCROLL;                             // 0x50010080
constexpr DWORD kComboStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | CBS_HASSTRINGS | CBS_OWNERDRAWFIXED | CBS_DROPDOWNLIST;  // 0x50010213
constexpr DWORD kButtonStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_OWNERDRAW;                              // 0x5001000B
constexpr int kTypeFieldHeight = 34;
constexpr int kTypeRowHeight = 32;
constexpr int kMeasuredRowHeight = 28;
constexpr int kCoverMargin = 16;
constexpr COLORREF kLabelColour = RGB(205, 223, 236);

// Controls in creation order, at 96 DPI.
struct FormControl {
    int id;
    const wchar_t* className;
    DWORD style;
    int x, y, width, height;
};
constexpr FormControl kFormControls[] = {
    {kFormNameEditId, L"EDIT", kEditStyle, 32, 192, 392, 36},
    {kFormAuthorEditId, L"EDIT", kEditStyle, 32, 276, 392, 36},
    {kFormTargetEditId, L"EDIT", kEditStyle, 32, 360, 284, 36},
    {kFormTypeComboId, L"COMBOBOX", kComboStyle, 32, 108, 392, 180},  // the height of its open list
    {kFormCoverTileId, L"BUTTON", kButtonStyle, 456, 108, 232, 204},
    {kFormChooseImageId, L"BUTTON", kButtonStyle, 456, 324, 146, 34},
    {kFormRemoveCoverId, L"BUTTON", kButtonStyle, 610, 324, 78, 34},
    {kFormChooseTargetId, L"BUTTON", kButtonStyle, 328, 360, 96, 36},
    {kFormCancelId, L"BUTTON", kButtonStyle, 464, 436, 104, 36},
    {kFormCreateId, L"BUTTON", kButtonStyle, 580, 436, 108, 36},
};

CreateModRequest* RequestOf(HWND form)
{
    return reinterpret_cast<CreateModRequest*>(GetWindowLongPtrW(form, GWLP_USERDATA));
}

HWND Item(const CreateModRequest& request, int id)
{
    return GetDlgItem(request.form, id);
}

RECT Scaled(int x, int y, int width, int height, std::uint32_t dpi)
{
    return RECT{ScaleToDpi(x, dpi), ScaleToDpi(y, dpi), ScaleToDpi(x + width, dpi), ScaleToDpi(y + height, dpi)};
}

void UpdateCreateButton(const CreateModRequest& request)
{
    EnableWindow(Item(request, kFormCreateId), CreateFormComplete(request) ? TRUE : FALSE);
}

void ShowCoverState(const CreateModRequest& request)
{
    const bool hasCover = request.coverThumbnail.IsValid();
    SetWindowTextW(Item(request, kFormChooseImageId), (hasCover ? kChangeImageButton : kChooseImageButton).Now().c_str());
    EnableWindow(Item(request, kFormRemoveCoverId), hasCover ? TRUE : FALSE);
    InvalidateRect(Item(request, kFormCoverTileId), nullptr, TRUE);
    InvalidateRect(request.form, nullptr, TRUE);
}

// The fonts for the form's DPI, the edits' style and every control's place.
void LayoutForm(CreateModRequest& request)
{
    LOGFONTW body{};
    GetObjectW(request.owner.picker.bodyFont.Get(), sizeof(body), &body);
    body.lfHeight = MulDiv(body.lfHeight, static_cast<int>(request.dpi), static_cast<int>(request.owner.previewDpi));
    UniqueFont formFont(CreateFontIndirectW(&body));
    LOGFONTW title = body;
    title.lfHeight = -ScaleToDpi(26, request.dpi);
    title.lfWeight = 600;
    UniqueFont formTitleFont(CreateFontIndirectW(&title));

    for (HWND edit : request.edits) {
        StyleEditControl(edit, request.dpi);
    }
    for (const FormControl& control : kFormControls) {
        SendMessageW(Item(request, control.id), WM_SETFONT, reinterpret_cast<WPARAM>(formFont.Get()), TRUE);
    }
    request.formFont = std::move(formFont);  // the earlier fonts go now that no control holds them
    request.formTitleFont = std::move(formTitleFont);
    for (const FormControl& control : kFormControls) {
        const RECT place = Scaled(control.x, control.y, control.width, control.height, request.dpi);
        SetWindowPos(Item(request, control.id), nullptr, place.left, place.top, place.right - place.left,
            place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
    }
    SendMessageW(request.typeCombo, CB_SETITEMHEIGHT, static_cast<WPARAM>(-1), ScaleToDpi(kTypeFieldHeight, request.dpi));
    SendMessageW(request.typeCombo, CB_SETITEMHEIGHT, 0, ScaleToDpi(kTypeRowHeight, request.dpi));
}

void CreateFormControls(CreateModRequest& request)
{
    const struct {
        int id;
        const LocalizedText* text;
    } captions[] = {
        {kFormCoverTileId, &kCoverTileText},
        {kFormChooseImageId, &kChooseImageButton},
        {kFormRemoveCoverId, &kRemoveCoverButton},
        {kFormChooseTargetId, &kChooseLocationButton},
        {kFormCancelId, &kCancelButton},
        {kFormCreateId, &kCreateModButton},
    };
    for (const FormControl& control : kFormControls) {
        Text caption;
        for (const auto& entry : captions) {
            if (entry.id == control.id) {
                caption = entry.text->Now();
            }
        }
        const HWND made = CreateWindowExW(0, control.className, caption.c_str(), control.style, 0, 0, 0, 0,
            request.form, reinterpret_cast<HMENU>(static_cast<INT_PTR>(control.id)), GetModuleHandleW(nullptr), nullptr);
        if (control.className == Text(L"BUTTON")) {
            StyleButtonSurface(made);
        }
    }
    request.edits[0] = Item(request, kFormNameEditId);
    request.edits[1] = Item(request, kFormAuthorEditId);
    request.edits[2] = Item(request, kFormTargetEditId);
    for (HWND edit : {request.edits[0], request.edits[1]}) {
        SendMessageW(edit, EM_SETLIMITTEXT, kModTextLimit, 0);
    }
    const Text cue = kSaveLocationCue.Now();
    SendMessageW(request.edits[2], EM_SETCUEBANNER, TRUE, reinterpret_cast<LPARAM>(cue.c_str()));
    request.typeCombo = Item(request, kFormTypeComboId);
    for (const LocalizedText* row : {&kStandardModType, &kTranslationModType}) {
        SendMessageW(request.typeCombo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row->Now().c_str()));
    }
    SendMessageW(request.typeCombo, CB_SETCURSEL, 0, 0);
    StyleComboControl(request.typeCombo, &request.dpi);
}

void PaintForm(const CreateModRequest& request, HDC dc)
{
    RECT client{};
    GetClientRect(request.form, &client);
    const UniqueBrush background(CreateSolidBrush(palette::kWindow));
    FillRect(dc, &client, background.Get());
    const std::uint32_t dpi = request.dpi;
    const HFONT body = request.formFont.Get();
    DrawThemeText(dc, kCreateHeading.Now(), Scaled(32, 24, 656, 36, dpi), request.formTitleFont.Get(),
        RGB(229, 241, 248), kLineFormat);
    const struct {
        const LocalizedText& text;
        int x, y, width;
    } labels[] = {
        {kTypeLabel, 32, 80, 392},
        {kModNameLabel, 32, 164, 392},
        {kAuthorLabel, 32, 248, 392},
        {kCoverLabel, 456, 80, 232},
        {kSaveLocationLabel, 32, 332, 392},
    };
    for (const auto& label : labels) {
        DrawThemeText(dc, label.text.Now(), Scaled(label.x, label.y, label.width, 20, dpi), body, kLabelColour, kLineFormat);
    }
    const bool error = !request.coverError.empty();
    DrawThemeText(dc, error ? request.coverError : kCoverHint.Now(), Scaled(456, 370, 232, 40, dpi), body,
        error ? RGB(244, 137, 129) : RGB(148, 177, 193), DT_WORDBREAK | DT_END_ELLIPSIS);
    const RECT divider = Scaled(32, 420, 656, 1, dpi);
    const UniqueBrush line(CreateSolidBrush(palette::kBorder));
    FillRect(dc, &divider, line.Get());
}

void DrawCoverTile(const CreateModRequest& request, const DRAWITEMSTRUCT& item)
{
    const bool focused = (item.itemState & ODS_FOCUS) != 0;
    DrawRoundedPanel(item.hDC, item.rcItem, palette::kField, focused ? palette::kFocusBorder : palette::kBorder,
        request.dpi, palette::kWindow);
    RECT inner = item.rcItem;
    const int margin = ScaleToDpi(kCoverMargin, request.dpi);
    InflateRect(&inner, -margin, -margin);
    if (request.coverThumbnail) {
        DrawFittedImage(item.hDC, request.coverThumbnail.Get(), inner);
        return;
    }
    RECT plus = inner;
    plus.bottom = inner.top + (inner.bottom - inner.top) * 2 / 3;
    DrawThemeText(item.hDC, L"+", plus, request.formTitleFont.Get(), palette::kPrimaryFill, kTileFormat);
    RECT hint = inner;
    hint.top = plus.bottom;
    DrawThemeText(item.hDC, kCoverTileHint.Now(), hint, request.formFont.Get(), RGB(148, 177, 193), kTileFormat);
}

void OnFormCommand(CreateModRequest& request, int id, int notification)
{
    switch (id) {
    case kFormNameEditId:
    case kFormAuthorEditId:
        if (notification == EN_CHANGE) {
            UpdateCreateButton(request);
        }
        return;
    case kFormTypeComboId:
        if (notification == CBN_SELCHANGE) {
            request.translation = SendMessageW(request.typeCombo, CB_GETCURSEL, 0, 0) == 1;
            InvalidateRect(request.form, nullptr, TRUE);
        }
        return;
    case kFormChooseImageId:
    case kFormCoverTileId:
        LoadCoverChoice(request);
        return;
    case kFormRemoveCoverId:
        request.coverFile.clear();
        request.coverThumbnail.Reset();
        request.coverError.clear();
        ShowCoverState(request);
        return;
    case kFormChooseTargetId: {
        const Text target = ChooseFilePath(request.form, kSaveModTitle.Now(), kModFilterName, kModFilterPattern,
            kModExtension, true, kNewModFileName);
        if (!target.empty()) {
            SetWindowTextW(request.edits[2], target.c_str());
        }
        return;
    }
    case kFormCreateId:
        if (!CreateFormComplete(request)) {
            return;
        }
        request.modName = TrimText(WindowTextOf(request.edits[0]));
        request.authorName = TrimText(WindowTextOf(request.edits[1]));
        request.targetFile = TrimText(WindowTextOf(request.edits[2]));
        request.accepted = true;
        DestroyWindow(request.form);
        return;
    case kFormCancelId:
        DestroyWindow(request.form);
        return;
    default:
        return;
    }
}

HBRUSH FormColourAnswer(CreateModRequest& request, UINT message, HDC dc)
{
    PickerState& picker = request.owner.picker;
    if (!picker.fieldBrush) {
        picker.fieldBrush.Reset(CreateSolidBrush(palette::kField));
        picker.surfaceBrush.Reset(CreateSolidBrush(palette::kWindow));
    }
    if (message == WM_CTLCOLORSTATIC || message == WM_CTLCOLORBTN) {
        SetTextColor(dc, palette::kEditText);
        SetBkColor(dc, palette::kWindow);
        return picker.surfaceBrush.Get();
    }
    SetTextColor(dc, palette::kEditText);
    SetBkColor(dc, palette::kField);
    return picker.fieldBrush.Get();
}

LRESULT CALLBACK FormWindowProc(HWND form, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NCCREATE) {
        auto* request = static_cast<CreateModRequest*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        request->form = form;
        SetWindowLongPtrW(form, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(request));
        return DefWindowProcW(form, message, wParam, lParam);
    }
    CreateModRequest* request = RequestOf(form);
    if (request == nullptr) {
        return DefWindowProcW(form, message, wParam, lParam);
    }
    switch (message) {
    case WM_CREATE:
        CreateFormControls(*request);
        LayoutForm(*request);
        EnableWindow(Item(*request, kFormRemoveCoverId), FALSE);
        UpdateCreateButton(*request);
        SetFocus(request->edits[0]);
        return 0;
    case WM_COMMAND:
        OnFormCommand(*request, LOWORD(wParam), HIWORD(wParam));
        return 0;
    case WM_CLOSE:
        DestroyWindow(form);
        return 0;
    case WM_DESTROY:
        request->form = nullptr;
        return 0;
    case WM_DPICHANGED: {
        request->dpi = LOWORD(wParam);
        const RECT& suggested = *reinterpret_cast<const RECT*>(lParam);
        SetWindowPos(form, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
            suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
        LayoutForm(*request);
        return 0;
    }
    case WM_ERASEBKGND:
        return 1;
    case WM_PAINT: {
        const PaintScope paint(form);
        if (paint.Dc() != nullptr) {
            PaintForm(*request, paint.Dc());
        }
        return 0;
    }
    case WM_PRINTCLIENT:
        PaintForm(*request, reinterpret_cast<HDC>(wParam));
        return 0;
    case WM_MEASUREITEM:
        reinterpret_cast<MEASUREITEMSTRUCT*>(lParam)->itemHeight =
            static_cast<UINT>(ScaleToDpi(kMeasuredRowHeight, request->dpi));
        return TRUE;
    case WM_DRAWITEM: {
        const auto& item = *reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
        if (item.CtlType == ODT_COMBOBOX) {
            DrawComboRow(item, request->formFont.Get(), request->dpi);
        } else if (item.CtlID == static_cast<UINT>(kFormCoverTileId)) {
            DrawCoverTile(*request, item);
        } else {
            DrawStyledButton(item, request->formFont.Get(), item.CtlID == static_cast<UINT>(kFormCreateId));
        }
        return TRUE;
    }
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
    case WM_CTLCOLORSTATIC:
    case WM_CTLCOLORBTN:
        return reinterpret_cast<LRESULT>(FormColourAnswer(*request, message, reinterpret_cast<HDC>(wParam)));
    default:
        break;
    }
    return DefWindowProcW(form, message, wParam, lParam);
}

bool RegisterFormClass()
{
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = FormWindowProc;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.lpszClassName = kFormWindowClass;
    return RegisterClassExW(&windowClass) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

// Return by the focused control: Cancel keeps its id, the edits and anything else below the
// buttons' range mean Create Mod, the buttons their own id.
void RunFormLoop(CreateModRequest& request)
{
    MSG message;
    while (request.form != nullptr && GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (message.message == WM_KEYDOWN && message.wParam == VK_RETURN) {
            int id = GetDlgCtrlID(GetFocus());
            if (id != kFormCancelId && id < 2200) {
                id = kFormCreateId;
            }
            SendMessageW(request.form, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0);
            continue;
        }
        if (message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE) {
            SendMessageW(request.form, WM_COMMAND, MAKEWPARAM(kFormCancelId, BN_CLICKED), 0);
            continue;
        }
        if (IsDialogMessageW(request.form, &message)) {
            continue;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace

CreateModRequest::CreateModRequest(LaunchContext& context) : owner(context), title(kNewModTitle.Now()) {}

bool RunCreateModDialog(CreateModRequest& request)
{
    if (!RegisterFormClass()) {
        return false;
    }
    const HWND picker = request.owner.picker.pickerWindow;
    request.dpi = request.owner.previewDpi;
    RECT frame{0, 0, ScaleToDpi(kFormClientWidth, request.dpi), ScaleToDpi(kFormClientHeight, request.dpi)};
    AdjustWindowRectExForDpi(&frame, kFormStyle, FALSE, kFormExStyle, request.dpi);
    RECT owner{};
    GetWindowRect(picker, &owner);
    const int width = frame.right - frame.left;
    const int height = frame.bottom - frame.top;
    const int left = owner.left + (owner.right - owner.left - width) / 2;
    const int top = owner.top + (owner.bottom - owner.top - height) / 2;
    if (CreateWindowExW(kFormExStyle, kFormWindowClass, request.title.c_str(), kFormStyle | WS_CLIPCHILDREN, left, top,
            width, height, picker, nullptr, GetModuleHandleW(nullptr), &request) == nullptr) {
        return false;
    }
    ApplyDarkTitleBar(request.form);
    EnableWindow(picker, FALSE);
    ShowWindow(request.form, SW_SHOW);
    RunFormLoop(request);
    EnableWindow(picker, TRUE);
    SetForegroundWindow(picker);
    return request.accepted;
}

bool CreateFormComplete(const CreateModRequest& request)
{
    return !TrimText(WindowTextOf(request.edits[0])).empty() && !TrimText(WindowTextOf(request.edits[1])).empty();
}

bool IsAcceptableCover(TextView path)
{
    const ImageFileInfo info = InspectImageFile(path);
    WIN32_FILE_ATTRIBUTE_DATA attributes{};
    if (!info.decodes || !info.png || !GetFileAttributesExW(Text(path).c_str(), GetFileExInfoStandard, &attributes)) {
        return false;
    }
    const std::uint64_t size = (static_cast<std::uint64_t>(attributes.nFileSizeHigh) << 32) | attributes.nFileSizeLow;
    return size <= kCoverByteLimit && info.size.width >= 1 && info.size.height >= 1 &&
        info.size.width <= kCoverPixelLimit && info.size.height <= kCoverPixelLimit;
}

void LoadCoverChoice(CreateModRequest& request)
{
    const Text path = ChooseFilePath(
        request.form, kCoverChooserTitle.Now(), kCoverFilterName, kCoverFilterPattern, kCoverExtension, false, L"");
    if (path.empty()) {
        return;
    }
    if (IsAcceptableCover(path)) {
        request.coverFile = path;
        request.coverThumbnail = LoadThumbnail(path);
        request.coverError.clear();
    } else {
        request.coverError = kCoverError.Now();
    }
    ShowCoverState(request);
}

Text BuildCreateCommand(const CreateModRequest& request, TextView sdk, TextView gameDirectory, TextView editorRoot)
{
    return BuildToolCommand(request.translation ? ToolCommandKind::TranslationsCreate : ToolCommandKind::Create,
        {
            .sdk = sdk,
            .gameRoot = gameDirectory,
            .editorRoot = editorRoot,
            .cover = request.coverFile,
            .name = request.modName,
            .authorName = request.authorName,
            .outputFile = request.targetFile,
        });
}

}  // namespace korvane
