#pragma once
// The strict JSON reader through which every document the launcher takes in is read.
// Stricter than JSON where it matters (duplicate keys, malformed UTF-8 refuse the whole
// document) and looser where it does not: scalars are kept as their source text and never
// validated. Failures are std::runtime_error with one of a fixed set of ASCII messages.

#include "foundation/Text.h"

#include <functional>
#include <map>
#include <vector>

namespace korvane {

enum class JsonKind {
    Null,    // the token `null`; text holds those four letters
    String,  // text holds the decoded string
    Object,  // members hold the members; text is empty
    Array,   // items hold the elements; text is empty
    Scalar,  // any other token; text holds its source text unchanged
};

struct JsonValue {
    JsonKind kind = JsonKind::Null;
    Text text;
    // Ordered by UTF-16 code units (std::less on wide strings compares units unsigned on
    // Windows); document order is not kept.
    std::map<Text, JsonValue, std::less<>> members;
    std::vector<JsonValue> items;
};

// Deepest nesting below the top-level value that is accepted.
inline constexpr int kMaxJsonDepth = 64;

// Parses UTF-8 bytes; one leading byte-order mark is skipped. Throws std::runtime_error.
JsonValue ParseJson(BytesView bytes);

// The member with exactly this key, or one shared empty value (kind Null, empty text) for
// any other case, whatever the kind of `value`. Never fails, so lookups chain.
const JsonValue& FindJsonMember(const JsonValue& value, TextView key);

// Whether the reader treats `unit` as white space: iswspace of the default locale.
bool IsJsonWhiteSpace(wchar_t unit) noexcept;

}  // namespace korvane
