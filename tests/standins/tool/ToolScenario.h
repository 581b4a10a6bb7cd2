#pragma once
// How a test steers one run of the stand-in tool. The scenario file is the first found of:
//   1. the file named by the variable KORVANE_STANDIN_TOOL_SCENARIO;
//   2. "<sdk file>.scenario.json" beside the SDK given with --sdk;
//   3. "KorvaneTool.scenario.json" beside the tool.
// Its shape is {"<command>": {...}, "*": {...}}: the object of the command word ("prepare",
// "translations create", ...) applies, or else the one of "*". Keys, all optional:
//   "exitCode"     number (may be >= 0x80000000). Not 0: the command does none of its work (prepare
//                  still writes its stages up to the source check) and ends with this code.
//   "stdout", "stderr"        text written instead of the command's own output.
//   "stdoutMiB", "stderrMiB"  that many MiB of filler lines, after the text.
//   "invalidUtf8"  "stdout" or "stderr": that stream ends in bytes that are not UTF-8.
//   "sleepMs"      wait this long before the work.
//   "hang"         true: wait until killed, before the work.
//   "grandchild"   true: first start a copy of the tool that waits until killed.
//   "conflictOnce" true, "KV3651" or "KV3648": the first run reports that conflict marker on
//                  standard error and ends with 1; later runs work. The state is kept in
//                  "<scenario file>.conflict-state"; delete it to arm the conflict again.
//   "cacheHit"     number: positive reports a cache hit, 0 a new cache, negative nothing, in the
//                  progress file and the timing report. Without it the tool reports its own cache.
//   "progress"     "malformed" (no rewrite is JSON), "oversized" (each is JSON of over 64 KiB),
//                  "dieMidWrite" (the tool ends half-way through writing a stage).
//   "selectionFile" "malformed" (Mod id of 35 units), "oversized" (4096 bytes), "short" (20 bytes),
//                  "twoLines", "missing" (the file is deleted).
//   "stageDelayMs" pause after each rewrite of the progress file.

#include "foundation/Json.h"
#include "foundation/Text.h"

#include <windows.h>

#include <cstdint>
#include <optional>

namespace korvane::standins {

struct ToolScenario {
    Text path;        // the file it came from; empty when there is none
    JsonValue entry;  // the command's object; an empty value when none applies

    bool Has(TextView key) const;
    const Text& TextOf(TextView key) const;
    bool IsTrue(TextView key) const;
    std::uint64_t Number(TextView key, std::uint64_t fallback) const;
    // The exit code the scenario asks for, when it asks for one.
    std::optional<DWORD> ExitCode() const;
    // -1, 0 or 1 when the scenario fixes the cache state.
    std::optional<int> CacheHit() const;
};

ToolScenario LoadToolScenario(TextView command, TextView sdkPath);

// The output of a stream as the scenario replaces it; nullopt when it leaves the stream alone.
std::optional<Bytes> ScenarioStream(const ToolScenario& scenario, TextView stream);

// True exactly once per armed state file: the conflict to report now.
std::optional<Text> TakeConflictMarker(const ToolScenario& scenario);

}  // namespace korvane::standins
