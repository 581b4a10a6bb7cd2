#pragma once
// How the end of a tool run becomes the user's message: the tool's own words first, from
// standard error, then standard output, then a numbered fallback, never longer than the
// status line and boxes can take.

#include "foundation/Text.h"

#include <cstdint>

namespace korvane {

inline constexpr std::size_t kToolErrorLimit = 8192;

// Fills an empty `error` of a failed run (non-zero `exitCode`) from the tool's output, and
// cuts any error to its first 8192 UTF-16 units. `standardError` is undecoded UTF-8: text
// that is not valid UTF-8 counts as no text.
void CompleteToolError(std::uint32_t exitCode, BytesView standardOutput, BytesView standardError, Text& error);

// "KorvaneTool failed (exit code N)." in the language of the moment.
Text ToolFailedText(std::uint32_t exitCode);
// "Could not start KorvaneTool (Windows error N)." in the language of the moment.
Text ToolStartFailedText(std::uint32_t windowsError);

}  // namespace korvane
