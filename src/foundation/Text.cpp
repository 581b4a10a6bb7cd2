#include "foundation/Text.h"

#include <windows.h>

#include <climits>

namespace korvane {

Text Utf8ToText(BytesView bytes)
{
    if (bytes.empty() || bytes.size() > static_cast<size_t>(INT_MAX)) {
        return {};
    }
    const int byteCount = static_cast<int>(bytes.size());
    const int units = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), byteCount, nullptr, 0);
    if (units <= 0) {
        return {};
    }
    Text text(static_cast<size_t>(units), L'\0');
    if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), byteCount, text.data(), units) != units) {
        return {};
    }
    return text;
}

Bytes TextToUtf8(TextView text)
{
    if (text.empty() || text.size() > static_cast<size_t>(INT_MAX)) {
        return {};
    }
    const int unitCount = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), unitCount, nullptr, 0, nullptr, nullptr);
    if (size <= 0) {
        return {};
    }
    Bytes bytes(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), unitCount, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

namespace {

constexpr bool IsTrimmedUnit(wchar_t unit) noexcept
{
    return unit == L' ' || unit == L'\t' || unit == L'\r' || unit == L'\n';
}

}  // namespace

Text TrimText(TextView text)
{
    size_t begin = 0;
    size_t end = text.size();
    while (begin < end && IsTrimmedUnit(text[begin])) {
        ++begin;
    }
    while (end > begin && IsTrimmedUnit(text[end - 1])) {
        --end;
    }
    return Text(text.substr(begin, end - begin));
}

Text FoldAsciiCase(TextView text)
{
    Text folded(text);
    for (wchar_t& unit : folded) {
        unit = FoldAscii(unit);
    }
    return folded;
}

bool EqualsIgnoringCase(TextView left, TextView right) noexcept
{
    if (left.size() != right.size()) {
        return false;
    }
    for (size_t i = 0; i < left.size(); ++i) {
        if (FoldAscii(left[i]) != FoldAscii(right[i])) {
            return false;
        }
    }
    return true;
}

bool StartsWithIgnoringCase(TextView text, TextView prefix) noexcept
{
    return text.size() >= prefix.size() && EqualsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

bool EndsWithIgnoringCase(TextView text, TextView suffix) noexcept
{
    return text.size() >= suffix.size() && EqualsIgnoringCase(text.substr(text.size() - suffix.size()), suffix);
}

Text QuoteJsonText(TextView text)
{
    Text quoted;
    quoted.reserve(text.size() + 2);
    quoted.push_back(L'"');
    for (const wchar_t unit : text) {
        switch (unit) {
        case L'"': quoted += L"\\\""; break;
        case L'\\': quoted += L"\\\\"; break;
        case L'\n': quoted += L"\\n"; break;
        case L'\r': quoted += L"\\r"; break;
        case L'\t': quoted += L"\\t"; break;
        default:
            if (unit >= 0x20) {
                quoted.push_back(unit);
            }
            break;
        }
    }
    quoted.push_back(L'"');
    return quoted;
}

Text QuoteCommandArgument(TextView text)
{
    Text quoted;
    quoted.reserve(text.size() + 2);
    quoted.push_back(L'"');
    size_t pendingBackslashes = 0;
    for (const wchar_t unit : text) {
        if (unit == L'\\') {
            ++pendingBackslashes;
        } else if (unit == L'"') {
            quoted.append(pendingBackslashes * 2 + 1, L'\\');
            quoted.push_back(L'"');
            pendingBackslashes = 0;
        } else {
            quoted.append(pendingBackslashes, L'\\');
            quoted.push_back(unit);
            pendingBackslashes = 0;
        }
    }
    quoted.append(pendingBackslashes * 2, L'\\');
    quoted.push_back(L'"');
    return quoted;
}

Text MajorMinor(TextView version)
{
    const size_t firstDot = version.find(L'.');
    if (firstDot == TextView::npos) {
        return {};
    }
    return Text(version.substr(0, version.find(L'.', firstDot + 1)));
}

Text DecimalText(std::uint64_t value)
{
    return std::to_wstring(value);
}

}  // namespace korvane
