#include "picker/PickerCommands.h"

#include "context/LaunchContext.h"
#include "foundation/Paths.h"
#include "host/SdkDiscovery.h"
#include "language/EditorSettingsFile.h"
#include "picker/BackgroundTasks.h"
#include "picker/Catalogue.h"
#include "picker/CommandStates.h"
#include "picker/CreateModDialog.h"
#include "picker/FileChoosers.h"
#include "picker/ModRemoval.h"
#include "picker/PickerControls.h"
#include "picker/PickerIds.h"
#include "picker/PickerReport.h"
#include "picker/PickerTexts.h"
#include "picker/Theme.h"

#include <commctrl.h>

namespace korvane {
namespace {

HWND Control(const LaunchContext& context, int id)
{
    return FindPickerControl(context.picker, id);
}

// Sets an edit's text after the record's field has been set to it, so that the edit's change
// notification finds no difference.
void ShowInEdit(HWND edit, const Text& text)
{
    SetWindowTextW(edit, text.c_str());
}

bool IsIdle(const LaunchContext& context)
{
    return !context.picker.taskRunning;
}

// The list's selection as a position among the visible rows, or -1.
int SelectedPosition(const LaunchContext& context)
{
    const LRESULT selection = SendMessageW(context.picker.modList, LB_GETCURSEL, 0, 0);
    if (selection == LB_ERR || static_cast<std::size_t>(selection) >= context.picker.visibleRows.size()) {
        return -1;
    }
    return static_cast<int>(selection);
}

void ShowModCount(LaunchContext& context)
{
    SetStatus(context, ModCountText(context.picker.mods.size()), kStatusInfo);
}

void ClearSdk(PickerState& picker)
{
    picker.sdkLoaded = false;
    picker.mods.clear();
    picker.visibleRows.clear();
    picker.gameIcon.Reset();
    picker.gameTitle.clear();
    picker.gameVersion.clear();
    picker.engineVersion.clear();
}

// A path edit changed by hand: the rows stay in view, but belong to the SDK no more.
void OnPathEdited(LaunchContext& context)
{
    if (WindowTextOf(context.picker.sdkEdit) == context.launchTarget &&
        WindowTextOf(context.picker.gameFolderEdit) == context.gameDirectory) {
        return;
    }
    context.picker.sdkLoaded = false;
    UpdateCommandStates(context);
    SetStatus(context, kApplySelectionStatus.Now(), kStatusInfo);
}

void ChangeLanguage(LaunchContext& context)
{
    const LRESULT row = SendMessageW(context.picker.languageCombo, CB_GETCURSEL, 0, 0);
    if (row == CB_ERR || static_cast<std::size_t>(row) >= context.languages.size()) {
        return;
    }
    const Text& code = context.languages[static_cast<std::size_t>(row)].code;
    // The one command that waits on the window thread: the editor's own settings file.
    if (!context.pickerPreview && !SaveEditorLanguageSetting(context.editorSettingsFile, code)) {
        RefreshPickerTexts(context);
        SetStatus(context, kLanguageNotSavedStatus.Now(), kStatusError);
        return;
    }
    context.language = code;
    SetUiLanguage(code);
    RefreshPickerTexts(context);
}

void ChooseGameFolderCommand(LaunchContext& context)
{
    const Text folder = ChooseGameFolder(context.picker.pickerWindow);
    if (folder.empty()) {
        return;
    }
    SetWindowTextW(context.picker.gameFolderEdit, folder.c_str());
    // Emptied, so that the SDK is found anew in that folder.
    SetWindowTextW(context.picker.sdkEdit, L"");
    BeginSdkLoad(context);
}

void ChooseSdkCommand(LaunchContext& context)
{
    const Text sdk = ChooseFilePath(
        context.picker.pickerWindow, kChooseSdkTitle.Now(), kSdkFilterName, kSdkFilterPattern, kSdkExtension, false, L"");
    if (sdk.empty()) {
        return;
    }
    SetWindowTextW(context.picker.sdkEdit, sdk.c_str());
    BeginSdkLoad(context);
}

void RefreshCommand(LaunchContext& context)
{
    if (TrimText(WindowTextOf(context.picker.gameFolderEdit)).empty() &&
        TrimText(WindowTextOf(context.picker.sdkEdit)).empty()) {
        SetStatus(context, kChooseSdkPrompt.Now(), kStatusInfo);
        return;
    }
    BeginSdkLoad(context);
}

// Copies of the record's SDK, game and install, and the selected Mod, taken before a command.
struct CommandCopies {
    Text sdk;
    Text gameDirectory;
    Text editorRoot;
    const ModEntry* mod;
};

void StartEditing(LaunchContext& context, const CommandCopies& copies)
{
    if (!IsRegularFile(copies.mod->modProject) || !IsRegularFile(copies.sdk)) {
        SetStatus(context, kSelectionGoneStatus.Now(), kStatusError);
        return;
    }
    context.launchInProgress = true;
    ShowWindow(context.picker.pickerWindow, SW_HIDE);
    context.modFile = copies.mod->modProject;
    context.selectedMod.clear();
    context.modProjectFile.clear();
    context.launchTarget = copies.sdk;
    StartBackgroundTask(context, LaunchTask(context), kEnteringModStatus.Now());
}

void RemoveMod(LaunchContext& context, const CommandCopies& copies)
{
    const int answer = MessageBoxW(context.picker.pickerWindow,
        RemovalQuestion(copies.mod->name, copies.mod->modProject).c_str(), kRemoveCaption.Now().c_str(),
        MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2);
    if (answer != IDYES) {
        return;
    }
    StartBackgroundTask(context,
        RemoveModTask(context, copies.sdk, copies.gameDirectory, copies.mod->modProject, context.picker.pickerWindow),
        kRemovingStatus.Now());
}

void CreateMod(LaunchContext& context, const CommandCopies& copies)
{
    CreateModRequest request(context);
    if (!RunCreateModDialog(request)) {
        return;
    }
    const Text command = BuildCreateCommand(request, copies.sdk, copies.gameDirectory, copies.editorRoot);
    const Text fallback = copies.mod != nullptr ? copies.mod->modProject : Text();
    StartBackgroundTask(context,
        ModCommandTask(context, copies.sdk, copies.gameDirectory, copies.editorRoot, command, fallback),
        kWorkingOnModStatus.Now());
}

void ImportMod(LaunchContext& context, const CommandCopies& copies)
{
    const Text file = ChooseFilePath(
        context.picker.pickerWindow, kImportTitle.Now(), kModFilterName, kModFilterPattern, kModExtension, false, L"");
    if (file.empty()) {
        return;
    }
    const Text command = BuildImportCommand(file, copies.sdk, copies.gameDirectory, copies.editorRoot);
    StartBackgroundTask(context,
        ModCommandTask(context, copies.sdk, copies.gameDirectory, copies.editorRoot, command, file),
        kWorkingOnModStatus.Now());
}

// The commands that work on the SDK and the selected Mod.
void ModCommand(LaunchContext& context, int id)
{
    const CommandCopies copies{context.launchTarget, context.gameDirectory, context.editorRoot, SelectedMod(context)};
    const PickerState& picker = context.picker;
    const bool preview = context.pickerPreview;
    switch (id) {
    case kStartEditingId:
        if (copies.mod == nullptr || !picker.sdkLoaded || !picker.editorBuildMatches) {
            return;
        }
        if (preview) {
            SetStatus(context, kPreviewNoEditorStatus.Now(), kStatusInfo);
        } else {
            StartEditing(context, copies);
        }
        return;
    case kDeleteModId:
        if (copies.mod == nullptr || !picker.sdkLoaded) {
            return;
        }
        if (preview) {
            SetStatus(context, kPreviewNoModifyStatus.Now(), kStatusInfo);
        } else {
            RemoveMod(context, copies);
        }
        return;
    case kNewModId:
        if (preview) {
            SetStatus(context, kPreviewNoModifyStatus.Now(), kStatusInfo);
        } else if (picker.sdkLoaded && picker.editorBuildMatches && !copies.sdk.empty()) {
            CreateMod(context, copies);
        }
        return;
    case kImportModId:
        if (preview) {
            SetStatus(context, kPreviewNoModifyStatus.Now(), kStatusInfo);
        } else if (picker.sdkLoaded && !copies.sdk.empty()) {
            ImportMod(context, copies);
        }
        return;
    default:
        return;
    }
}

}  // namespace

Text WindowTextOf(HWND window)
{
    const int length = GetWindowTextLengthW(window);
    Text text(static_cast<std::size_t>(length) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), length + 1)));
    return text;
}

void SetStatus(LaunchContext& context, TextView text, COLORREF colour)
{
    PickerState& picker = context.picker;
    picker.statusText.assign(text);
    SetWindowTextW(picker.statusLine, picker.statusText.c_str());
    SetPropW(picker.statusLine, kStatusColorProperty, reinterpret_cast<HANDLE>(static_cast<UINT_PTR>(colour)));
    InvalidateRect(picker.statusLine, nullptr, TRUE);
}

void UpdateCommandStates(LaunchContext& context)
{
    const PickerState& picker = context.picker;
    const bool rowSelected = picker.sdkLoaded && SelectedPosition(context) >= 0;
    const CommandStates states =
        CommandStatesFor(picker.taskRunning, picker.sdkLoaded, rowSelected, picker.editorBuildMatches);
    const struct {
        int id;
        bool enabled;
    } buttons[] = {
        {kChooseGameFolderId, states.chooseGameFolder},
        {kChooseSdkId, states.chooseSdk},
        {kRefreshId, states.refresh},
        {kNewModId, states.newMod},
        {kImportModId, states.importMod},
        {kDeleteModId, states.deleteMod},
        {kStartEditingId, states.startEditing},
    };
    // Only what changes is touched: this runs on every keystroke in the search field, and each
    // enable or caption change is a round of messages and repainting for its control.
    const auto enable = [](HWND control, bool enabled) {
        if ((IsWindowEnabled(control) != FALSE) != enabled) {
            EnableWindow(control, enabled ? TRUE : FALSE);
        }
    };
    for (HWND control : picker.actionButtons) {
        const int id = GetDlgCtrlID(control);
        for (const auto& button : buttons) {
            if (button.id == id) {
                enable(control, button.enabled);
            }
        }
    }
    for (HWND control : {picker.gameFolderEdit, picker.sdkEdit, picker.languageCombo}) {
        enable(control, states.pathsAndLanguage);
    }
    const Text close = (states.closeCancels ? kCancelButton : kCloseButton).Now();
    if (WindowTextOf(picker.closeButton) != close) {
        SetWindowTextW(picker.closeButton, close.c_str());
    }
}

void RefreshPickerTexts(LaunchContext& context)
{
    PickerState& picker = context.picker;
    const struct {
        int id;
        const LocalizedText& text;
    } commands[] = {
        {kChooseGameFolderId, kChooseFolderButton},
        {kChooseSdkId, kChooseSdkButton},
        {kRefreshId, kRefreshButton},
        {kNewModId, kNewModButton},
        {kImportModId, kImportModButton},
        {kDeleteModId, kDeleteModButton},
        {kStartEditingId, kStartEditingButton},
    };
    for (const auto& command : commands) {
        SetWindowTextW(Control(context, command.id), command.text.Now().c_str());
    }
    const Text hint = kSearchHint.Now();
    SendMessageW(picker.searchEdit, EM_SETCUEBANNER, TRUE, reinterpret_cast<LPARAM>(hint.c_str()));

    std::size_t row = 0;
    for (std::size_t index = 0; index < context.languages.size(); ++index) {
        if (context.languages[index].code == context.language) {
            row = index;
        }
    }
    SendMessageW(picker.languageCombo, CB_SETCURSEL, row, 0);

    if (IsIdle(context) && picker.sdkLoaded && picker.editorBuildMatches) {
        ShowModCount(context);
    }
    UpdateCommandStates(context);
    InvalidateRect(picker.pickerWindow, nullptr, TRUE);
}

void BeginSdkLoad(LaunchContext& context)
{
    PickerState& picker = context.picker;
    Text message;
    if (!ResolveSdkSelection(TrimText(WindowTextOf(picker.gameFolderEdit)), TrimText(WindowTextOf(picker.sdkEdit)),
            context.gameDirectory, context.launchTarget, message)) {
        SetStatus(context, message, kStatusError);
        return;
    }
    ClearSdk(picker);
    RebuildModList(context, L"");
    ShowInEdit(picker.sdkEdit, context.launchTarget);
    StartBackgroundTask(context, PreviewTask(context, context.launchTarget, context.gameDirectory),
        kReadingSdkAndModsStatus.Now());
}

void ApplyPreview(LaunchContext& context, WorkResult& result)
{
    PickerState& picker = context.picker;
    picker.sdkLoaded = true;
    picker.editorBuildMatches = result.editorBuildMatches;
    picker.gameTitle = GameTitleOf(result.preview);
    picker.gameVersion = FindJsonMember(result.preview, L"gameVersion").text;
    picker.engineVersion = FindJsonMember(result.preview, L"engineVersion").text;
    picker.gameIcon = std::move(result.gameIcon);
    picker.mods.clear();
    picker.mods = ReadModEntries(result.preview, result.covers);
    RebuildModList(context, result.selectedModProject);
    ShowModCount(context);
    if (!picker.editorBuildMatches) {
        SetStatus(context, kBuildMismatchMessage.Now(), kStatusError);
    }
}

const ModEntry* SelectedMod(const LaunchContext& context)
{
    const int position = SelectedPosition(context);
    if (position < 0) {
        return nullptr;
    }
    const std::size_t index = context.picker.visibleRows[static_cast<std::size_t>(position)];
    return index < context.picker.mods.size() ? &context.picker.mods[index] : nullptr;
}

void RebuildModList(LaunchContext& context, TextView preferred)
{
    PickerState& picker = context.picker;
    Text keep(preferred);
    if (keep.empty()) {
        if (const ModEntry* selected = SelectedMod(context)) {
            keep = selected->modProject;
        }
    }
    const ModFilter filter = FilterMods(picker.mods, WindowTextOf(picker.searchEdit), keep);

    SendMessageW(picker.modTooltip, TTM_POP, 0, 0);
    picker.hoverRow = -1;
    // One repaint for the whole refill, not one per row.
    SendMessageW(picker.modList, WM_SETREDRAW, FALSE, 0);
    // The rows go straight to the list box's own procedure: the scrolling subclass has no part
    // in them, and a pass through a subclass costs a property lookup per message, which under
    // Wine is a server round trip and made a refill of 10,000 rows take over a second.
    const auto listBox = reinterpret_cast<WNDPROC>(GetClassLongPtrW(picker.modList, GCLP_WNDPROC));
    CallWindowProcW(listBox, picker.modList, LB_RESETCONTENT, 0, 0);
    picker.visibleRows = filter.visibleRows;
    CallWindowProcW(listBox, picker.modList, LB_INITSTORAGE, picker.visibleRows.size(), 0);
    for (const std::size_t index : picker.visibleRows) {
        // A list without strings keeps the argument as the row's item data.
        CallWindowProcW(listBox, picker.modList, LB_ADDSTRING, 0, static_cast<LPARAM>(index));
    }
    SendMessageW(picker.modList, LB_SETCURSEL, filter.selectedRow ? *filter.selectedRow : static_cast<std::size_t>(-1), 0);
    SendMessageW(picker.modList, WM_SETREDRAW, TRUE, 0);
    UpdateCommandStates(context);
    InvalidateRect(picker.pickerWindow, nullptr, FALSE);
    InvalidateRect(picker.modList, nullptr, TRUE);
}

void OnPickerCommand(LaunchContext& context, int id, int notification)
{
    PickerState& picker = context.picker;
    if ((id == kGameFolderEditId || id == kSdkEditId) && notification == EN_CHANGE) {
        if (IsIdle(context)) {
            OnPathEdited(context);
        }
        return;
    }
    if (id == kSearchEditId) {
        if (notification == EN_CHANGE) {
            RebuildModList(context, L"");
            WritePickerReport(context);
        }
        return;
    }
    if (id == kModListId) {
        if (notification == LBN_SELCHANGE) {
            UpdateCommandStates(context);
        } else if (notification == LBN_DBLCLK) {
            SendMessageW(picker.pickerWindow, WM_COMMAND, MAKEWPARAM(kStartEditingId, BN_CLICKED), 0);
        }
        return;
    }
    if (id == kCloseId) {
        if (notification != BN_CLICKED) {
            return;
        }
        if (IsIdle(context)) {
            WritePickerReport(context);
            DestroyWindow(picker.pickerWindow);
        } else {
            context.cancelRequested.store(true);
            SetStatus(context, kCancellingStatus.Now(), kStatusInfo);
        }
        return;
    }
    if (!IsIdle(context)) {
        return;
    }
    if (id == kLanguageComboId) {
        if (notification == CBN_SELCHANGE) {
            ChangeLanguage(context);
        }
        return;
    }
    if (notification != BN_CLICKED) {
        return;
    }
    switch (id) {
    case kChooseGameFolderId:
        ChooseGameFolderCommand(context);
        return;
    case kChooseSdkId:
        ChooseSdkCommand(context);
        return;
    case kRefreshId:
        RefreshCommand(context);
        return;
    default:
        ModCommand(context, id);
        return;
    }
}

void OnTaskFinished(LaunchContext& context, std::unique_ptr<WorkResult> result)
{
    PickerState& picker = context.picker;
    if (context.workerThread.joinable()) {
        context.workerThread.join();
    }
    picker.taskRunning = false;
    if (picker.closeRequested || result->launched) {
        WritePickerReport(context);
        DestroyWindow(picker.pickerWindow);
        return;
    }
    if (context.launchInProgress) {
        context.launchInProgress = false;
        context.launchTarget = !context.preparationSdk.empty() ? context.preparationSdk : WindowTextOf(picker.sdkEdit);
        context.selectedMod.clear();
        context.modProjectFile.clear();
        ShowWindow(picker.pickerWindow, SW_SHOW);
        SetForegroundWindow(picker.pickerWindow);
    }
    if (!result->previewLoaded) {
        context.launchTarget = TrimText(WindowTextOf(picker.sdkEdit));
        if (!result->gameDirectory.empty()) {
            context.gameDirectory = result->gameDirectory;
            ShowInEdit(picker.gameFolderEdit, context.gameDirectory);
        }
        if (!result->errorText.empty()) {
            SetStatus(context, result->errorText, kStatusError);
            if (!context.cancelRequested.load()) {
                MessageBoxW(picker.pickerWindow, result->errorText.c_str(), kOperationFailedCaption.Now().c_str(),
                    MB_ICONERROR);
            }
        } else {
            SetStatus(context, kChooseSdkPrompt.Now(), kStatusInfo);
        }
    } else {
        if (const Text& sdkFile = FindJsonMember(result->preview, L"sdkFile").text; !sdkFile.empty()) {
            context.launchTarget = sdkFile;
            ShowInEdit(picker.sdkEdit, context.launchTarget);
        }
        if (!result->gameDirectory.empty()) {
            context.gameDirectory = result->gameDirectory;
            ShowInEdit(picker.gameFolderEdit, context.gameDirectory);
        }
        ApplyPreview(context, *result);
        if (!result->noticeText.empty()) {
            SetStatus(context, result->noticeText, kStatusNotice);
        }
    }
    // The window may have gone while the message box stood (a preview's timer closes it).
    if (IsWindow(picker.pickerWindow)) {
        UpdateCommandStates(context);
        WritePickerReport(context);
    }
}

void OnPickerClose(LaunchContext& context)
{
    PickerState& picker = context.picker;
    if (IsIdle(context)) {
        WritePickerReport(context);
        DestroyWindow(picker.pickerWindow);
        return;
    }
    picker.closeRequested = true;
    context.cancelRequested.store(true);
    SetStatus(context, kCancellingStatus.Now(), kStatusInfo);
}

}  // namespace korvane
