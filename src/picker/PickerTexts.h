#pragma once
// Every text of the picker, its Create Mod form and its file choosers, in both languages. The
// form of the moment is chosen where a text is used, so a language change needs only a repaint
// and a new set of control texts.

#include "context/UiLanguage.h"

namespace korvane {

// The one answer of a task that failed with an exception.
inline constexpr LocalizedText kToolJsonMessage{L"Could not read the tool JSON result.", L"无法读取工具 JSON 结果。"};

// Catalogue.
inline constexpr LocalizedText kModCountSuffix{L" Mods", L" 个 Mod"};
inline constexpr LocalizedText kBuildMismatchMessage{
    L"The SDK and installed Editor builds differ. Ask the game developer to export the SDK again with this Editor.",
    L"SDK 与本机编辑器版本不匹配。请让游戏开发者用当前编辑器重新导出 SDK。"};
inline constexpr LocalizedText kEmptyListText{
    L"No editable Mods\nLoad an SDK, then create or import a .umod.", L"暂无可编辑 Mod\n加载 SDK 后，新建或导入 .umod。"};
inline constexpr LocalizedText kSearchHint{L"Search name, author or Mod ID", L"搜索名称、作者或 Mod ID"};

// Commands and the status line.
inline constexpr LocalizedText kChooseFolderButton{L"Choose…", L"选择…"};
inline constexpr LocalizedText kChooseSdkButton{L"Choose SDK file…", L"选择 SDK 文件…"};
inline constexpr LocalizedText kRefreshButton{L"Refresh", L"刷新"};
inline constexpr LocalizedText kNewModButton{L"New Mod", L"新建 Mod"};
inline constexpr LocalizedText kImportModButton{L"Import Mod", L"导入 Mod"};
inline constexpr LocalizedText kDeleteModButton{L"Delete Mod", L"删除 Mod"};
inline constexpr LocalizedText kStartEditingButton{L"Start editing", L"开始编辑"};
inline constexpr LocalizedText kCloseButton{L"Close", L"关闭"};
inline constexpr LocalizedText kCancelButton{L"Cancel", L"取消"};
inline constexpr LocalizedText kChooseSdkPrompt{L"Choose an SDK to get started.", L"选择 SDK，开始创作。"};
inline constexpr LocalizedText kReadingSdkStatus{L"Reading SDK…", L"正在读取 SDK…"};
inline constexpr LocalizedText kReadingSdkAndModsStatus{L"Reading the SDK and Mod list…", L"正在读取 SDK 与 Mod 列表…"};
inline constexpr LocalizedText kApplySelectionStatus{
    L"Click Load / Refresh to apply the new SDK selection.", L"点击加载 / 刷新以应用新的 SDK 选择。"};
inline constexpr LocalizedText kCancellingStatus{L"Cancelling…", L"正在取消…"};
inline constexpr LocalizedText kWorkingOnModStatus{L"Working on the Mod…", L"正在处理 Mod…"};
inline constexpr LocalizedText kEnteringModStatus{
    L"Checking the SDK and entering the Mod…", L"正在校验 SDK 并进入 Mod…"};
inline constexpr LocalizedText kSelectionGoneStatus{
    L"The selected Mod or SDK no longer exists. Reload the selection.", L"所选 Mod 或 SDK 已不存在，请重新加载。"};
inline constexpr LocalizedText kPreviewNoModifyStatus{
    L"Preview mode does not modify Mod files.", L"预览模式不会修改 Mod 文件。"};
inline constexpr LocalizedText kPreviewNoEditorStatus{
    L"Preview mode does not start the Editor.", L"预览模式不会启动编辑器。"};
inline constexpr LocalizedText kLanguageNotSavedStatus{
    L"Could not save the Editor language preference.", L"无法保存编辑器语言偏好。"};
inline constexpr LocalizedText kOperationFailedCaption{L"Korvane operation failed", L"Korvane 操作失败"};
inline constexpr LocalizedText kChooseSdkTitle{L"Choose a game SDK", L"选择游戏 SDK"};
inline constexpr LocalizedText kTooltipPrefix{L"Mod source package\n", L"Mod 源码包\n"};
// The SDK chooser's filter has one form only.
inline constexpr wchar_t kSdkFilterName[] = L"Korvane SDK";
inline constexpr wchar_t kSdkFilterPattern[] = L"*.kvsdk";
inline constexpr wchar_t kSdkExtension[] = L"kvsdk";

// The surface and the Mod rows.
inline constexpr wchar_t kWindowTitle[] = L"Korvane Editor";
inline constexpr wchar_t kSdkHeading[] = L"SDK";
inline constexpr wchar_t kEnginePrefix[] = L"UE ";
inline constexpr LocalizedText kGameVersionLabel{L"Game version  ", L"游戏版本  "};
inline constexpr LocalizedText kSdkFileLabel{L"SDK file", L"SDK 文件"};
inline constexpr LocalizedText kGameFolderLabel{L"Game folder (optional)", L"游戏目录（可选）"};
inline constexpr LocalizedText kChooseModHeading{L"Choose a Mod", L"选择 Mod"};
inline constexpr LocalizedText kChooseModSubheading{
    L"Create something new, or continue your work", L"新建项目，或继续已有的创作"};
inline constexpr LocalizedText kRowGameVersions{L"Game versions: ", L"游戏版本："};
inline constexpr LocalizedText kRowSource{L"Source: ", L"源码："};
inline constexpr wchar_t kRowSeparator[] = L"  ·  ";

// Import and removal.
inline constexpr LocalizedText kImportTitle{L"Import an editable Mod", L"导入可编辑 Mod"};
inline constexpr LocalizedText kRemoveQuestionStart{
    L"Move this Mod source package to the Recycle Bin?\n\n", L"将此 Mod 源码包移到回收站？\n\n"};
inline constexpr LocalizedText kRemoveQuestionEnd{
    L"\n\nThis removes the editable source in the file shown above. You can restore it from the Windows Recycle Bin.",
    L"\n\n这会删除上方文件中的可编辑源码。可从 Windows 回收站恢复。"};
inline constexpr LocalizedText kRemoveCaption{L"Delete Mod", L"删除 Mod"};
inline constexpr LocalizedText kRemovingStatus{L"Moving the Mod to the Recycle Bin…", L"正在将 Mod 移到回收站…"};
inline constexpr LocalizedText kRemoveRefusedMessage{
    L"The selected Mod source package is missing or is not a regular .umod file. Refresh the list.",
    L"所选 Mod 源码包已不存在，或不是普通 .umod 文件。请刷新列表。"};
inline constexpr LocalizedText kRemoveFailedMessage{
    L"Could not move the Mod source package to the Recycle Bin. Check whether it is in use and the folder is writable.",
    L"未能将 Mod 源码包移到回收站。请检查文件是否正在使用或目录是否可写。"};
inline constexpr LocalizedText kRemovedNotice{
    L"The Mod source package was moved to the Recycle Bin.", L"Mod 源码包已移到回收站。"};
inline constexpr wchar_t kGameFolderTitle[] = L"Korvane - Select Packaged Game Directory";
// The package filter has one form only.
inline constexpr wchar_t kModFilterName[] = L"Editable Mod";
inline constexpr wchar_t kModFilterPattern[] = L"*.umod";
inline constexpr wchar_t kModExtension[] = L"umod";

// The Create Mod form.
inline constexpr LocalizedText kNewModTitle{L"New Mod", L"新建 Mod"};
inline constexpr LocalizedText kCreateHeading{L"Create a Mod", L"新建 Mod"};
inline constexpr LocalizedText kTypeLabel{L"Type", L"类型"};
inline constexpr LocalizedText kStandardModType{L"Standard Mod", L"常规 Mod"};
inline constexpr LocalizedText kTranslationModType{L"Translation Mod", L"独立翻译 Mod"};
inline constexpr LocalizedText kModNameLabel{L"Mod name", L"Mod 名称"};
inline constexpr LocalizedText kAuthorLabel{L"Author", L"作者"};
inline constexpr LocalizedText kCoverLabel{L"Cover (optional)", L"封面（可选）"};
inline constexpr LocalizedText kCoverTileText{L"Choose cover", L"点击选择封面"};
inline constexpr LocalizedText kCoverTileHint{L"Click to add a cover", L"点击添加封面"};
inline constexpr LocalizedText kChooseImageButton{L"Choose image…", L"选择图片…"};
inline constexpr LocalizedText kChangeImageButton{L"Change image…", L"更换图片…"};
inline constexpr LocalizedText kRemoveCoverButton{L"Remove", L"移除"};
inline constexpr LocalizedText kCoverChooserTitle{L"Choose a PNG cover", L"选择 PNG 封面"};
inline constexpr LocalizedText kCoverHint{L"PNG · up to 2 MiB\nUp to 2048 x 2048", L"PNG · 最大 2 MiB\n最高 2048 × 2048"};
inline constexpr LocalizedText kCoverError{
    L"Use a valid PNG, up to 2 MiB and 2048 x 2048.", L"请选择有效 PNG，最大 2 MiB、2048 × 2048。"};
inline constexpr LocalizedText kSaveLocationLabel{L"Save location (optional)", L"保存位置（可选）"};
inline constexpr LocalizedText kSaveLocationCue{L"Default: Mod library", L"默认保存到 Mod 库"};
inline constexpr LocalizedText kChooseLocationButton{L"Choose…", L"选择位置…"};
inline constexpr LocalizedText kSaveModTitle{L"Save Mod source", L"保存 Mod 源码"};
inline constexpr LocalizedText kCreateModButton{L"Create Mod", L"创建 Mod"};
inline constexpr wchar_t kCoverFilterName[] = L"PNG";
inline constexpr wchar_t kCoverFilterPattern[] = L"*.png";
inline constexpr wchar_t kCoverExtension[] = L"png";
inline constexpr wchar_t kNewModFileName[] = L"NewMod.umod";

}  // namespace korvane
