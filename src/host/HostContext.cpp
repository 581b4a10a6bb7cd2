#include "host/HostContext.h"

#include "foundation/Files.h"
#include "foundation/Json.h"
#include "foundation/Paths.h"
#include "host/HostEnvironment.h"
#include "host/LaunchSelection.h"
#include "host/SdkDiscovery.h"

#include <exception>
#include <optional>

namespace korvane {
namespace {

bool IsGameDirectory(TextView directory)
{
    return IsGameInstallDirectory(directory) || IsGameProjectDirectory(directory);
}

// Reads the install's stored selection. A missing, oversized or malformed file throws, as
// the JSON reader does; a document of another shape gives empty texts.
StoredSelection ReadStoredSelection(TextView editorRoot)
{
    const JsonValue document = ParseJson(ReadWholeFile(LaunchSelectionPath(editorRoot), kSmallFileLimit));
    return StoredSelection{
        FindJsonMember(document, L"schemaVersion").text,
        FindJsonMember(document, L"editorRoot").text,
        FindJsonMember(document, L"environment").text,
        FindJsonMember(document, L"gameDirectory").text,
        FindJsonMember(document, L"sdkFile").text,
    };
}

// Adopts the stored selection when it holds; any failure reads as a selection that does not.
std::optional<HostChoice> AdoptStoredSelection(TextView editorRoot, TextView hostGame)
{
    try {
        StoredSelection stored = ReadStoredSelection(editorRoot);
        if (!IsStoredSelectionValid(stored, editorRoot, hostGame)) {
            return std::nullopt;
        }
        HostChoice choice{std::move(stored.gameDirectory), std::move(stored.sdkFile), {}};
        // A stand-alone selection names no environment.
        if (!choice.gameDirectory.empty()) {
            choice.environmentArgument = HostEnvironmentArgument(HostEnvironmentOf(choice.gameDirectory));
        }
        return choice;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

}  // namespace

bool IsStoredSelectionValid(const StoredSelection& stored, TextView editorRoot, TextView hostGame)
{
    if (stored.schemaVersion != L"1") {
        return false;
    }
    if (NormalizePath(stored.editorRoot) != NormalizePath(editorRoot)) {
        return false;
    }
    // The environment of the game may have changed since (the bundle marker added or removed).
    if (stored.environment != HostEnvironmentOf(stored.gameDirectory)) {
        return false;
    }
    if (!IsRegularFile(stored.sdkFile)) {
        return false;
    }
    if (!stored.gameDirectory.empty() && !IsGameDirectory(stored.gameDirectory)) {
        return false;
    }
    // An install inside a game only ever adopts a selection of that same game.
    if (!hostGame.empty() && NormalizePath(hostGame) != NormalizePath(stored.gameDirectory)) {
        return false;
    }
    return SdkBelongsToHost(stored.sdkFile, stored.gameDirectory);
}

HostChoice ResolveHostContext(const HostRequest& request)
{
    if (!request.gameDirectory.empty() || !request.sdk.empty()) {
        return Unchanged(request);
    }
    if (HasHostEnvironmentArgument(request.passThroughArguments)) {
        return Unchanged(request);
    }
    const Text parent = ParentPath(request.editorRoot);
    const Text hostGame = IsGameDirectory(parent) ? parent : Text();

    if (std::optional<HostChoice> stored = AdoptStoredSelection(request.editorRoot, hostGame)) {
        return std::move(*stored);
    }
    if (hostGame.empty()) {
        return Unchanged(request);
    }
    Text sdk = FindSdkBelowDirectory(hostGame);
    if (sdk.empty()) {
        return Unchanged(request);
    }
    return HostChoice{hostGame, std::move(sdk), HostEnvironmentArgument(HostEnvironmentOf(hostGame))};
}

}  // namespace korvane
