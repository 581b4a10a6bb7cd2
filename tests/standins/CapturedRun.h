#pragma once
// Runs of the stand-ins as the launcher makes them: hidden, standard output and error in files.

#include "foundation/Text.h"

#include <windows.h>

#include <vector>

namespace korvane::testing {

struct CapturedRun {
    DWORD exitCode = 0xFFFFFFFF;
    Bytes out;
    Bytes err;
    bool timedOut = false;
};

// Starts the program with the arguments, waits up to `timeoutMs` and kills it (with whatever it
// started) when it is still running then.
CapturedRun RunCaptured(TextView executable, const std::vector<Text>& arguments, TextView currentDirectory = {},
    DWORD timeoutMs = 60000);

}  // namespace korvane::testing
