#include "host/HostContext.h"

#include "foundation/Files.h"
#include "foundation/Json.h"
#include "foundation/Paths.h"
#include "host/HostEnvironment.h"
#include "host/LaunchSelection.h"
#include "host/SdkDiscovery.h"
#include "launch/LaunchContext.h"

#include <exception>

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

void AppendEnvironmentOf(LaunchContext& context, TextView gameDirectory)
{
    context.passThroughArguments.push_back(kHostEnvironmentOption + HostEnvironmentOf(gameDirectory));
}

// Adopts the stored selection when it holds; any failure reads as a selection that does not.
bool AdoptStoredSelection(LaunchContext& context, Text& requestedGameDirectory, TextView hostGame)
{
    try {
        StoredSelection stored = ReadStoredSelection(context.editorRoot);
        if (!IsStoredSelectionValid(stored, context.editorRoot, hostGame)) {
            return false;
        }
        requestedGameDirectory = std::move(stored.gameDirectory);
        context.requestedSdk = std::move(stored.sdkFile);
        // A stand-alone selection names no environment.
        if (!requestedGameDirectory.empty()) {
            AppendEnvironmentOf(context, requestedGameDirectory);
        }
        return true;
    } catch (const std::exception&) {
        return false;
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

void ResolveHostContext(LaunchContext& context, Text& requestedGameDirectory)
{
    if (!requestedGameDirectory.empty() || !context.requestedSdk.empty()) {
        return;
    }
    if (HasHostEnvironmentArgument(context.passThroughArguments)) {
        return;
    }
    const Text parent = ParentPath(context.editorRoot);
    const Text hostGame = IsGameDirectory(parent) ? parent : Text();

    if (AdoptStoredSelection(context, requestedGameDirectory, hostGame)) {
        return;
    }
    if (hostGame.empty()) {
        return;
    }
    Text sdk = FindSdkBelowDirectory(hostGame);
    if (sdk.empty()) {
        return;
    }
    requestedGameDirectory = hostGame;
    context.requestedSdk = std::move(sdk);
    AppendEnvironmentOf(context, hostGame);
}

}  // namespace korvane
