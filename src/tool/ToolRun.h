#pragma once
// The one runner of KorvaneTool.exe: a hidden child whose output goes to temporary files,
// watched every 100 ms for its end, a cancel and the time limit, and held in a job so that
// nothing it started outlives the run.

#include "foundation/Text.h"

#include <atomic>
#include <cstdint>
#include <functional>

namespace korvane {

// Every command gets the same limit; the message speaks of preparation all the same.
inline constexpr std::uint64_t kToolTimeLimitMs = 600000;

struct ToolInvocation {
    Text editorRoot;                                  // base of the tool path, the child's folder
    Text arguments;                                   // everything behind the tool path, quoted
    const std::atomic<bool>* cancelFlag = nullptr;    // set means stop
    Text progressFile;                                // polled only together with progressCallback
    std::function<void(TextView)> progressCallback;   // called on the thread of RunTool
    Text timingReport;                                // read after the end when not empty
};

struct ToolResult {
    std::uint32_t exitCode = 1;   // kCancelledExitCode for a cancel or time-out; 1 when nothing was started
    Bytes output;                 // standard output, at most 8 MiB, else empty
    Text error;                   // for the user, at most 8192 units; empty on success
    std::int32_t cacheHit = -1;   // -1 not reported, 0 created, 1 hit
};

// Blocks until the child has ended or has been killed. Success is exitCode 0; every
// expected failure is told in the result. `timeLimitMs` exists for tests; the product
// always runs with the constant.
ToolResult RunTool(const ToolInvocation& invocation, std::uint64_t timeLimitMs = kToolTimeLimitMs);

}  // namespace korvane
