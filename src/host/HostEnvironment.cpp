#include "host/HostEnvironment.h"

namespace korvane {
namespace {

constexpr TextView kOption(kHostEnvironmentOption);

}  // namespace

bool HasHostEnvironmentArgument(const std::vector<Text>& passThroughArguments)
{
    for (const Text& argument : passThroughArguments) {
        if (TextView(argument).starts_with(kOption)) {
            return true;
        }
    }
    return false;
}

Text LastHostEnvironmentWord(const std::vector<Text>& passThroughArguments)
{
    Text word;
    for (const Text& argument : passThroughArguments) {
        if (TextView(argument).starts_with(kOption)) {
            word = argument.substr(kOption.size());
        }
    }
    return word;
}

}  // namespace korvane
