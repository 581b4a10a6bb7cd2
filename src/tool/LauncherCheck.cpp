#include "tool/LauncherCheck.h"

#include "foundation/Paths.h"
#include "foundation/Process.h"
#include "host/AuthoringLayout.h"
#include "tool/ToolCommand.h"

#include <windows.h>

namespace korvane {

bool RunLauncherCheck(TextView editorRoot, TextView sdk, std::uint32_t timeLimitMs)
{
    const Text toolPath = ResolveToolPath(editorRoot);
    if (toolPath.empty() || !IsRegularFile(toolPath)) {
        return false;
    }
    const Text commandLine = QuoteCommandArgument(toolPath) + L" " +
        BuildToolCommand(ToolCommandKind::SdkInfo, {.sdk = sdk, .editorRoot = editorRoot});
    StartedProcess tool;
    // Its output is not read, so it goes nowhere: no files, no job, no polling.
    const bool started = StartProcess({.application = toolPath,
                                          .commandLine = commandLine,
                                          .directory = editorRoot,
                                          .creationFlags = CREATE_NO_WINDOW,
                                          .show = SW_HIDE},
        tool);
    if (!started) {
        return false;
    }
    DWORD exitCode = 1;
    if (WaitForSingleObject(tool.Process(), timeLimitMs) != WAIT_OBJECT_0) {
        // The verdict is already failure; nothing waits for the kill to finish.
        TerminateProcess(tool.Process(), 1);
    } else {
        GetExitCodeProcess(tool.Process(), &exitCode);
    }
    return exitCode == 0;
}

}  // namespace korvane
