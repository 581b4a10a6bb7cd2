#pragma once
// The host environment word travels through the run as one pass-through argument.

#include "foundation/Text.h"

#include <vector>

namespace korvane {

inline constexpr wchar_t kHostEnvironmentOption[] = L"-KorvaneHostEnvironment=";

// Whether an element begins with the option, case-sensitive, at its first unit.
bool HasHostEnvironmentArgument(const std::vector<Text>& passThroughArguments);
// The word of the last such element, or empty.
Text LastHostEnvironmentWord(const std::vector<Text>& passThroughArguments);

}  // namespace korvane
