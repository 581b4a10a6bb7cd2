#pragma once
// Whole-file reads and writes, the atomic rewrite through a sibling file, and the
// launcher's temporary files.

#include "foundation/Text.h"

#include <cstdint>
#include <utility>

namespace korvane {

// Size limits that callers pass to ReadWholeFile.
inline constexpr std::uint32_t kSmallFileLimit = 65536;        // configuration files
inline constexpr std::uint32_t kReportFileLimit = 1048576;     // timing report, receipt
inline constexpr std::uint32_t kLargeFileLimit = 8388608;      // module list, tool output

// All bytes of a file of at most `limit` bytes. Missing, unreadable, oversized and empty
// files all give empty bytes; no prefix of an oversized file is ever returned.
Bytes ReadWholeFile(TextView path, std::uint32_t limit);
// Creates or truncates the file and writes all bytes in one call. Not atomic.
bool WriteWholeFile(TextView path, BytesView bytes);
// Writes `sibling` (the caller names it after the process id, ending in .tmp), then renames
// it over `target`; the target is either its old content or the complete new one.
bool ReplaceFileFromSibling(TextView target, TextView sibling, BytesView bytes);
// A new empty file with a unique "KVL" name in the temporary folder; empty on failure.
// Deleting it is the caller's business (see TemporaryFile).
Text CreateLauncherTempFile();

// Owns a file path and deletes the file when it goes.
class TemporaryFile {
public:
    TemporaryFile() = default;
    explicit TemporaryFile(Text path) : path_(std::move(path)) {}
    ~TemporaryFile() { Delete(); }
    TemporaryFile(TemporaryFile&& other) noexcept : path_(std::move(other.path_)) { other.path_.clear(); }
    TemporaryFile& operator=(TemporaryFile&& other) noexcept;
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const Text& Path() const noexcept { return path_; }
    bool IsEmpty() const noexcept { return path_.empty(); }
    void Delete() noexcept;

private:
    Text path_;
};

}  // namespace korvane
