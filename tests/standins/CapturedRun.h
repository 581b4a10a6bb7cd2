#pragma once
// Runs of the stand-ins as the launcher makes them: hidden, standard output and error in files.

#include "foundation/Text.h"

#include <windows.h>

#include <optional>
#include <vector>

namespace korvane::testing {

struct CapturedRun {
    DWORD exitCode = 0xFFFFFFFF;
    Bytes out;
    Bytes err;
    bool timedOut = false;
    ULONGLONG elapsedMs = 0;
};

// Starts the program with the arguments, waits up to `timeoutMs` and kills it (with whatever it
// started) when it is still running then.
CapturedRun RunCaptured(TextView executable, const std::vector<Text>& arguments, TextView currentDirectory = {},
    DWORD timeoutMs = 60000);

// Sets (or removes, with nullopt) a variable of this process for a scope; children inherit it.
class ScopedVariable {
public:
    ScopedVariable(TextView name, std::optional<Text> value);
    ~ScopedVariable();
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    Text name_;
    std::optional<Text> previous_;
};

// The lines of a text, without their LF.
std::vector<Bytes> SplitLines(BytesView bytes);

}  // namespace korvane::testing
