#pragma once
// Every user-visible text of the tool bridge, in both of the launcher's languages. Texts that
// carry a number are two pieces around it.

#include "context/UiLanguage.h"

namespace korvane {

// Tool runs.
inline constexpr LocalizedText kToolCancelledMessage{L"Operation cancelled.", L"操作已取消。"};
inline constexpr LocalizedText kToolMissingMessage{
    L"KV4210: KorvaneTool.exe is missing. Repair the Mod Editor installation.",
    L"KV4210: 缺少 KorvaneTool.exe。请修复完整 Mod 编辑器安装。"};
inline constexpr LocalizedText kToolOutputFilesMessage{L"Could not create tool output files.", L"无法创建工具输出文件。"};
inline constexpr LocalizedText kToolOutputOpenMessage{L"Could not open tool output.", L"无法打开工具输出。"};
inline constexpr LocalizedText kToolStartMessage{L"Could not start KorvaneTool (Windows error ", L"无法启动 KorvaneTool（Windows 错误 "};
inline constexpr LocalizedText kToolTimedOutMessage{
    L"Preparation timed out. Retry or check the tool log.", L"准备超时。请重试或查看工具日志。"};
inline constexpr LocalizedText kToolFailedMessage{L"KorvaneTool failed (exit code ", L"KorvaneTool 失败（退出码 "};
// Closes both numbered messages in either language.
inline constexpr wchar_t kNumberedMessageEnd[] = L").";

// Workspace preparation.
inline constexpr LocalizedText kPreparingLine{
    L"Checking the SDK and preparing the Mod workspace…", L"正在校验 SDK 并准备 Mod 工作区…"};
inline constexpr LocalizedText kNoSdkMessage{
    L"Direct editing requires a matching .kvsdk file.", L"直接编辑需要匹配的 .kvsdk 文件。"};
inline constexpr LocalizedText kPreparationToolMissingMessage{
    L"KV4210: KorvaneTool.exe is missing. Repair the complete Mod Editor installation.",
    L"KV4210: 缺少 KorvaneTool.exe。请修复完整 Mod 编辑器安装。"};
inline constexpr LocalizedText kSelectionFileMessage{
    L"Could not create a temporary Mod selection file.", L"无法创建临时 Mod 选择文件。"};
inline constexpr LocalizedText kWorkspaceCheckMessage{
    L"Mod workspace check failed. This Mod may not publish editable source, or its game/SDK Contract does not "
    L"match. Run KorvaneTool.exe prepare for details.",
    L"Mod 工作区校验失败。此 Mod 可能没有公开源码，或其游戏/SDK Contract 不匹配。运行 KorvaneTool.exe prepare "
    L"查看详细原因。"};

// Source lookup and the conflict dialog.
inline constexpr LocalizedText kModSourceNotFoundMessage{
    L"KV3654: The selected Mod's editable source was not found.", L"KV3654: 未找到所选 Mod 的可编辑源码。"};
// Exists in English only.
inline constexpr LocalizedText kInvalidSourceListingMessage{L"KV3654: Invalid Mod source listing.", nullptr};
inline constexpr LocalizedText kConflictCaption{L"Mod source conflict", L"Mod 源码冲突"};
inline constexpr LocalizedText kConflictBody{
    L"The source package changed outside the editor.\n\nYes: write the current workspace edits back to the source "
    L"package.\nNo: reload the source package and discard the workspace edits.\nCancel: keep both and stop this "
    L"operation.",
    L"源码包在编辑器外发生了变化。\n\n是：以当前工作区编辑写回源码包。\n否：重新载入源包并丢弃当前工作区编辑。\n"
    L"取消：保留双方内容，暂不继续。"};

}  // namespace korvane
