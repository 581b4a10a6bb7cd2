#include "startup/EditorWindowSearch.h"

#include <cwchar>
#include <cwctype>

namespace korvane {
namespace {

constexpr LONG kSplashMaxWidth = 300;
constexpr LONG kSplashMaxHeight = 150;

bool ClassNameMentionsSplash(HWND window)
{
    wchar_t className[256] = {};
    if (GetClassNameW(window, className, 256) <= 0) {
        return false;
    }
    for (wchar_t* unit = className; *unit != L'\0'; ++unit) {
        *unit = static_cast<wchar_t>(std::towlower(*unit));
    }
    return std::wcsstr(className, L"splash") != nullptr;
}

}  // namespace

BOOL CALLBACK IsEditorMainWindow(HWND window, LPARAM context)
{
    auto& search = *reinterpret_cast<EditorWindowSearch*>(context);
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner != search.processId || !IsWindowVisible(window) || GetWindow(window, GW_OWNER) != nullptr
        || ClassNameMentionsSplash(window)) {
        return TRUE;
    }
    RECT bounds{};
    if (!GetWindowRect(window, &bounds) || bounds.right - bounds.left <= kSplashMaxWidth
        || bounds.bottom - bounds.top <= kSplashMaxHeight) {
        return TRUE;
    }
    search.found = true;
    return FALSE;
}

bool EditorMainWindowExists(DWORD processId)
{
    EditorWindowSearch search{processId, false};
    EnumWindows(IsEditorMainWindow, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

}  // namespace korvane
