#pragma once
// The command line the stand-in tool accepts: exactly the commands the launcher may issue,
// each option in its one order, and nothing else.

#include "foundation/Text.h"

#include <map>
#include <vector>

namespace korvane::standins {

struct ToolCall {
    Text command;                  // "sdk-preview", ..., "translations create"
    std::map<Text, Text> options;  // "sdk" -> value; an optional option left out is absent
};

// Reads the arguments behind the program's path. False with a message when the command is
// unknown, an option is missing, out of order, repeated or unknown, a required value is empty
// or an optional one is given empty.
bool ParseToolArguments(const std::vector<Text>& arguments, ToolCall& call, Text& error);

// The option's value, or the empty text.
const Text& OptionValue(const ToolCall& call, TextView name);
bool HasOption(const ToolCall& call, TextView name);

// One line per command, for the refusal message.
Text ToolUsage();

}  // namespace korvane::standins
