#include "tool/LauncherCheck.h"

#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"
#include "host/AuthoringLayout.h"
#include "launch/LaunchContext.h"

#include <windows.h>

namespace korvane {

bool RunLauncherCheck(const LaunchContext& context, TextView sdk, std::uint32_t timeLimitMs)
{
    const Text toolPath = ResolveToolPath(context.editorRoot);
    if (toolPath.empty() || !IsRegularFile(toolPath)) {
        return false;
    }
    Text commandLine = QuoteCommandArgument(toolPath) + L" sdk-info --sdk " + QuoteCommandArgument(sdk)
        + L" --editor-root " + QuoteCommandArgument(context.editorRoot);

    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_HIDE;
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(toolPath.c_str(), commandLine.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr,
            context.editorRoot.c_str(), &startup, &started)) {
        return false;
    }
    const UniqueHandle process(started.hProcess);
    const UniqueHandle thread(started.hThread);

    DWORD exitCode = 1;
    if (WaitForSingleObject(process.Get(), timeLimitMs) != WAIT_OBJECT_0) {
        // The verdict is already failure; nothing waits for the kill to finish.
        TerminateProcess(process.Get(), 1);
    } else {
        GetExitCodeProcess(process.Get(), &exitCode);
    }
    return exitCode == 0;
}

}  // namespace korvane
