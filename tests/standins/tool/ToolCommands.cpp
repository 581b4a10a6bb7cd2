#include "tool/ToolCommands.h"

#include "tool/SdkCatalogue.h"

#include "common/StandinSupport.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"

namespace korvane::standins {
namespace {

Text OptionalMember(TextView key, TextView value)
{
    return L"," + QuoteJsonText(key) + L":" + QuoteJsonText(value);
}

Text ScalarOrString(const JsonValue& value, TextView fallback)
{
    if (value.kind == JsonKind::Scalar) {
        return value.text;
    }
    return value.text.empty() ? Text(fallback) : QuoteJsonText(value.text);
}

CommandOutcome Answer(TextView json)
{
    CommandOutcome outcome;
    outcome.out = TextToUtf8(json) + "\n";
    return outcome;
}

CommandOutcome SdkPreview(const ToolCall& call)
{
    SdkDocument sdk;
    Text error;
    if (!LoadSdk(OptionValue(call, L"sdk"), sdk, error)) {
        return Failure(error);
    }
    const JsonValue& gameInfo = FindJsonMember(sdk.json, L"gameInfo");
    const Text& icon = sdk.Member(L"iconPath");
    Text json = L"{\"schemaVersion\":1" + OptionalMember(L"sdkFile", sdk.path) +
        OptionalMember(L"gameId", sdk.Member(L"gameId")) + L",\"gameInfo\":{\"displayName\":" +
        QuoteJsonText(FindJsonMember(gameInfo, L"displayName").text) + L",\"localizedDisplayNames\":{\"zh-Hans\":" +
        QuoteJsonText(FindJsonMember(FindJsonMember(gameInfo, L"localizedDisplayNames"), L"zh-Hans").text) + L"}}" +
        OptionalMember(L"gameVersion", sdk.Member(L"gameVersion")) +
        OptionalMember(L"engineVersion", sdk.Member(L"engineVersion")) + L",\"requiresEditorBuildBinding\":" +
        ScalarOrString(FindJsonMember(sdk.json, L"requiresEditorBuildBinding"), L"true") +
        OptionalMember(L"editorBuildId", sdk.Member(L"editorBuildId")) +
        OptionalMember(L"iconPath", icon.empty() ? Text() : ResolveDocumentPath(sdk.folder, icon)) +
        OptionalMember(L"gameRoot", OptionValue(call, L"game-root")) + L",\"mods\":[";
    bool first = true;
    for (const ModRecord& mod : CatalogueOf(sdk)) {
        json += first ? L"" : L",";
        first = false;
        json += L"{\"id\":" + QuoteJsonText(mod.id) + OptionalMember(L"name", mod.name) +
            OptionalMember(L"authorName", mod.authorName) + OptionalMember(L"version", mod.version) +
            OptionalMember(L"kind", mod.kind) + OptionalMember(L"modProject", mod.package) +
            OptionalMember(L"coverPath", mod.coverPath) +
            L",\"supportedGameVersions\":" + JsonStringArray(mod.supportedGameVersions) + L"}";
    }
    return Answer(json + L"]}");
}

CommandOutcome ListSources(const ToolCall& call)
{
    SdkDocument sdk;
    Text error;
    if (!LoadSdk(OptionValue(call, L"sdk"), sdk, error)) {
        return Failure(error);
    }
    Text json = L"{\"mods\":[";
    bool first = true;
    for (const ModRecord& mod : CatalogueOf(sdk)) {
        json += first ? L"" : L",";
        first = false;
        json += L"{\"id\":" + QuoteJsonText(mod.id) + OptionalMember(L"modProject", mod.package) + L"}";
    }
    return Answer(json + L"]}");
}

CommandOutcome ResolveSource(const ToolCall& call)
{
    const Text& resolution = OptionValue(call, L"resolution");
    if (resolution != L"workspace" && resolution != L"source") {
        return Failure(L"--resolution takes \"workspace\" or \"source\", not \"" + resolution + L"\"", 2);
    }
    SdkDocument sdk;
    Text error;
    if (!LoadSdk(OptionValue(call, L"sdk"), sdk, error)) {
        return Failure(error);
    }
    const Text package = NormalizePath(OptionValue(call, L"mod-file"));
    if (!ReadPackage(package)) {
        return Failure(L"The Mod source package was not found or is damaged: " + package);
    }
    // The record of how the author settled the conflict stays beside the package.
    const Text record = L"{\"resolution\":" + QuoteJsonText(resolution) + OptionalMember(L"sdk", sdk.path) +
        L",\"pid\":" + DecimalText(GetCurrentProcessId()) + L"}";
    if (!AppendLine(package + L".resolution.jsonl", TextToUtf8(record))) {
        return Failure(L"Could not record the resolution beside " + package);
    }
    return Answer(L"{\"resolved\":true,\"resolution\":" + QuoteJsonText(resolution) + L"}");
}

CommandOutcome SdkInfo(const ToolCall& call)
{
    SdkDocument sdk;
    Text error;
    if (!LoadSdk(OptionValue(call, L"sdk"), sdk, error) ||
        !CheckEditorBuild(sdk, OptionValue(call, L"editor-root"), error)) {
        return Failure(error);
    }
    return Answer(L"{\"gameId\":" + QuoteJsonText(sdk.Member(L"gameId")) +
        OptionalMember(L"editorBuildId", EditorBuildIdOf(OptionValue(call, L"editor-root"))) +
        L",\"mods\":" + DecimalText(CatalogueOf(sdk).size()) + L"}");
}

// A file name made from free text: characters that Windows refuses in names become "_".
Text FileNameFrom(TextView text)
{
    Text name;
    for (const wchar_t unit : text) {
        name += (unit < 0x20 || Text(L"<>:\"/\\|?*").find(unit) != Text::npos) ? L'_' : unit;
    }
    name = TrimText(name);
    while (!name.empty() && (name.back() == L'.' || name.back() == L' ')) {
        name.pop_back();
    }
    return name.empty() ? Text(L"NewMod") : name;
}

// `folder\stem.extension`, or with " 2", " 3"... when that is taken.
Text FreePath(TextView folder, TextView stem, TextView extension)
{
    Text candidate = JoinPath(folder, Text(stem) + Text(extension));
    for (int number = 2; GetFileAttributesW(candidate.c_str()) != INVALID_FILE_ATTRIBUTES; ++number) {
        candidate = JoinPath(folder, Text(stem) + L" " + DecimalText(static_cast<unsigned>(number)) + Text(extension));
    }
    return candidate;
}

Text ExtensionOf(TextView path)
{
    const Text leaf = LastPathComponent(path);
    const size_t dot = leaf.rfind(L'.');
    return dot == Text::npos ? Text() : leaf.substr(dot);
}

bool CopyCover(const SdkDocument& sdk, TextView cover, ModRecord& mod, Text& error)
{
    if (cover.empty()) {
        return true;
    }
    const Text target = JoinPath(sdk.modsFolder, L"Covers\\" + mod.id + ExtensionOf(cover));
    if (!MakeFolders(ParentPath(target)) || !CopyFileW(Text(cover).c_str(), target.c_str(), FALSE)) {
        error = L"Could not copy the cover image " + Text(cover);
        return false;
    }
    mod.coverPath = target;
    return true;
}

CommandOutcome ModAnswer(const ModRecord& mod)
{
    return Answer(L"{\"modProject\":" + QuoteJsonText(mod.package) + OptionalMember(L"id", mod.id) +
        OptionalMember(L"name", mod.name) + L"}");
}

CommandOutcome Create(const ToolCall& call)
{
    SdkDocument sdk;
    Text error;
    if (!LoadSdk(OptionValue(call, L"sdk"), sdk, error)) {
        return Failure(error);
    }
    const Text& cover = OptionValue(call, L"cover");
    if (!cover.empty() && !IsRegularFile(cover)) {
        return Failure(L"The cover image was not found: " + cover);
    }
    ModRecord mod;
    mod.name = OptionValue(call, L"name");
    mod.englishName = mod.name;
    mod.authorName = OptionValue(call, L"author-name");
    mod.version = L"0.1.0";
    mod.kind = call.command == L"create" ? L"standard" : L"translation";
    mod.supportedGameVersions = {MajorMinor(sdk.Member(L"gameVersion"))};
    mod.id = ModIdFromSeed(mod.name + L"|" + mod.authorName + L"|" + DecimalText(GetTickCount64()) + L"|" +
        DecimalText(GetCurrentProcessId()));
    const Text& output = OptionValue(call, L"output-file");
    if (!output.empty()) {
        if (!EndsWithIgnoringCase(output, L".umod")) {
            return Failure(L"A Mod source package must end in .umod: " + output);
        }
        if (GetFileAttributesW(output.c_str()) != INVALID_FILE_ATTRIBUTES) {
            return Failure(L"The file already exists: " + output);
        }
        mod.package = NormalizePath(output);
    } else {
        mod.package = FreePath(sdk.modsFolder, FileNameFrom(mod.name), L".umod");
    }
    if (!CopyCover(sdk, cover, mod, error)) {
        return Failure(error);
    }
    if (!MakeFolders(ParentPath(mod.package)) ||
        !WriteWholeFile(mod.package, PackageDocument(mod, ParentPath(mod.package)))) {
        return Failure(L"Could not write the Mod source package " + mod.package);
    }
    if (!AddToLibrary(sdk, mod.package, error)) {
        return Failure(error);
    }
    return ModAnswer(mod);
}

CommandOutcome ImportSource(const ToolCall& call)
{
    SdkDocument sdk;
    Text error;
    if (!LoadSdk(OptionValue(call, L"sdk"), sdk, error)) {
        return Failure(error);
    }
    const Text source = NormalizePath(OptionValue(call, L"mod-file"));
    std::optional<ModRecord> mod = ReadPackage(source);
    if (!mod) {
        return Failure(L"Not an editable Korvane Mod source package: " + source);
    }
    for (const ModRecord& known : CatalogueOf(sdk)) {
        if (known.id == mod->id) {
            return Failure(L"The Mod " + mod->id + L" is already in the library: " + known.package);
        }
    }
    const Text cover = mod->coverPath;
    mod->coverPath.clear();
    if (IsRegularFile(cover) && !CopyCover(sdk, cover, *mod, error)) {
        return Failure(error);
    }
    const Text leaf = LastPathComponent(source);
    mod->package = FreePath(sdk.modsFolder, leaf.substr(0, leaf.size() - 5), L".umod");
    if (!MakeFolders(sdk.modsFolder) || !WriteWholeFile(mod->package, PackageDocument(*mod, sdk.modsFolder))) {
        return Failure(L"Could not copy the Mod source package into " + sdk.modsFolder);
    }
    if (!AddToLibrary(sdk, mod->package, error)) {
        return Failure(error);
    }
    return ModAnswer(*mod);
}

}  // namespace

CommandOutcome Failure(TextView message, DWORD exitCode)
{
    CommandOutcome outcome;
    outcome.exitCode = exitCode;
    outcome.err = TextToUtf8(message) + "\n";
    return outcome;
}

CommandOutcome RunToolCommand(const ToolCall& call, const ToolScenario& scenario)
{
    const std::optional<DWORD> scenarioExit = scenario.ExitCode();
    const bool failing = scenarioExit && *scenarioExit != 0;
    if (call.command == L"prepare") {
        return RunPrepare(call, scenario, failing);
    }
    if (const std::optional<Text> marker = TakeConflictMarker(scenario)) {
        CommandOutcome conflict = Failure(L"Mod source conflict: " + *marker + L". Run resolve-source to settle it.");
        conflict.settled = true;
        return conflict;
    }
    if (failing) {
        return {};
    }
    if (call.command == L"sdk-preview") {
        return SdkPreview(call);
    }
    if (call.command == L"list-sources") {
        return ListSources(call);
    }
    if (call.command == L"resolve-source") {
        return ResolveSource(call);
    }
    if (call.command == L"sdk-info") {
        return SdkInfo(call);
    }
    if (call.command == L"import-source") {
        return ImportSource(call);
    }
    return Create(call);
}

}  // namespace korvane::standins
