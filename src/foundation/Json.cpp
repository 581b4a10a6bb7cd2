#include "foundation/Json.h"

#include <windows.h>

#include <bitset>
#include <stdexcept>
#include <vector>

namespace korvane {
namespace {

// iswspace of the default locale, made explicit: some C runtimes leave out U+0085, and
// asking the platform once for every unit is far cheaper than asking per unit.
class WhiteSpaceTable {
public:
    WhiteSpaceTable()
    {
        for (wchar_t unit = 0x09; unit <= 0x0D; ++unit) {
            bits_.set(unit);
        }
        bits_.set(0x20);
        bits_.set(0x85);
        bits_.set(0xA0);

        constexpr size_t kFirst = 0x100;
        constexpr size_t kCount = 0x10000 - kFirst;
        std::vector<wchar_t> units(kCount);
        std::vector<WORD> types(kCount);
        for (size_t i = 0; i < kCount; ++i) {
            units[i] = static_cast<wchar_t>(kFirst + i);
        }
        if (GetStringTypeW(CT_CTYPE1, units.data(), static_cast<int>(kCount), types.data())) {
            for (size_t i = 0; i < kCount; ++i) {
                if ((types[i] & C1_SPACE) != 0) {
                    bits_.set(kFirst + i);
                }
            }
        }
        bits_.reset(0xFFFF);
    }

    bool Contains(wchar_t unit) const noexcept { return bits_.test(static_cast<size_t>(unit)); }

private:
    std::bitset<0x10000> bits_;
};

const WhiteSpaceTable& WhiteSpace()
{
    static const WhiteSpaceTable table;
    return table;
}

[[noreturn]] void Fail(const char* message)
{
    throw std::runtime_error(message);
}

int HexDigitValue(wchar_t unit) noexcept
{
    if (unit >= L'0' && unit <= L'9') {
        return unit - L'0';
    }
    if (unit >= L'a' && unit <= L'f') {
        return unit - L'a' + 10;
    }
    if (unit >= L'A' && unit <= L'F') {
        return unit - L'A' + 10;
    }
    return -1;
}

// The text being parsed and the cursor, for one parse only.
class JsonReader {
public:
    JsonReader(const wchar_t* begin, const wchar_t* end) : cursor_(begin), end_(end), table_(WhiteSpace()) {}

    void ParseDocument(JsonValue& out)
    {
        ParseValue(out, 0);
        SkipWhiteSpace();
        if (cursor_ != end_) {
            Fail("trailing JSON");
        }
    }

private:
    bool IsSpace(wchar_t unit) const noexcept
    {
        if (unit < 0x80) {
            return unit == 0x20 || (unit >= 0x09 && unit <= 0x0D);
        }
        return table_.Contains(unit);
    }

    void SkipWhiteSpace() noexcept
    {
        while (cursor_ != end_ && IsSpace(*cursor_)) {
            ++cursor_;
        }
    }

    // Skips white space, then consumes one unit that must be `expected`.
    void Expect(wchar_t expected)
    {
        SkipWhiteSpace();
        if (cursor_ == end_) {
            Fail("truncated JSON");
        }
        if (*cursor_++ != expected) {
            Fail("invalid JSON");
        }
    }

    void ParseValue(JsonValue& out, int depth)
    {
        if (depth > kMaxJsonDepth) {
            Fail("JSON nesting");
        }
        SkipWhiteSpace();
        if (cursor_ == end_) {
            Fail("empty JSON");
        }
        switch (*cursor_) {
        case L'"':
            out.kind = JsonKind::String;
            ParseString(out.text);
            break;
        case L'{':
            out.kind = JsonKind::Object;
            ParseContainer(out, L'}', depth);
            break;
        case L'[':
            out.kind = JsonKind::Array;
            ParseContainer(out, L']', depth);
            break;
        default:
            ParseToken(out);
            break;
        }
    }

    void ParseToken(JsonValue& out)
    {
        const wchar_t* start = cursor_;
        while (cursor_ != end_) {
            const wchar_t unit = *cursor_;
            if (unit == L',' || unit == L']' || unit == L'}' || IsSpace(unit)) {
                break;
            }
            ++cursor_;
        }
        if (cursor_ == start) {
            Fail("invalid JSON token");
        }
        out.text.assign(start, cursor_);
        out.kind = out.text == L"null" ? JsonKind::Null : JsonKind::Scalar;
    }

    void ParseContainer(JsonValue& out, wchar_t closer, int depth)
    {
        const bool isObject = closer == L'}';
        ++cursor_;
        SkipWhiteSpace();
        if (cursor_ != end_ && *cursor_ == closer) {
            ++cursor_;
            return;
        }
        for (;;) {
            if (isObject) {
                Text key;
                SkipWhiteSpace();
                ParseString(key);
                Expect(L':');
                // A repeated key is refused only after its value parsed, so that an error
                // inside the value is the one reported. A new key is parsed in place in its
                // map node: no temporary value to build and move.
                if (out.members.find(key) != out.members.end()) {
                    JsonValue ignored;
                    ParseValue(ignored, depth + 1);
                    Fail("duplicate JSON key");
                }
                ParseValue(out.members.try_emplace(std::move(key)).first->second, depth + 1);
            } else {
                ParseValue(out.items.emplace_back(), depth + 1);
            }
            SkipWhiteSpace();
            if (cursor_ == end_) {
                Fail("truncated JSON");
            }
            const wchar_t separator = *cursor_++;
            if (separator == closer) {
                return;
            }
            if (separator != L',') {
                Fail("invalid JSON separator");
            }
        }
    }

    // The cursor stands on the opening quotation mark, or at the end of the text.
    void ParseString(Text& out)
    {
        if (cursor_ == end_) {
            Fail("truncated JSON");
        }
        if (*cursor_++ != L'"') {
            Fail("invalid JSON");
        }
        for (;;) {
            const wchar_t* run = cursor_;
            while (cursor_ != end_ && *cursor_ != L'"' && *cursor_ != L'\\' && *cursor_ >= 0x20) {
                ++cursor_;
            }
            out.append(run, cursor_);
            if (cursor_ == end_) {
                Fail("truncated JSON");
            }
            const wchar_t unit = *cursor_++;
            if (unit == L'"') {
                return;
            }
            if (unit != L'\\') {
                Fail("invalid JSON string");
            }
            if (cursor_ == end_) {
                Fail("truncated JSON");
            }
            switch (*cursor_++) {
            case L'"': out.push_back(L'"'); break;
            case L'\\': out.push_back(L'\\'); break;
            case L'/': out.push_back(L'/'); break;
            case L'b': out.push_back(L'\b'); break;
            case L'f': out.push_back(L'\f'); break;
            case L'n': out.push_back(L'\n'); break;
            case L'r': out.push_back(L'\r'); break;
            case L't': out.push_back(L'\t'); break;
            case L'u': out.push_back(ParseUnicodeEscape()); break;
            default: Fail("invalid JSON escape");
            }
        }
    }

    wchar_t ParseUnicodeEscape()
    {
        unsigned value = 0;
        for (int digit = 0; digit < 4; ++digit) {
            if (cursor_ == end_) {
                Fail("truncated JSON");
            }
            const int digitValue = HexDigitValue(*cursor_++);
            if (digitValue < 0) {
                Fail("invalid Unicode");
            }
            value = value * 16 + static_cast<unsigned>(digitValue);
        }
        return static_cast<wchar_t>(value);
    }

    const wchar_t* cursor_;
    const wchar_t* const end_;
    const WhiteSpaceTable& table_;
};

}  // namespace

JsonValue ParseJson(BytesView bytes)
{
    const Text text = Utf8ToText(bytes);
    const wchar_t* begin = text.data();
    const wchar_t* end = begin + text.size();
    if (begin != end && *begin == 0xFEFF) {
        ++begin;
    }
    JsonValue value;
    JsonReader(begin, end).ParseDocument(value);
    return value;
}

const JsonValue& FindJsonMember(const JsonValue& value, TextView key)
{
    static const JsonValue empty;
    const auto found = value.members.find(key);
    return found == value.members.end() ? empty : found->second;
}

bool IsJsonWhiteSpace(wchar_t unit) noexcept
{
    return WhiteSpace().Contains(unit);
}

}  // namespace korvane
