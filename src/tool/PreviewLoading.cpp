#include "tool/PreviewLoading.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "host/LaunchSelection.h"
#include "host/SdkDiscovery.h"
#include "tool/ToolCommand.h"
#include "tool/ToolRun.h"

#include <stdexcept>

namespace korvane {
namespace {

ToolResult RunQuietly(const PreviewRequest& request, Text arguments)
{
    ToolInvocation invocation;
    invocation.editorRoot = request.editorRoot;
    invocation.arguments = std::move(arguments);
    invocation.cancelFlag = request.cancelFlag;
    return RunTool(invocation);
}

bool IsSet(const std::atomic<bool>* flag) noexcept
{
    return flag != nullptr && flag->load();
}

}  // namespace

bool EditorBuildMatches(TextView editorRoot, const JsonValue& preview) noexcept
{
    try {
        const JsonValue modules = ParseJson(
            ReadWholeFile(JoinPath(editorRoot, L"Engine\\Binaries\\Win64\\UnrealEditor.modules"), kReportFileLimit));
        const JsonValue receipt =
            ParseJson(ReadWholeFile(JoinPath(editorRoot, L"KorvaneEditor.receipt.json"), kReportFileLimit));
        const Text& buildId = FindJsonMember(modules, L"BuildId").text;
        if (buildId.empty()) {
            return false;
        }
        if (MajorMinor(FindJsonMember(receipt, L"engineBuild").text) !=
            MajorMinor(FindJsonMember(preview, L"engineVersion").text)) {
            return false;
        }
        if (FindJsonMember(preview, L"requiresEditorBuildBinding").text == L"false") {
            return true;
        }
        return FindJsonMember(preview, L"editorBuildId").text == buildId;
    } catch (...) {
        return false;
    }
}

void LoadPreviewImages(WorkResult& result)
{
    result.gameIcon = LoadThumbnail(FindJsonMember(result.preview, L"iconPath").text);
    for (const JsonValue& mod : FindJsonMember(result.preview, L"mods").items) {
        UniqueGdiplusBitmap cover = LoadThumbnail(FindJsonMember(mod, L"coverPath").text);
        // The first cover of a package stays; a later one is dropped.
        result.covers.try_emplace(FindJsonMember(mod, L"modProject").text, std::move(cover));
    }
}

WorkResult LoadSdkPreview(const PreviewRequest& request)
{
    WorkResult result;
    const ToolResult run = RunQuietly(request, L"sdk-preview" + BuildSdkArguments(request.sdk, request.gameDirectory));
    if (run.exitCode != 0) {
        result.errorText = run.error;
        return result;
    }
    result.preview = ParseJson(run.output);
    if (result.preview.kind != JsonKind::Object || FindJsonMember(result.preview, L"mods").kind != JsonKind::Array) {
        throw std::runtime_error("invalid preview schema");
    }
    result.editorBuildMatches = EditorBuildMatches(request.editorRoot, result.preview);
    if (result.editorBuildMatches && !IsSet(request.cancelFlag) && !request.pickerPreview) {
        SaveLaunchSelection(request.editorRoot, request.sdk, request.gameDirectory);
    }
    LoadPreviewImages(result);
    result.previewLoaded = true;
    return result;
}

WorkResult LoadInitialPreview(const PreviewRequest& request, TextView fixturePath)
{
    if (request.pickerPreview && !fixturePath.empty()) {
        WorkResult result;
        result.preview = ParseJson(ReadWholeFile(fixturePath, kLargeFileLimit));
        LoadPreviewImages(result);
        result.previewLoaded = true;
        return result;
    }
    const Text sdk = FindSdkFile(request.gameDirectory, request.sdk);
    if (sdk.empty()) {
        // No SDK around is no failure: the picker asks for one.
        WorkResult result;
        result.gameDirectory = request.gameDirectory;
        return result;
    }
    PreviewRequest found = request;
    found.sdk = sdk;
    WorkResult result = LoadSdkPreview(found);
    result.gameDirectory = request.gameDirectory;
    return result;
}

WorkResult RunModCommand(const PreviewRequest& request, TextView toolArguments, TextView fallbackModProject)
{
    const ToolResult run = RunQuietly(request, Text(toolArguments));
    if (run.exitCode != 0) {
        WorkResult result;
        result.errorText = run.error;
        return result;
    }
    Text modProject = FindJsonMember(ParseJson(run.output), L"modProject").text;
    if (modProject.empty()) {
        modProject = fallbackModProject;
    }
    WorkResult result = LoadSdkPreview(request);
    result.selectedModProject = std::move(modProject);
    return result;
}

}  // namespace korvane
