// A DLL that plays one planted beside the launcher under a system DLL's name: when a process
// loads it, it leaves "<its own path>.loaded" behind, so a test sees that the load happened
// even when the process then fails to start for want of the real DLL's functions.
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/)
{
    if (reason != DLL_PROCESS_ATTACH) {
        return TRUE;
    }
    wchar_t path[MAX_PATH + 16] = {};
    const DWORD length = GetModuleFileNameW(instance, path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) {
        return TRUE;
    }
    lstrcatW(path, L".loaded");
    const HANDLE marker = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (marker != INVALID_HANDLE_VALUE) {
        CloseHandle(marker);
    }
    return TRUE;
}
