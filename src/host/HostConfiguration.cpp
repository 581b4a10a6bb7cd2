#include "host/HostConfiguration.h"

#include "foundation/Files.h"
#include "foundation/Json.h"
#include "foundation/Paths.h"
#include "host/HostEnvironment.h"
#include "host/SdkDiscovery.h"

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

HostChoice ApplyHostConfiguration(const HostRequest& request)
{
    HostChoice choice = Unchanged(request);
    // A game directory from the command line wins outright; the file is not even judged.
    if (!request.gameDirectory.empty()) {
        return choice;
    }
    const Text file = JoinPath(request.editorRoot, kHostConfigurationFile);
    if (!IsRegularFile(file)) {
        return choice;
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
        return choice;
    }

    // Still possibly "auto" here, so an absolute game directory needs an explicit "developer".
    choice.gameDirectory = ResolveHostPath(environment, request.editorRoot, gameDirectory);
    if (environment == kAutoEnvironment) {
        environment = EnvironmentOfGameDirectory(choice.gameDirectory);
    }
    const bool packaged = environment == kPackagedEnvironment;
    if (const Text& packagedGame = FindJsonMember(configuration, L"packagedGameDirectory").text;
        packaged && !packagedGame.empty()) {
        choice.gameDirectory = ResolveHostPath(environment, request.editorRoot, packagedGame);
    }

    if (choice.sdk.empty()) {
        const Text& sdk = FindJsonMember(configuration, L"sdk").text;
        choice.sdk = sdk.empty() ? FindSdkBelowDirectory(choice.gameDirectory)
                                 : ResolveHostPath(environment, request.editorRoot, sdk);
    }
    if (packaged && !choice.sdk.empty()) {
        RequireSdkInsidePackage(choice.sdk, choice.gameDirectory);
    }

    // A word given on the command line stays and wins.
    if (!HasHostEnvironmentArgument(request.passThroughArguments)) {
        choice.environmentArgument = HostEnvironmentArgument(environment);
    }
    return choice;
}

}  // namespace korvane
