#include "picker/Picker.h"

#include "context/LaunchContext.h"
#include "context/SharedConstants.h"
#include "picker/BackgroundTasks.h"
#include "picker/ModList.h"
#include "picker/PickerCommands.h"
#include "picker/PickerControls.h"
#include "picker/PickerIds.h"
#include "picker/PickerLayout.h"
#include "picker/PickerPaint.h"
#include "picker/PickerReport.h"
#include "picker/PickerTexts.h"
#include "picker/Theme.h"
#include "resources/ResourceIds.h"

#include <commctrl.h>

#include <algorithm>
#include <memory>

namespace korvane {
namespace {

constexpr DWORD kEditStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | ES_AUTOHSCROLL;                         // 0x50010080
constexpr DWORD kStaticStyle = WS_CHILD | WS_VISIBLE;                                                      // 0x50000000
constexpr DWORD kListStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | LBS_NOINTEGRALHEIGHT | LBS_OWNERDRAWFIXED | LBS_NOTIFY;  // 0x50010111
constexpr DWORD kComboStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | CBS_HASSTRINGS | CBS_OWNERDRAWFIXED | CBS_DROPDOWNLIST;  // 0x50010213
constexpr DWORD kButtonStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_OWNERDRAW;                          // 0x5001000B
constexpr DWORD kTooltipStyle = WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP;                                    // 0x80000003
constexpr int kTooltipMaxWidth = 640;

LaunchContext* ContextOf(HWND window)
{
    return reinterpret_cast<LaunchContext*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

// Each control is made where the layout puts it: moving the controls after the fact costs a round
// of window-manager calls apiece, which under Wine was a seventh of the time to the first paint.
HWND MakeControl(HWND parent, const std::vector<ControlPlacement>& layout, const wchar_t* className, DWORD style, int id,
    const Text& text = {})
{
    ControlPlacement place{id, 0, 0, 0, 0};
    for (const ControlPlacement& candidate : layout) {
        if (candidate.id == id) {
            place = candidate;
        }
    }
    return CreateWindowExW(0, className, text.c_str(), style, place.x, place.y, place.width, place.height, parent,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr), nullptr);
}

std::vector<ControlPlacement> CurrentLayout(const LaunchContext& context)
{
    RECT client{};
    GetClientRect(context.picker.pickerWindow, &client);
    return PickerLayout(client.right, client.bottom, context.previewDpi);
}

void MarkOnSdkPanel(HWND control)
{
    SetPropW(control, kSurfaceBackgroundProperty, reinterpret_cast<HANDLE>(static_cast<UINT_PTR>(palette::kSdkPanel)));
}

void CreateTooltip(LaunchContext& context)
{
    PickerState& picker = context.picker;
    picker.modTooltip = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, kTooltipStyle, CW_USEDEFAULT,
        CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, picker.pickerWindow, nullptr, GetModuleHandleW(nullptr), nullptr);
    TOOLINFOW tool{};
    tool.cbSize = sizeof(tool);
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = picker.pickerWindow;
    tool.uId = reinterpret_cast<UINT_PTR>(picker.modList);
    tool.lpszText = LPSTR_TEXTCALLBACKW;
    SendMessageW(picker.modTooltip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    SendMessageW(picker.modTooltip, TTM_SETMAXTIPWIDTH, 0, ScaleToDpi(kTooltipMaxWidth, context.previewDpi));
}

// The controls in creation order, which is also the tab order.
void CreateControls(LaunchContext& context)
{
    PickerState& picker = context.picker;
    const HWND window = picker.pickerWindow;
    const std::vector<ControlPlacement> layout = CurrentLayout(context);
    picker.gameFolderEdit = MakeControl(window, layout, L"EDIT", kEditStyle, kGameFolderEditId, context.gameDirectory);
    picker.sdkEdit = MakeControl(window, layout, L"EDIT", kEditStyle, kSdkEditId, context.launchTarget);
    picker.searchEdit = MakeControl(window, layout, L"EDIT", kEditStyle, kSearchEditId);
    picker.statusLine = MakeControl(window, layout, L"STATIC", kStaticStyle, kStatusLineId);
    picker.modList = MakeControl(window, layout, L"LISTBOX", kListStyle, kModListId);
    CreateTooltip(context);
    picker.languageCombo = MakeControl(window, layout, L"COMBOBOX", kComboStyle, kLanguageComboId);
    for (const LanguageRow& row : context.languages) {
        SendMessageW(picker.languageCombo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row.displayName.c_str()));
    }
    SendMessageW(picker.languageCombo, CB_SETMINVISIBLE, context.languages.size(), 0);
    SendMessageW(picker.languageCombo, CB_SETITEMHEIGHT, 0, ScaleToDpi(kLanguageRowHeight, context.previewDpi));
    SendMessageW(picker.languageCombo, CB_SETITEMHEIGHT, static_cast<WPARAM>(-1),
        ScaleToDpi(kLanguageFieldHeight, context.previewDpi));
    StyleComboControl(picker.languageCombo, &context.previewDpi);

    for (const int id : {kChooseGameFolderId, kChooseSdkId, kRefreshId, kNewModId, kImportModId, kDeleteModId,
             kStartEditingId}) {
        picker.actionButtons.push_back(MakeControl(window, layout, L"BUTTON", kButtonStyle, id));
    }
    picker.startButton = picker.actionButtons.back();
    picker.closeButton = MakeControl(window, layout, L"BUTTON", kButtonStyle, kCloseId);
    for (HWND button : picker.actionButtons) {
        StyleButtonSurface(button);
    }
    StyleButtonSurface(picker.closeButton);
    for (const int id : {kGameFolderEditId, kSdkEditId, kChooseGameFolderId, kChooseSdkId}) {
        MarkOnSdkPanel(FindPickerControl(picker, id));
    }
}

void LayoutPickerControls(const LaunchContext& context)
{
    const HWND window = context.picker.pickerWindow;
    for (const ControlPlacement& place : CurrentLayout(context)) {
        const HWND control = FindPickerControl(context.picker, place.id);
        RECT now{};
        GetWindowRect(control, &now);
        MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&now), 2);
        // A control already in place is left alone: even a move to where it stands costs a round
        // trip, and a combo's move resizes its drop-down list as well. A combo's window is only
        // its field, whatever height it drops to, so only its place and width tell; the width
        // follows the DPI as that height does.
        const bool heightTells = place.id != kLanguageComboId;
        if (now.left != place.x || now.top != place.y || now.right - now.left != place.width ||
            (heightTells && now.bottom - now.top != place.height)) {
            SetWindowPos(control, nullptr, place.x, place.y, place.width, place.height, SWP_NOZORDER | SWP_NOACTIVATE);
        }
    }
    SendMessageW(context.picker.modList, LB_SETITEMHEIGHT, 0, ScaleToDpi(kModRowHeight, context.previewDpi));
}

// The tooltip asks for its text: the package of the row under the mouse.
void GiveTooltipText(LaunchContext& context, NMTTDISPINFOW& info)
{
    PickerState& picker = context.picker;
    picker.tooltipText.clear();
    POINT point{};
    GetCursorPos(&point);
    ScreenToClient(picker.modList, &point);
    const LRESULT hit = SendMessageW(picker.modList, LB_ITEMFROMPOINT, 0, MAKELPARAM(point.x, point.y));
    const std::size_t row = LOWORD(hit);
    RECT rowRect{};
    if (HIWORD(hit) == 0 && row < picker.visibleRows.size() &&
        SendMessageW(picker.modList, LB_GETITEMRECT, row, reinterpret_cast<LPARAM>(&rowRect)) != LB_ERR &&
        PtInRect(&rowRect, point)) {
        picker.tooltipText = kTooltipPrefix.Now() + picker.mods[picker.visibleRows[row]].modProject;
    }
    info.lpszText = picker.tooltipText.data();
}

HBRUSH ColourAnswer(LaunchContext& context, UINT message, HDC dc, HWND control)
{
    PickerState& picker = context.picker;
    if (!picker.fieldBrush) {
        picker.fieldBrush.Reset(CreateSolidBrush(palette::kField));
        picker.surfaceBrush.Reset(CreateSolidBrush(palette::kWindow));
    }
    switch (message) {
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
        SetTextColor(dc, palette::kSystemEditText);
        SetBkColor(dc, palette::kField);
        return picker.fieldBrush.Get();
    case WM_CTLCOLORBTN:
        SetBkColor(dc, palette::kWindow);
        return picker.surfaceBrush.Get();
    default:
        SetTextColor(dc, static_cast<COLORREF>(reinterpret_cast<UINT_PTR>(GetPropW(control, kStatusColorProperty))));
        SetBkColor(dc, palette::kWindow);
        SetBkMode(dc, OPAQUE);
        return picker.surfaceBrush.Get();
    }
}

void OnPaint(LaunchContext& context)
{
    PickerState& picker = context.picker;
    PAINTSTRUCT paint{};
    const HDC dc = BeginPaint(picker.pickerWindow, &paint);
    if (dc != nullptr) {
        PaintPicker(context, dc);
    }
    EndPaint(picker.pickerWindow, &paint);
    ++picker.paintCount;
    if (picker.firstPaintMs == 0) {
        picker.firstPaintMs = GetTickCount64() - context.startTick;
    }
}

void OnDrawItem(LaunchContext& context, const DRAWITEMSTRUCT& item)
{
    switch (item.CtlType) {
    case ODT_LISTBOX:
        DrawModRow(context, item);
        return;
    case ODT_COMBOBOX:
        DrawComboRow(item, context.picker.bodyFont.Get(), context.previewDpi);
        return;
    case ODT_BUTTON:
        DrawStyledButton(item, context.picker.bodyFont.Get(), item.CtlID == static_cast<UINT>(kStartEditingId));
        return;
    default:
        return;
    }
}

void OnDpiChanged(LaunchContext& context, WPARAM wParam, const RECT& suggested)
{
    if (context.pickerPreview) {
        return;  // a preview keeps the DPI it was given
    }
    context.previewDpi = LOWORD(wParam);
    SetWindowPos(context.picker.pickerWindow, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
        suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
    CreatePickerFonts(context);
    LayoutPickerControls(context);
}

LRESULT CALLBACK PickerWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NCCREATE) {
        auto* context = static_cast<LaunchContext*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        context->picker.pickerWindow = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(context));
        return DefWindowProcW(window, message, wParam, lParam);
    }
    LaunchContext* context = ContextOf(window);
    if (context == nullptr) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    switch (message) {
    case WM_CREATE:
        CreateControls(*context);
        CreatePickerFonts(*context);
        LayoutPickerControls(*context);
        RefreshPickerTexts(*context);
        SetStatus(*context, kChooseSdkPrompt.Now(), kStatusInfo);
        return 0;
    case WM_DESTROY:
        context->picker.titleFont.Reset();
        context->picker.bodyFont.Reset();
        PostQuitMessage(0);
        return 0;
    case WM_SIZE:
        LayoutPickerControls(*context);
        InvalidateRect(window, nullptr, FALSE);
        return 0;
    case WM_PAINT:
        OnPaint(*context);
        return 0;
    case WM_PRINTCLIENT:
        PaintPicker(*context, reinterpret_cast<HDC>(wParam));
        return 0;
    case WM_ERASEBKGND:
        return 1;
    case WM_CLOSE:
        OnPickerClose(*context);
        return 0;
    case WM_GETMINMAXINFO: {
        auto* limits = reinterpret_cast<MINMAXINFO*>(lParam);
        limits->ptMinTrackSize.x = ScaleToDpi(kPickerMinTrackWidth, context->previewDpi);
        limits->ptMinTrackSize.y = ScaleToDpi(kPickerMinTrackHeight, context->previewDpi);
        return 0;
    }
    case WM_DRAWITEM:
        OnDrawItem(*context, *reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        return TRUE;
    case WM_MEASUREITEM: {
        auto* item = reinterpret_cast<MEASUREITEMSTRUCT*>(lParam);
        item->itemHeight = static_cast<UINT>(
            ScaleToDpi(item->CtlType == ODT_COMBOBOX ? kLanguageRowHeight : kModRowHeight, context->previewDpi));
        return TRUE;
    }
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLORSTATIC:
        return reinterpret_cast<LRESULT>(
            ColourAnswer(*context, message, reinterpret_cast<HDC>(wParam), reinterpret_cast<HWND>(lParam)));
    case WM_NOTIFY: {
        auto* header = reinterpret_cast<NMHDR*>(lParam);
        if (header->hwndFrom == context->picker.modTooltip && header->code == TTN_GETDISPINFOW) {
            GiveTooltipText(*context, *reinterpret_cast<NMTTDISPINFOW*>(lParam));
            return 0;
        }
        break;
    }
    case WM_COMMAND:
        OnPickerCommand(*context, LOWORD(wParam), HIWORD(wParam));
        return 0;
    case WM_TIMER:
        if (wParam == kPreviewCloseTimerId) {
            KillTimer(window, kPreviewCloseTimerId);
            WritePickerReport(*context);
            SendMessageW(window, WM_CLOSE, 0, 0);
        }
        return 0;
    case WM_DPICHANGED:
        OnDpiChanged(*context, wParam, *reinterpret_cast<const RECT*>(lParam));
        return 0;
    case WM_TASK_FINISHED:
        OnTaskFinished(*context, std::unique_ptr<WorkResult>(reinterpret_cast<WorkResult*>(lParam)));
        return 0;
    case WM_PICKER_INITIAL_LOAD:
        StartBackgroundTask(*context,
            InitialPreviewTask(*context, context->launchTarget, context->gameDirectory, context->pickerFixture),
            kReadingSdkStatus.Now());
        return 0;
    default:
        break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

bool RegisterPickerClass()
{
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.style = CS_HREDRAW | CS_VREDRAW;
    windowClass.lpfnWndProc = PickerWindowProc;
    windowClass.hInstance = instance;
    windowClass.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(IDI_KORVANE_APP));
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.lpszClassName = kPickerWindowClass;
    return RegisterClassExW(&windowClass) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

// The window's frame for a client of 1024 by 640 at the picker's DPI, cut to the primary work
// area and centred in it.
RECT PickerWindowBounds(std::uint32_t dpi, DWORD style, DWORD exStyle)
{
    RECT frame{0, 0, ScaleToDpi(kPickerClientWidth, dpi), ScaleToDpi(kPickerClientHeight, dpi)};
    AdjustWindowRectExForDpi(&frame, style, FALSE, exStyle, dpi);
    RECT work{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    const int width = std::min(frame.right - frame.left, work.right - work.left);
    const int height = std::min(frame.bottom - frame.top, work.bottom - work.top);
    const int left = work.left + (work.right - work.left - width) / 2;
    const int top = work.top + (work.bottom - work.top - height) / 2;
    return RECT{left, top, left + width, top + height};
}

// The Return key by the focused control: the command it stands for, or 0 to let the key on.
int ReturnCommand(const LaunchContext& context)
{
    const HWND focus = GetFocus();
    if (focus == nullptr) {
        return 0;
    }
    if (focus == context.picker.gameFolderEdit || focus == context.picker.sdkEdit) {
        return kRefreshId;
    }
    if (focus == context.picker.modList) {
        return kStartEditingId;
    }
    const int id = GetDlgCtrlID(focus);
    const bool command = (id >= kChooseGameFolderId && id <= kCloseId) || (id >= kNewModId && id <= kRefreshId);
    return command && GetParent(focus) == context.picker.pickerWindow ? id : 0;
}

void RunMessageLoop(const LaunchContext& context)
{
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (message.message == WM_KEYDOWN && message.wParam == VK_RETURN) {
            if (const int command = ReturnCommand(context); command != 0) {
                SendMessageW(context.picker.pickerWindow, WM_COMMAND, MAKEWPARAM(command, BN_CLICKED), 0);
                continue;
            }
        }
        if (IsWindow(context.picker.pickerWindow) && IsDialogMessageW(context.picker.pickerWindow, &message)) {
            continue;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

// After a launch the process stays with the editor and hands on its exit code.
int WaitForEditor(LaunchContext& context)
{
    if (!context.editorStarted) {
        return kExitSuccess;
    }
    DWORD exitCode = 1;
    WaitForSingleObject(context.editorProcess.Process(), INFINITE);
    if (!GetExitCodeProcess(context.editorProcess.Process(), &exitCode)) {
        exitCode = 1;
    }
    context.editorProcess.Reset();
    context.editorStarted = false;
    return static_cast<int>(exitCode);
}

}  // namespace

HWND CreatePickerWindow(LaunchContext& context)
{
    SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    if (!context.pickerPreview) {
        context.previewDpi = GetDpiForSystem();
    }
    if (context.startTick == 0) {
        context.startTick = GetTickCount64();
    }
    const INITCOMMONCONTROLSEX controls{sizeof(INITCOMMONCONTROLSEX), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&controls);
    if (!RegisterPickerClass()) {
        return nullptr;
    }
    const DWORD style = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;
    const RECT bounds = PickerWindowBounds(context.previewDpi, style, WS_EX_APPWINDOW);
    const HWND window = CreateWindowExW(WS_EX_APPWINDOW, kPickerWindowClass, kWindowTitle, style, bounds.left, bounds.top,
        bounds.right - bounds.left, bounds.bottom - bounds.top, nullptr, nullptr, GetModuleHandleW(nullptr), &context);
    if (window == nullptr) {
        return nullptr;
    }
    ApplyDarkTitleBar(window);
    SubclassModList(context);
    for (HWND edit : {context.picker.gameFolderEdit, context.picker.sdkEdit, context.picker.searchEdit}) {
        StyleEditControl(edit, context.previewDpi);
    }
    if (!(context.pickerPreview && context.pickerPreviewHidden)) {
        // Shown without redrawing and then invalidated whole, so that the window's own first
        // paint comes before the controls': the show would otherwise erase every control first,
        // each a round of window-manager calls, while the window stood unpainted.
        SetWindowPos(window, HWND_TOP, 0, 0, 0, 0,
            SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW | SWP_NOREDRAW);
        RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
        UpdateWindow(window);
    }
    return window;
}

int RunPicker(LaunchContext& context)
{
    const HWND window = CreatePickerWindow(context);
    if (window == nullptr) {
        return kExitNoPickerWindow;
    }
    PostMessageW(window, WM_PICKER_INITIAL_LOAD, 0, 0);
    if (context.pickerPreview && context.pickerPreviewMs != 0) {
        SetTimer(window, kPreviewCloseTimerId, context.pickerPreviewMs, nullptr);
    }
    WritePickerReport(context);
    RunMessageLoop(context);
    if (context.workerThread.joinable()) {
        context.workerThread.join();
    }
    return WaitForEditor(context);
}

}  // namespace korvane
