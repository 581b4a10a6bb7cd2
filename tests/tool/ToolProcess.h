#pragma once
// A scratch install that holds only the stand-in tool (below Plugins, as installs without a
// layout file keep it), with the scenario and call log of its runs, for tests of tool runs.

#include "TestSupport.h"

#include "foundation/Text.h"

#include <windows.h>

#include <vector>

namespace korvane::testing {

struct ToolCallSeen {
    std::vector<Text> argv;
    Text cwd;
    DWORD pid = 0;
    DWORD grandchildPid = 0;  // 0 when the run started none
};

class ToolInstall {
public:
    explicit ToolInstall(TextView label);
    ~ToolInstall();
    ToolInstall(const ToolInstall&) = delete;
    ToolInstall& operator=(const ToolInstall&) = delete;

    const Text& Root() const { return root_; }
    Text ToolPath() const;
    Text Path(TextView relative) const { return scratch_ / relative; }
    // Steers every later run of the tool (set through the environment its runs inherit).
    void SetScenario(BytesView json) const;
    // The runs so far, from the tool's call log.
    std::vector<ToolCallSeen> Calls() const;

private:
    ScratchDirectory scratch_;
    Text root_;
};

// Whether any of the processes still runs.
bool AnyAlive(const std::vector<DWORD>& processIds);
// Waits up to `timeoutMs` for all of them to end; true when none is left.
bool WaitUntilGone(const std::vector<DWORD>& processIds, DWORD timeoutMs);
// Temporary files of the launcher ("KVL" and "KVD" names) now in the temporary folder.
std::vector<Text> LauncherTempFiles();

}  // namespace korvane::testing
