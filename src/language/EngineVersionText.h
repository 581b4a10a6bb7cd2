#pragma once
// The three searches that read an engine version out of the bytes of a version file or a
// project file. Each behaves as an ECMAScript regular-expression search for its pattern
// (first match, greedy digits, \s as the six ASCII blanks) without std::regex, whose
// recursive matcher can overflow the stack on a long run of blanks or digits.

#include "foundation/Text.h"

namespace korvane {

// The first capture of `"MajorVersion"\s*:\s*([0-9]+)`, empty when nothing matches.
Bytes FindMajorVersion(BytesView bytes);
// The first capture of `"MinorVersion"\s*:\s*([0-9]+)`, empty when nothing matches.
Bytes FindMinorVersion(BytesView bytes);
// The first capture of `"EngineAssociation"\s*:\s*"(5\.[0-8])"`, empty when nothing matches.
Bytes FindProjectEngineVersion(BytesView bytes);

// "5.0" to "5.8" exactly: the only versions the launcher works with.
bool IsSupportedEngineVersion(TextView version) noexcept;

}  // namespace korvane
