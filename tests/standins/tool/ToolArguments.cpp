#include "tool/ToolArguments.h"

namespace korvane::standins {
namespace {

enum class Presence {
    Required,      // word and a non-empty value
    Optional,      // left out, word and value, when there is no value
    EmptyAllowed,  // word always there; the value may be empty
};

struct OptionRule {
    const wchar_t* name;
    Presence presence;
};

struct CommandRule {
    const wchar_t* command;
    std::vector<OptionRule> options;
};

const std::vector<CommandRule>& Grammar()
{
    using enum Presence;
    static const std::vector<CommandRule> rules = {
        {L"sdk-preview", {{L"sdk", Required}, {L"game-root", Optional}}},
        {L"list-sources", {{L"sdk", Required}, {L"editor-root", Required}, {L"game-root", Optional}}},
        {L"resolve-source", {{L"sdk", Required}, {L"mod-file", Required}, {L"resolution", Required}}},
        {L"prepare",
            {{L"sdk", Required}, {L"editor-root", Required}, {L"selection-file", Required}, {L"game-root", Optional},
                {L"mod-file", Required}, {L"progress-file", EmptyAllowed}, {L"timing-report", EmptyAllowed}}},
        {L"create",
            {{L"sdk", Required}, {L"game-root", Optional}, {L"editor-root", Required}, {L"cover", Optional},
                {L"name", Required}, {L"author-name", Required}, {L"output-file", Optional}}},
        {L"translations create",
            {{L"sdk", Required}, {L"game-root", Optional}, {L"editor-root", Required}, {L"cover", Optional},
                {L"name", Required}, {L"author-name", Required}, {L"output-file", Optional}}},
        {L"import-source", {{L"sdk", Required}, {L"game-root", Optional}, {L"editor-root", Required}, {L"mod-file", Required}}},
        {L"sdk-info", {{L"sdk", Required}, {L"editor-root", Required}}},
    };
    return rules;
}

}  // namespace

bool ParseToolArguments(const std::vector<Text>& arguments, ToolCall& call, Text& error)
{
    call = {};
    if (arguments.empty()) {
        error = L"no command given";
        return false;
    }
    size_t next = 1;
    call.command = arguments[0];
    if (call.command == L"translations") {
        if (arguments.size() < 2 || arguments[1] != L"create") {
            error = L"unknown command \"translations\" without \"create\"";
            return false;
        }
        call.command = L"translations create";
        next = 2;
    }
    const CommandRule* rule = nullptr;
    for (const CommandRule& candidate : Grammar()) {
        if (call.command == candidate.command) {
            rule = &candidate;
        }
    }
    if (rule == nullptr) {
        error = L"unknown command \"" + call.command + L"\"";
        return false;
    }
    for (const OptionRule& option : rule->options) {
        const Text word = L"--" + Text(option.name);
        if (next >= arguments.size() || arguments[next] != word) {
            if (option.presence == Presence::Optional) {
                continue;
            }
            error = next < arguments.size() ? L"expected " + word + L" but found \"" + arguments[next] + L"\""
                                            : L"missing " + word;
            return false;
        }
        if (next + 1 >= arguments.size()) {
            error = word + L" needs a value";
            return false;
        }
        const Text& value = arguments[next + 1];
        if (value.empty() && option.presence != Presence::EmptyAllowed) {
            error = option.presence == Presence::Optional ? word + L" is given with an empty value; leave it out"
                                                          : word + L" needs a value";
            return false;
        }
        call.options[option.name] = value;
        next += 2;
    }
    if (next < arguments.size()) {
        error = L"unexpected argument \"" + arguments[next] + L"\" for " + call.command;
        return false;
    }
    return true;
}

const Text& OptionValue(const ToolCall& call, TextView name)
{
    static const Text empty;
    const auto found = call.options.find(Text(name));
    return found == call.options.end() ? empty : found->second;
}

bool HasOption(const ToolCall& call, TextView name)
{
    return call.options.contains(Text(name));
}

Text ToolUsage()
{
    Text usage = L"usage:\n";
    for (const CommandRule& rule : Grammar()) {
        usage += L"  KorvaneTool ";
        usage += rule.command;
        for (const OptionRule& option : rule.options) {
            const Text word = L"--" + Text(option.name) + L" <value>";
            usage += option.presence == Presence::Optional ? L" [" + word + L"]" : L" " + word;
        }
        usage += L"\n";
    }
    return usage;
}

}  // namespace korvane::standins
