#pragma once
// Paths are text in Windows form. The launcher writes `\` and accepts `\` and `/` when it
// looks for a separator. Every operation that cannot give a path gives the empty text.

#include "foundation/Text.h"

namespace korvane {

constexpr bool IsPathSeparator(wchar_t unit) noexcept
{
    return unit == L'\\' || unit == L'/';
}

// Absolute, without `.` or `..` steps and without a trailing separator (a drive root keeps
// its one). The platform's GetFullPathNameW does the work; nothing is looked up on disk.
Text NormalizePath(TextView path);
// Adds `\` only when `left` is not empty and does not already end in `\`.
Text JoinPath(TextView left, TextView right);
// Everything before the last separator; empty when there is none.
Text ParentPath(TextView path);
// Everything after the last separator; the whole text when there is none.
Text LastPathComponent(TextView path);
// Exists and is not a directory; reparse points are not looked at.
bool IsRegularFile(TextView path);
// Exists and is a directory.
bool IsDirectory(TextView path);
// A test of form only: first unit `/` or `\`, or second unit `:`.
bool IsAbsoluteInForm(TextView path) noexcept;
// GetFileAttributesW holds FILE_ATTRIBUTE_REPARSE_POINT; false for a missing path.
bool IsReparsePoint(TextView path);

}  // namespace korvane
