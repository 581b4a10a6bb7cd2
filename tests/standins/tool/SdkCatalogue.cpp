#include "tool/SdkCatalogue.h"

#include "common/StandinSupport.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"

#include <windows.h>

namespace korvane::standins {
namespace {

Text LibraryPath(const SdkDocument& sdk)
{
    return JoinPath(sdk.modsFolder, L"Library.json");
}

std::vector<Text> LibraryPackages(const SdkDocument& sdk)
{
    std::vector<Text> packages;
    if (const std::optional<JsonValue> library = ReadJsonFile(LibraryPath(sdk))) {
        for (const JsonValue& item : FindJsonMember(*library, L"mods").items) {
            packages.push_back(item.text);
        }
    }
    return packages;
}

ModRecord ModFromSdkEntry(const JsonValue& entry, TextView sdkFolder)
{
    ModRecord mod;
    mod.id = FindJsonMember(entry, L"id").text;
    mod.name = FindJsonMember(entry, L"name").text;
    mod.englishName = FindJsonMember(FindJsonMember(entry, L"localizedNames"), L"en").text;
    mod.chineseName = FindJsonMember(FindJsonMember(entry, L"localizedNames"), L"zh-Hans").text;
    mod.authorName = FindJsonMember(entry, L"authorName").text;
    mod.version = FindJsonMember(entry, L"version").text;
    for (const JsonValue& item : FindJsonMember(entry, L"supportedGameVersions").items) {
        mod.supportedGameVersions.push_back(item.text);
    }
    const Text& package = FindJsonMember(entry, L"package").text;
    mod.package = package.empty() ? Text() : ResolveDocumentPath(sdkFolder, package);
    const Text& cover = FindJsonMember(entry, L"coverPath").text;
    mod.coverPath = cover.empty() ? Text() : ResolveDocumentPath(sdkFolder, cover);
    return mod;
}

}  // namespace

bool LoadSdk(TextView path, SdkDocument& sdk, Text& error)
{
    sdk = {};
    sdk.path = NormalizePath(path);
    if (!IsRegularFile(sdk.path)) {
        error = L"The SDK file was not found: " + sdk.path;
        return false;
    }
    const std::optional<JsonValue> document = ReadJsonFile(sdk.path);
    if (!document || document->kind != JsonKind::Object || FindJsonMember(*document, L"schemaVersion").text != L"1") {
        error = L"The SDK file is damaged or is not a Korvane SDK: " + sdk.path;
        return false;
    }
    sdk.json = *document;
    sdk.folder = ParentPath(sdk.path);
    const Text& mods = sdk.Member(L"modsFolder");
    sdk.modsFolder = ResolveDocumentPath(sdk.folder, mods.empty() ? Text(L"Mods") : mods);
    return true;
}

std::vector<ModRecord> CatalogueOf(const SdkDocument& sdk)
{
    std::vector<ModRecord> mods;
    for (const JsonValue& entry : FindJsonMember(sdk.json, L"mods").items) {
        ModRecord mod = ModFromSdkEntry(entry, sdk.folder);
        if (!mod.package.empty() && IsRegularFile(mod.package)) {
            mods.push_back(std::move(mod));
        }
    }
    for (const Text& package : LibraryPackages(sdk)) {
        if (std::optional<ModRecord> mod = ReadPackage(package)) {
            mods.push_back(std::move(*mod));
        }
    }
    return mods;
}

bool AddToLibrary(const SdkDocument& sdk, TextView package, Text& error)
{
    std::vector<Text> packages = LibraryPackages(sdk);
    packages.push_back(NormalizePath(package));
    const Text target = LibraryPath(sdk);
    const Text sibling = target + L"." + DecimalText(GetCurrentProcessId()) + L".tmp";
    if (!MakeFolders(sdk.modsFolder) ||
        !ReplaceFileFromSibling(target, sibling, TextToUtf8(L"{\"mods\":" + JsonStringArray(packages) + L"}"))) {
        error = L"Could not update the Mod library " + target;
        return false;
    }
    return true;
}

Text EditorBuildIdOf(TextView editorRoot)
{
    const std::optional<JsonValue> modules =
        ReadJsonFile(JoinPath(editorRoot, L"Engine\\Binaries\\Win64\\UnrealEditor.modules"));
    return modules ? FindJsonMember(*modules, L"BuildId").text : Text();
}

bool CheckEditorBuild(const SdkDocument& sdk, TextView editorRoot, Text& error)
{
    const Text installed = EditorBuildIdOf(editorRoot);
    if (installed.empty()) {
        error = L"The editor's module list could not be read below " + Text(editorRoot) + L".";
        return false;
    }
    if (sdk.RequiresBuildBinding() && installed != sdk.Member(L"editorBuildId")) {
        error = L"This SDK was exported for editor build " + sdk.Member(L"editorBuildId") +
            L", but the installed editor is build " + installed +
            L". Ask the game developer to export the SDK again with this Editor.";
        return false;
    }
    return true;
}

}  // namespace korvane::standins
