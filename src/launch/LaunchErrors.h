#pragma once
// The message box of every launch error, and the messages of the entry point and the launch flow.

#include "context/UiLanguage.h"
#include "foundation/Text.h"

#include <cstdint>

namespace korvane {

inline constexpr LocalizedText kLaunchErrorTitle{L"Korvane launch error", L"Korvane 启动错误"};

inline constexpr LocalizedText kEditorNotFoundMessage{
    L"The official Unreal Editor was not found in this Korvane package.", L"此 Korvane 安装中未找到 Unreal Editor。"};
inline constexpr LocalizedText kNonAsciiRootMessage{
    L"Install the Korvane Editor in a path that uses ASCII characters only.",
    L"请将 Korvane Editor 安装到仅包含 ASCII 字符的路径。"};
// Exists in English only.
inline constexpr LocalizedText kInvalidHostConfigurationMessage{L"Invalid local KorvaneUpdate.config.json", nullptr};
inline constexpr LocalizedText kSessionInUseMessage{
    L"KV1830: A Mod editor is already open. Close it before opening another.",
    L"KV1830：已经打开一个 Mod 编辑器。请先关闭，再打开另一个。"};
inline constexpr LocalizedText kProjectFileRemovedMessage{
    L"KV4300: Select a .kvsdk file. UE project SDK loading has been removed.",
    L"KV4300: 请选择 .kvsdk 文件。已移除 UE project SDK 加载。"};

inline constexpr LocalizedText kLaunchCancelledMessage{L"Editor launch cancelled.", L"编辑器启动已取消。"};
inline constexpr LocalizedText kEditorStartRefusedMessage{
    L"The official Unreal Editor could not be started.", L"无法启动 Unreal Editor。"};

// "Editor startup failed (exit code N). Check the startup log in Saved/Logs." in the language
// of the moment, and, when there is a log path, a line feed and the path.
Text StartFailureText(std::uint32_t exitCode, TextView logPath);

// Shows `text` in an error box with the launch error title unless `suppress`; gives `code`.
int ShowLaunchError(TextView text, bool suppress, int code);

}  // namespace korvane
