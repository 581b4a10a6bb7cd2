#pragma once
// The work of each command of the stand-in tool.

#include "tool/ToolArguments.h"
#include "tool/ToolScenario.h"

#include "foundation/Text.h"

#include <windows.h>

namespace korvane::standins {

struct CommandOutcome {
    DWORD exitCode = 0;
    Bytes out;  // standard output
    Bytes err;  // standard error
    bool settled = false;  // the scenario's own exit code and streams do not apply (a conflict)
};

// A failure with a message for the user on standard error.
CommandOutcome Failure(TextView message, DWORD exitCode = 1);

// Runs the command. A scenario exit code other than 0 skips the command's effects.
CommandOutcome RunToolCommand(const ToolCall& call, const ToolScenario& scenario);

// prepare: stages in the progress file, the workspace, the timing report and the selection
// file. With `failing`, the stages stop before the source check and nothing else is written.
CommandOutcome RunPrepare(const ToolCall& call, const ToolScenario& scenario, bool failing);

}  // namespace korvane::standins
