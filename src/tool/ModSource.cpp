#include "tool/ModSource.h"

#include "foundation/Json.h"
#include "tool/ToolCommand.h"
#include "tool/ToolMessages.h"
#include "tool/ToolRun.h"

#include <stdexcept>

namespace korvane {

Text FindModSourceInListing(BytesView listing, TextView modId)
{
    const JsonValue document = ParseJson(listing);
    for (const JsonValue& row : FindJsonMember(document, L"mods").items) {
        if (FindJsonMember(row, L"id").text == modId) {
            return FindJsonMember(row, L"modProject").text;
        }
    }
    return {};
}

bool ResolveModSource(const ModSourceRequest& request, Text& modFile, Text& error)
{
    if (!modFile.empty() || request.selectedMod.empty()) {
        return true;
    }
    ToolInvocation invocation;
    invocation.editorRoot = request.editorRoot;
    invocation.arguments = BuildToolCommand(ToolCommandKind::ListSources,
        {.sdk = request.sdk, .gameRoot = request.gameDirectory, .editorRoot = request.editorRoot});
    invocation.cancelFlag = request.cancelFlag;

    const ToolResult listing = RunTool(invocation);
    if (listing.exitCode != 0) {
        error = listing.error;
        return false;
    }
    try {
        modFile = FindModSourceInListing(listing.output, request.selectedMod);
    } catch (const std::runtime_error&) {
        error = kInvalidSourceListingMessage.Now();
        return false;
    }
    if (modFile.empty()) {
        error = kModSourceNotFoundMessage.Now();
        return false;
    }
    return true;
}

}  // namespace korvane
