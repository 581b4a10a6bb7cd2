#pragma once
// What the stand-in programs share: where they lie, the variables that steer them, files that
// several runs append to, and the JSON files that tests write for them.

#include "foundation/Json.h"
#include "foundation/Text.h"

#include <windows.h>

#include <optional>
#include <vector>

namespace korvane::standins {

// Folder of the running executable.
Text ExecutableFolder();
// The variable's value; nullopt when it is not set (an empty value is a value).
std::optional<Text> EnvironmentValue(TextView name);
// The process's current directory.
Text CurrentFolder();

// Appends one line (a LF is added) in a single write, so that runs that append at the same
// time never interleave within a line. Creates the file and its folder when missing.
bool AppendLine(TextView path, BytesView line);
// Creates all missing levels of a folder.
bool MakeFolders(TextView folder);
// A JSON document read whole (up to `limit` bytes); nullopt when missing or not JSON.
std::optional<JsonValue> ReadJsonFile(TextView path, std::uint32_t limit = 8388608);

// Writes all bytes to a handle (standard output or error); false when it cannot.
bool WriteAll(HANDLE handle, BytesView bytes);

// The arguments of the process as CommandLineToArgvW splits them, the program first.
std::vector<Text> CommandLineArguments();

// A JSON array of strings, in one line.
Text JsonStringArray(const std::vector<Text>& items);
// A JSON string, or null for nullopt.
Text JsonStringOrNull(const std::optional<Text>& value);

// Text of a member as an unsigned number; `fallback` when missing or not a number.
std::uint64_t JsonUnsigned(const JsonValue& value, TextView key, std::uint64_t fallback);
// Whether a member is the scalar `true` (or the string "true").
bool JsonTrue(const JsonValue& value, TextView key);

}  // namespace korvane::standins
