#include "language/EngineVersionText.h"

namespace korvane {
namespace {

constexpr bool IsBlank(char unit) noexcept
{
    return unit == ' ' || unit == '\t' || unit == '\n' || unit == '\v' || unit == '\f' || unit == '\r';
}

constexpr bool IsDigit(char unit) noexcept
{
    return unit >= '0' && unit <= '9';
}

size_t SkipBlanks(BytesView bytes, size_t position) noexcept
{
    while (position < bytes.size() && IsBlank(bytes[position])) {
        ++position;
    }
    return position;
}

// The capture that `value` finds behind `"key"\s*:\s*`, at the first occurrence of the key
// where it finds one. Blanks and the colon leave a backtracking matcher no choice, so this
// is the regular expression's first match.
template <typename ValueMatcher>
Bytes FindValueAfterKey(BytesView bytes, BytesView quotedKey, ValueMatcher value)
{
    for (size_t found = bytes.find(quotedKey); found != BytesView::npos; found = bytes.find(quotedKey, found + 1)) {
        size_t position = SkipBlanks(bytes, found + quotedKey.size());
        if (position >= bytes.size() || bytes[position] != ':') {
            continue;
        }
        position = SkipBlanks(bytes, position + 1);
        Bytes capture = value(bytes.substr(position));
        if (!capture.empty()) {
            return capture;
        }
    }
    return {};
}

Bytes LeadingDigits(BytesView rest)
{
    size_t end = 0;
    while (end < rest.size() && IsDigit(rest[end])) {
        ++end;
    }
    return Bytes(rest.substr(0, end));
}

// `"(5\.[0-8])"` at the start of `rest`.
Bytes QuotedSupportedVersion(BytesView rest)
{
    if (rest.size() >= 5 && rest[0] == '"' && rest[1] == '5' && rest[2] == '.' && rest[3] >= '0' && rest[3] <= '8' &&
        rest[4] == '"') {
        return Bytes(rest.substr(1, 3));
    }
    return {};
}

}  // namespace

Bytes FindMajorVersion(BytesView bytes)
{
    return FindValueAfterKey(bytes, "\"MajorVersion\"", LeadingDigits);
}

Bytes FindMinorVersion(BytesView bytes)
{
    return FindValueAfterKey(bytes, "\"MinorVersion\"", LeadingDigits);
}

Bytes FindProjectEngineVersion(BytesView bytes)
{
    return FindValueAfterKey(bytes, "\"EngineAssociation\"", QuotedSupportedVersion);
}

bool IsSupportedEngineVersion(TextView version) noexcept
{
    return version.size() == 3 && version[0] == L'5' && version[1] == L'.' && version[2] >= L'0' && version[2] <= L'8';
}

}  // namespace korvane
