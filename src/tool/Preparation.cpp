#include "tool/Preparation.h"

#include "tool/ToolCommand.h"
#include "tool/ToolMessages.h"

#include <windows.h>

namespace korvane {

bool HasConflictMarker(TextView error) noexcept
{
    return error.find(kSourceConflictMarker) != TextView::npos || error.find(kOutsideChangeMarker) != TextView::npos;
}

std::optional<Text> ResolutionForAnswer(int messageBoxResult)
{
    switch (messageBoxResult) {
    case IDYES:
        return Text(L"workspace");
    case IDNO:
        return Text(L"source");
    default:
        return std::nullopt;
    }
}

ToolResult RunPreparation(TextView editorRoot, TextView sdk, TextView modFile, TextView arguments,
    const std::atomic<bool>* cancelFlag, TextView progressFile, const std::function<void(TextView)>& progressCallback,
    TextView timingReport)
{
    ToolInvocation prepare;
    prepare.editorRoot = editorRoot;
    prepare.arguments = arguments;
    prepare.cancelFlag = cancelFlag;
    prepare.progressFile = progressFile;
    prepare.progressCallback = progressCallback;
    prepare.timingReport = timingReport;

    ToolResult first = RunTool(prepare);
    if (first.exitCode == 0 || modFile.empty() || sdk.empty() || (cancelFlag != nullptr && cancelFlag->load())
        || !HasConflictMarker(first.error)) {
        return first;
    }

    // Cancel is the default button: a stray Enter keeps both sides as they are.
    const int answer = MessageBoxW(nullptr, kConflictBody.Now().c_str(), kConflictCaption.Now().c_str(),
        MB_YESNOCANCEL | MB_ICONWARNING | MB_DEFBUTTON3);
    const std::optional<Text> resolution = ResolutionForAnswer(answer);
    if (!resolution) {
        return first;
    }

    ToolInvocation resolve;
    resolve.editorRoot = editorRoot;
    resolve.arguments = BuildToolCommand(
        ToolCommandKind::ResolveSource, {.sdk = sdk, .modFile = modFile, .resolution = *resolution});
    resolve.cancelFlag = cancelFlag;
    ToolResult resolved = RunTool(resolve);
    if (resolved.exitCode != 0) {
        return resolved;
    }
    return RunTool(prepare);
}

}  // namespace korvane
