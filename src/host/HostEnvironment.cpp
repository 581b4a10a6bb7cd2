#include "host/HostEnvironment.h"

#include "foundation/Paths.h"
#include "host/SdkDiscovery.h"

namespace korvane {
namespace {

constexpr TextView kOption(kHostEnvironmentOption);

}  // namespace

HostChoice Unchanged(const HostRequest& request)
{
    return HostChoice{Text(request.gameDirectory), Text(request.sdk), {}};
}

Text HostEnvironmentArgument(TextView word)
{
    return Text(kOption).append(word);
}

bool HasHostEnvironmentArgument(std::span<const Text> passThroughArguments)
{
    for (const Text& argument : passThroughArguments) {
        if (TextView(argument).starts_with(kOption)) {
            return true;
        }
    }
    return false;
}

Text LastHostEnvironmentWord(std::span<const Text> passThroughArguments)
{
    Text word;
    for (const Text& argument : passThroughArguments) {
        if (TextView(argument).starts_with(kOption)) {
            word = argument.substr(kOption.size());
        }
    }
    return word;
}

Text EnvironmentOfGameDirectory(TextView gameDirectory)
{
    if (IsGameProjectDirectory(gameDirectory)) {
        return IsRegularFile(JoinPath(gameDirectory, kHostBundleMarker)) ? kPackagedEnvironment : kDeveloperEnvironment;
    }
    return kPackagedEnvironment;
}

Text HostEnvironmentOf(TextView gameDirectory)
{
    return gameDirectory.empty() ? Text(kStandaloneEnvironment) : EnvironmentOfGameDirectory(gameDirectory);
}

bool LiesPlainlyInside(TextView target, TextView hostDirectory)
{
    const Text prefix = Text(hostDirectory) + L'\\';
    if (!StartsWithIgnoringCase(target, prefix)) {
        return false;
    }
    // A link anywhere on the way could lead the SDK out of the game.
    TextView current = target;
    while (current.size() > hostDirectory.size()) {
        if (IsReparsePoint(current)) {
            return false;
        }
        const size_t separator = current.find_last_of(L"\\/");
        if (separator == TextView::npos) {
            return true;
        }
        current = current.substr(0, separator);
    }
    return true;
}

bool SdkBelongsToHost(TextView sdk, TextView gameDirectory)
{
    if (HostEnvironmentOf(gameDirectory) != kPackagedEnvironment) {
        return true;
    }
    return LiesPlainlyInside(NormalizePath(sdk), NormalizePath(gameDirectory));
}

}  // namespace korvane
