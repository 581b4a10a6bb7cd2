#pragma once
// The preparation stretch of an editor launch: the tool's `prepare` builds the Mod's
// workspace and names it in a selection file, while its progress reaches the start-up
// window through two callbacks. Shows no window of its own; the one question it may ask is
// the source-conflict box.

#include "foundation/Text.h"
#include "tool/SelectionFile.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>

namespace korvane {

struct PreparationProgress {
    std::function<void(TextView)> phaseText;                          // the start-up phase line
    std::function<void(std::int32_t cacheHit, bool verified)> cacheState;  // the SDK cache line
};

struct WorkspaceRequest {
    TextView editorRoot{};
    TextView sdk{};            // the SDK the workspace is prepared from
    TextView gameDirectory{};  // may be empty
    TextView modFile{};        // the Mod's source package; empty when only its id is known
    TextView selectedMod{};    // the Mod id; when not empty the tool's answer must name it
    const std::atomic<bool>* cancelFlag = nullptr;
};

struct PreparationOutcome {
    Text modFile;                                 // the package, once given or looked up
    std::optional<WorkspaceSelection> workspace;  // the tool's answer, when it passed every test
};

// Prepares the workspace for the request. True: `outcome.workspace` holds the tool's answer.
// False: `error` holds the user's message; `outcome.modFile` may still have been looked up.
// The launch selection is saved whenever the tool succeeded, even when its answer is then
// refused. No temporary file outlives the call.
bool PrepareWorkspace(const WorkspaceRequest& request, const PreparationProgress& progress, PreparationOutcome& outcome,
    Text& error);

}  // namespace korvane
