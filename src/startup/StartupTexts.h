#pragma once
// The start-up window's own texts in both languages. The monitor picks the form by its own
// language flag, which may differ from the process-wide one until the editor's culture is known.

#include "context/UiLanguage.h"

namespace korvane {

inline constexpr LocalizedText kOpeningEditorPhase{L"Opening the editor…", L"正在打开编辑器…"};
inline constexpr LocalizedText kLoadingEditorPhase{
    L"Loading editor modules and the interface…", L"正在加载编辑器模块与界面…"};
inline constexpr LocalizedText kCancellingPhase{L"Cancelling…", L"正在取消…"};

inline constexpr LocalizedText kStartupWindowTitle{L"Korvane Editor is starting", L"Korvane 编辑器正在启动"};
inline constexpr wchar_t kProductName[] = L"Korvane Editor";  // the same in both languages
inline constexpr LocalizedText kStartupSubtitle{L"Mod creation environment", L"Mod 创作环境"};
inline constexpr LocalizedText kCancelButtonText{L"Cancel", L"取消"};
inline constexpr LocalizedText kWaitedBefore{L"Waited ", L"已等待 "};
inline constexpr LocalizedText kWaitedAfter{L" s", L" 秒"};
inline constexpr wchar_t kDetailSeparator[] = L" · ";

}  // namespace korvane
