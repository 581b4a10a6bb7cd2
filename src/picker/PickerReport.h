#pragma once
// What the picker showed, for scripts and tests: a one-line JSON report at fixed moments, and in
// a preview a PNG picture of the window as its controls print themselves.

#include "foundation/Text.h"

#include <cstdint>

namespace korvane {

struct LaunchContext;

struct PickerReportValues {
    std::uint64_t firstPaintMs = 0;
    std::uint32_t paintCount = 0;
    std::uint32_t dpi = 96;
    Text language;
    std::size_t modCount = 0;
    std::size_t visibleModCount = 0;
    Text selectedSource;
    Text search;
    Text sdkFile;
    bool deleteButtonVisible = false;
    bool deleteButtonEnabled = false;
    Text deleteButtonText;
    bool childStarted = false;
    Text sourceRowLabel;
    std::int32_t sourceRowHeight = 0;
    bool snapshotSaved = false;
    bool windowVisible = false;
    Text status;
};

// The report's bytes: the keys in their fixed order, no blanks, no line end, UTF-8.
Bytes ComposePickerReport(const PickerReportValues& values);

// Takes the picture when one is due and writes the report; does nothing without a report path.
// Never reports a failure.
void WritePickerReport(LaunchContext& context);

}  // namespace korvane
