#pragma once
// The launcher's command line: the option table and the values of the entry point that no
// other part sees.

#include "foundation/Text.h"
#include "startup/StartupPreview.h"

#include <cstdint>
#include <vector>

namespace korvane {

struct LaunchContext;

struct EntryOptions {
    bool emptyHost = false;
    bool resolveHostContext = false;
    Text hostContextReportPath;
    bool headless = false;  // no window and no message box may appear
    bool instanceCheck = false;
    bool startupPreview = false;
    // The start-up preview's look, time and report. Its `chinese` is set by the caller to
    // IsChineseUi() before parsing; its report path serves a real launch as well.
    StartupPreviewOptions startupPreviewOptions;
    Text requestedGameDirectory;
    std::uint32_t waitForEditorPid = 0;
};

enum class ArgumentsOutcome {
    Complete,
    ProjectFileGiven,  // a ".uproject" argument: the run ends at once with exit code 3
};

// Tests each argument (element 0 of the command line already removed) against the option
// table from top to bottom; the first matching row consumes it. Writes the entry values
// into `options` and the run-wide ones into `context`. Stops at a ".uproject" argument.
ArgumentsOutcome ParseEntryArguments(const std::vector<Text>& arguments, EntryOptions& options,
    LaunchContext& context);

// Strict unsigned decimal: digits only, at least one, no overflow.
bool ParseDecimal(TextView text, std::uint32_t& value) noexcept;

}  // namespace korvane
