#pragma once
// Text is UTF-16 in memory and UTF-8 in files. These helpers convert, trim, compare
// and quote; none of them selects a locale, so case folding touches A to Z only.

#include <cstdint>
#include <string>
#include <string_view>

namespace korvane {

using Text = std::wstring;
using TextView = std::wstring_view;
using Bytes = std::string;
using BytesView = std::string_view;

// Strict UTF-8 decoding: one malformed sequence anywhere gives the empty text.
// A leading byte-order mark stays in the result.
Text Utf8ToText(BytesView bytes);
// Never fails on content; no byte-order mark is added.
Bytes TextToUtf8(TextView text);

// Removes blanks, tabs, carriage returns and line feeds from both ends, nothing else.
Text TrimText(TextView text);

// Folds A to Z to a to z and leaves every other unit alone, as towlower does in the
// default locale.
constexpr wchar_t FoldAscii(wchar_t unit) noexcept
{
    return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit + (L'a' - L'A')) : unit;
}
Text FoldAsciiCase(TextView text);

// _wcsicmp and _wcsnicmp as the default locale has them: equal when equal after FoldAscii.
bool EqualsIgnoringCase(TextView left, TextView right) noexcept;
bool StartsWithIgnoringCase(TextView text, TextView prefix) noexcept;
bool EndsWithIgnoringCase(TextView text, TextView suffix) noexcept;

// A JSON string literal for the launcher's own writers: quote, backslash, LF, CR and
// tab are escaped, other control units are dropped, everything else stays.
Text QuoteJsonText(TextView text);

// Always-quoted argument that CommandLineToArgvW splits back into exactly `text`.
Text QuoteCommandArgument(TextView text);

// A version up to, and without, its second "."  ("5.6.1-123" gives "5.6"); the whole text
// when it has one "."; empty when it has none.
Text MajorMinor(TextView version);

// Unsigned decimal, no sign or leading zeros.
Text DecimalText(std::uint64_t value);

}  // namespace korvane
