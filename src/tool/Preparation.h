#pragma once
// The `prepare` run, and the one question the launcher asks in the middle of it: when the
// tool refuses because the Mod's source package and its workspace have drifted apart, the
// author says which side wins, the tool settles it, and `prepare` runs once more.

#include "foundation/Text.h"
#include "tool/ToolRun.h"

#include <optional>

namespace korvane {

// The two conflict markers, matched exactly with case anywhere in a tool's message.
inline constexpr wchar_t kSourceConflictMarker[] = L"KV3651: source changed while a workspace exists";
inline constexpr wchar_t kOutsideChangeMarker[] = L"KV3648: source changed outside the Editor";

bool HasConflictMarker(TextView error) noexcept;

// The `--resolution` word for an answer of the conflict box: IDYES keeps the workspace,
// IDNO the source; IDCANCEL (or anything else) runs nothing.
std::optional<Text> ResolutionForAnswer(int messageBoxResult);

// Runs `prepare` with the given arguments (which hold the command word) and gives the
// result that counts. A conflict asks the author in a message box on this thread; Yes or No
// runs `resolve-source` and then `prepare` once more with the same arguments and files.
ToolResult RunPreparation(TextView editorRoot, TextView sdk, TextView modFile, TextView arguments,
    const std::atomic<bool>* cancelFlag, TextView progressFile, const std::function<void(TextView)>& progressCallback,
    TextView timingReport);

}  // namespace korvane
