#include "launch/SessionGate.h"

#include "context/SharedConstants.h"
#include "foundation/Paths.h"
#include "launch/LaunchErrors.h"

#include <tlhelp32.h>

#include <utility>
#include <vector>

namespace korvane {
namespace {

// The editor has not ended, cannot be waited on, or the earlier launcher stays: the user
// must finish the earlier session first.
bool ReportSessionClosing(bool headless)
{
    ShowLaunchError(kSessionClosingMessage.Now(), headless, kExitSessionInUse);
    return false;
}

DWORD ParentProcessId()
{
    UniqueSnapshotHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot) {
        return 0;
    }
    const DWORD self = GetCurrentProcessId();
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more; more = Process32NextW(snapshot.Get(), &entry)) {
        if (entry.th32ProcessID == self) {
            return entry.th32ParentProcessID;
        }
    }
    return 0;
}

Text ProcessImagePath(HANDLE process)
{
    std::vector<wchar_t> buffer(32768, L'\0');
    DWORD length = static_cast<DWORD>(buffer.size());
    if (!QueryFullProcessImageNameW(process, 0, buffer.data(), &length)) {
        return {};
    }
    return Text(buffer.data(), length);
}

}  // namespace

bool SessionEventExists(const wchar_t* name)
{
    const UniqueHandle event(OpenEventW(SYNCHRONIZE, FALSE, name));
    // An elevated editor's event refuses a normal launcher, but the name is there all the same.
    return event.IsValid() || GetLastError() == ERROR_ACCESS_DENIED;
}

bool WaitForClosingEditor(TextView editorRoot, const ClosingEditorWait& wait, const ClosingEditorLimits& limits)
{
    DWORD editorPid = wait.waitForEditorPid;
    if (editorPid == 0) {
        // Only an ordinary start looks for an editor it was started from.
        if (wait.headless || wait.previewMode) {
            return true;
        }
        editorPid = FindParentEditor(editorRoot);
        if (editorPid == 0) {
            return true;
        }
    }
    if (editorPid == GetCurrentProcessId()) {
        return ReportSessionClosing(wait.headless);
    }

    if (const UniqueHandle editor(OpenProcess(SYNCHRONIZE, FALSE, editorPid)); editor) {
        if (WaitForSingleObject(editor.Get(), limits.editorWaitMs) != WAIT_OBJECT_0) {
            return ReportSessionClosing(wait.headless);
        }
    }
    // A process that cannot be opened is gone already. Its launcher may still be ending.

    const ULONGLONG deadline = GetTickCount64() + limits.launcherWaitMs;
    while (SessionEventExists(kLauncherSessionEventName)) {
        if (GetTickCount64() >= deadline) {
            return ReportSessionClosing(wait.headless);
        }
        Sleep(limits.launcherPollMs);
    }
    return true;
}

bool PassSessionGate(UniqueHandle& launcherEvent)
{
    launcherEvent.Reset();
    if (SessionEventExists(kEditorSessionEventName)) {
        return false;
    }
    UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, kLauncherSessionEventName));
    if (!event) {
        return false;
    }
    if (GetLastError() == ERROR_ALREADY_EXISTS) {
        return false;  // another launcher holds the name
    }
    // An editor may have come up since the first look.
    if (SessionEventExists(kEditorSessionEventName)) {
        return false;
    }
    launcherEvent = std::move(event);
    return true;
}

DWORD FindParentEditor(TextView editorRoot)
{
    const DWORD parentId = ParentProcessId();
    const UniqueHandle parent(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, parentId));
    if (!parent) {
        return 0;
    }
    const Text image = ProcessImagePath(parent.Get());
    if (image.empty()) {
        return 0;
    }
    const Text editor = NormalizePath(EditorExecutablePath(editorRoot));
    const Text parentImage = NormalizePath(image);
    if (editor.empty() || parentImage.empty() || !EqualsIgnoringCase(editor, parentImage)) {
        return 0;
    }
    return parentId;
}

}  // namespace korvane
