#include "tool/ModSource.h"

#include "foundation/Json.h"
#include "launch/LaunchContext.h"
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

bool ResolveModSource(LaunchContext& context, Text& error)
{
    if (!context.modFile.empty() || context.selectedMod.empty()) {
        return true;
    }
    ToolInvocation invocation;
    invocation.editorRoot = context.editorRoot;
    invocation.arguments = L"list-sources --sdk " + QuoteCommandArgument(context.launchTarget) + L" --editor-root "
        + QuoteCommandArgument(context.editorRoot);
    if (!context.gameDirectory.empty()) {
        invocation.arguments += L" --game-root " + QuoteCommandArgument(context.gameDirectory);
    }
    invocation.cancelFlag = &context.cancelRequested;

    const ToolResult listing = RunTool(invocation);
    if (listing.exitCode != 0) {
        error = listing.error;
        return false;
    }
    try {
        context.modFile = FindModSourceInListing(listing.output, context.selectedMod);
    } catch (const std::runtime_error&) {
        error = kInvalidSourceListingMessage.Now();
        return false;
    }
    if (context.modFile.empty()) {
        error = kModSourceNotFoundMessage.Now();
        return false;
    }
    return true;
}

}  // namespace korvane
