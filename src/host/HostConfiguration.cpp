#include "host/HostConfiguration.h"

#include "foundation/Files.h"
#include "foundation/Json.h"
#include "foundation/Paths.h"
#include "host/HostEnvironment.h"
#include "host/SdkDiscovery.h"
#include "launch/LaunchContext.h"

#include <stdexcept>

namespace korvane {
namespace {

constexpr TextView kAutoEnvironment = L"auto";

bool IsConfigurableEnvironment(TextView word) noexcept
{
    return word == kAutoEnvironment || word == kDeveloperEnvironment || word == kPackagedEnvironment;
}

// A packaged game ships its SDK inside itself; anything else could hand the editor a file
// the game never carried.
void RequireSdkInsidePackage(TextView sdk, TextView gameDirectory)
{
    const Text target = NormalizePath(sdk);
    if (!StartsWithIgnoringCase(target, Text(gameDirectory) + L'\\')) {
        throw std::runtime_error("SDK must belong to this game package");
    }
    if (!LiesPlainlyInside(target, gameDirectory)) {
        throw std::runtime_error("packaged SDK path must not redirect outside its host");
    }
}

}  // namespace

Text ResolveHostPath(TextView environment, TextView editorRoot, TextView value)
{
    if (!value.empty() && IsAbsoluteInForm(value)) {
        if (environment != kDeveloperEnvironment) {
            throw std::runtime_error("packaged host paths must be relative");
        }
        return NormalizePath(value);
    }
    return NormalizePath(JoinPath(editorRoot, value));
}

void ApplyHostConfiguration(LaunchContext& context, Text& requestedGameDirectory)
{
    // A game directory from the command line wins outright; the file is not even judged.
    if (!requestedGameDirectory.empty()) {
        return;
    }
    const Text file = JoinPath(context.editorRoot, kHostConfigurationFile);
    if (!IsRegularFile(file)) {
        return;
    }
    const JsonValue configuration = ParseJson(ReadWholeFile(file, kSmallFileLimit));
    if (FindJsonMember(configuration, L"schemaVersion").text != L"1") {
        throw std::runtime_error("invalid host configuration version");
    }
    Text environment = FindJsonMember(configuration, L"environment").text;
    if (environment.empty()) {
        environment = kPackagedEnvironment;
    }
    if (!IsConfigurableEnvironment(environment)) {
        throw std::runtime_error("invalid host environment");
    }
    const Text& gameDirectory = FindJsonMember(configuration, L"gameDirectory").text;
    if (gameDirectory.empty()) {
        return;
    }

    // Still possibly "auto" here, so an absolute game directory needs an explicit "developer".
    requestedGameDirectory = ResolveHostPath(environment, context.editorRoot, gameDirectory);
    if (environment == kAutoEnvironment) {
        environment = EnvironmentOfGameDirectory(requestedGameDirectory);
    }
    const bool packaged = environment == kPackagedEnvironment;
    if (const Text& packagedGame = FindJsonMember(configuration, L"packagedGameDirectory").text;
        packaged && !packagedGame.empty()) {
        requestedGameDirectory = ResolveHostPath(environment, context.editorRoot, packagedGame);
    }

    if (context.requestedSdk.empty()) {
        const Text& sdk = FindJsonMember(configuration, L"sdk").text;
        context.requestedSdk = sdk.empty() ? FindSdkBelowDirectory(requestedGameDirectory)
                                           : ResolveHostPath(environment, context.editorRoot, sdk);
    }
    if (packaged && !context.requestedSdk.empty()) {
        RequireSdkInsidePackage(context.requestedSdk, requestedGameDirectory);
    }

    // A word given on the command line stays and wins.
    if (!HasHostEnvironmentArgument(context.passThroughArguments)) {
        context.passThroughArguments.push_back(kHostEnvironmentOption + environment);
    }
}

}  // namespace korvane
