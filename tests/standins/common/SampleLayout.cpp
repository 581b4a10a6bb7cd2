#include "common/SampleLayout.h"

#include "common/Png.h"
#include "common/StandinSupport.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"

#include <windows.h>

namespace korvane::standins {
namespace {

struct CatalogueEntry {
    const wchar_t* key;
    const wchar_t* englishName;
    const wchar_t* chineseName;
    bool chineseShown;
    const wchar_t* authorName;
    const wchar_t* version;
    std::vector<Text> supportedGameVersions;
};

// A catalogue that looks like a real one: some Mods carry Chinese names, some only English.
const std::vector<CatalogueEntry>& Catalogue()
{
    static const std::vector<CatalogueEntry> entries = {
        {L"LanternFestival", L"Lantern Festival", L"\x706F\x7B3C\x8282", false, L"Mei Lin", L"1.2.0", {L"1.3", L"1.4"}},
        {L"CloudSeaAirship", L"Cloud Sea Airship", L"\x4E91\x6D77\x98DE\x821F", true, L"\x82CF\x6674", L"0.9.1", {L"1.4"}},
        {L"HarborLights", L"Harbor Lights", L"\x6E2F\x53E3\x706F\x706B", false, L"Tomas Reyes", L"2.0.0", {L"1.2", L"1.3", L"1.4"}},
        {L"CityOfFallenStars", L"City of Fallen Stars", L"\x661F\x843D\x4E4B\x57CE", true, L"Wang Hao", L"1.0.0", {L"1.4"}},
        {L"SkyforgeTools", L"Skyforge Tools", L"", false, L"Ada Brenner", L"3.1.4", {L"1.4"}},
        {L"WindmillValley", L"Windmill Valley", L"\x98CE\x8F66\x8C37", false, L"Kofi Mensah", L"1.1.0", {L"1.3", L"1.4"}},
        {L"DragonBoatRace", L"Dragon Boat Race", L"\x9F99\x821F\x7ADE\x6E21", true, L"\x9648\x4E00\x9E23", L"1.0.2", {L"1.4"}},
        {L"NightMarket", L"Night Market", L"\x591C\x5E02", false, L"Lena Vogt", L"0.4.0", {L"1.4"}},
        {L"CrystalCaverns", L"Crystal Caverns", L"", false, L"Priya Nair", L"2.2.0", {L"1.2", L"1.4"}},
        {L"OldBluestoneRoad", L"Old Bluestone Road", L"\x9752\x77F3\x53E4\x9053", true, L"\x674E\x9759", L"1.0.0", {L"1.4"}},
        {L"AuroraOutpost", L"Aurora Outpost", L"", false, L"Sven Olsen", L"1.5.0", {L"1.3"}},
        {L"TeaGardenTerraces", L"Tea Garden Terraces", L"\x8336\x56ED\x68AF\x7530", false, L"Hana Sato", L"1.0.1", {L"1.4"}},
    };
    return entries;
}

bool Put(TextView path, BytesView bytes, Text& error)
{
    if (!MakeFolders(ParentPath(path)) || !WriteWholeFile(path, bytes)) {
        error = L"cannot write " + Text(path);
        return false;
    }
    return true;
}

bool PutText(TextView path, TextView text, Text& error)
{
    return Put(path, TextToUtf8(text), error);
}

bool Copy(TextView from, TextView to, Text& error)
{
    if (!MakeFolders(ParentPath(to)) || !CopyFileW(Text(from).c_str(), Text(to).c_str(), FALSE)) {
        error = L"cannot copy " + Text(from) + L" to " + Text(to);
        return false;
    }
    return true;
}

Text VersionFile(TextView engineVersion, TextView buildId)
{
    const size_t dot = engineVersion.find(L'.');
    const Text major(engineVersion.substr(0, dot));
    const Text minor(dot == TextView::npos ? Text(L"0") : Text(engineVersion.substr(dot + 1)));
    Text text = L"{\n\t\"MajorVersion\": " + major + L",\n\t\"MinorVersion\": " + minor +
        L",\n\t\"PatchVersion\": 1,\n\t\"Changelist\": 0,\n\t\"CompatibleChangelist\": 0,\n"
        L"\t\"IsLicenseeVersion\": 0,\n\t\"IsPromotedBuild\": 0,\n\t\"BranchName\": \"++UE5+Release-" +
        Text(engineVersion) + L"\"";
    if (!buildId.empty()) {
        text += L",\n\t\"BuildId\": \"" + Text(buildId) + L"\"";
    }
    return text + L"\n}\n";
}

// Mods of one SDK: packages and covers below `sdkFolder`\Mods, with ids drawn from `idPrefix`.
bool WriteMods(TextView sdkFolder, TextView idPrefix, size_t first, size_t count, const SampleInstallOptions& options,
    std::vector<ModRecord>& mods, Text& error)
{
    const auto& entries = Catalogue();
    for (size_t index = first; index < first + count && index < entries.size(); ++index) {
        const CatalogueEntry& entry = entries[index];
        ModRecord mod;
        mod.id = ModIdFromSeed(Text(idPrefix) + entry.key);
        mod.englishName = entry.englishName;
        mod.chineseName = entry.chineseName;
        mod.name = entry.chineseShown ? mod.chineseName : mod.englishName;
        mod.authorName = entry.authorName;
        mod.version = entry.version;
        mod.supportedGameVersions = entry.supportedGameVersions;
        const Text modsFolder = JoinPath(sdkFolder, L"Mods");
        mod.package = JoinPath(modsFolder, Text(entry.key) + L".umod");
        mod.coverPath = JoinPath(modsFolder, L"Covers\\" + Text(entry.key) + L".png");
        if (!Put(mod.coverPath, MakeCoverPng(options.coverWidth, options.coverHeight, static_cast<std::uint32_t>(index)),
                error) ||
            !Put(mod.package, PackageDocument(mod, modsFolder), error)) {
            return false;
        }
        mods.push_back(std::move(mod));
    }
    return true;
}

bool WriteSdk(TextView sdkPath, TextView gameId, TextView displayName, TextView chineseName, TextView gameVersion,
    TextView engineBuild, TextView buildId, const std::vector<ModRecord>& mods, Text& error)
{
    const Text folder = ParentPath(sdkPath);
    if (!Put(JoinPath(folder, L"SdkAssets\\Icon.png"), MakeCoverPng(64, 64, static_cast<std::uint32_t>(gameId.size())),
            error)) {
        return false;
    }
    Text text = L"{\n  \"schemaVersion\": 1,\n  \"gameId\": " + QuoteJsonText(gameId) +
        L",\n  \"gameInfo\": {\"displayName\": " + QuoteJsonText(displayName) +
        L", \"localizedDisplayNames\": {\"zh-Hans\": " + QuoteJsonText(chineseName) + L"}},\n  \"gameVersion\": " +
        QuoteJsonText(gameVersion) + L",\n  \"engineVersion\": " +
        QuoteJsonText(Text(engineBuild) + L"-0+++UE5+Release-" + MajorMinor(engineBuild)) +
        L",\n  \"editorBuildId\": " + QuoteJsonText(buildId) +
        L",\n  \"requiresEditorBuildBinding\": true,\n  \"iconPath\": \"SdkAssets/Icon.png\",\n"
        L"  \"modsFolder\": \"Mods\",\n  \"mods\": [";
    for (size_t index = 0; index < mods.size(); ++index) {
        text += (index == 0 ? L"\n    " : L",\n    ") + SdkModEntry(mods[index], folder);
    }
    text += L"\n  ]\n}\n";
    return PutText(sdkPath, text, error);
}

bool WriteEditorInstall(const SampleInstallOptions& options, const SampleInstallPaths& paths, Text& error)
{
    const Text& root = paths.editorRoot;
    const Text win64 = JoinPath(root, L"Engine\\Binaries\\Win64");
    const Text engineBuild = options.engineVersion + L".1";
    static const wchar_t* const authoringModules[] = {L"KorvaneRuntime", L"KorvaneUI", L"KorvaneBridge", L"KorvaneAuthoring"};
    static const wchar_t* const engineModules[] = {L"Core", L"CoreUObject", L"Engine", L"UnrealEd", L"Slate"};
    Text modules = L"{\n\t\"BuildId\": \"" + paths.buildId + L"\",\n\t\"Modules\": \n\t{";
    bool firstModule = true;
    auto addModule = [&](const wchar_t* name) {
        const Text file = L"UnrealEditor-" + Text(name) + L".dll";
        modules += (firstModule ? L"\n\t\t\"" : L",\n\t\t\"") + Text(name) + L"\": \"" + file + L"\"";
        firstModule = false;
        return Put(JoinPath(win64, file), "MZ stand-in module", error);
    };
    for (const wchar_t* name : engineModules) {
        if (!addModule(name)) {
            return false;
        }
    }
    for (const wchar_t* name : authoringModules) {
        if (!addModule(name)) {
            return false;
        }
    }
    modules += L"\n\t}\n}\n";

    static const wchar_t* const cultures[] = {L"en", L"es", L"ja", L"ko", L"pt-BR", L"zh-Hans"};
    for (const wchar_t* culture : cultures) {
        const Text locres = JoinPath(root, L"Engine\\Content\\Localization\\Editor\\" + Text(culture) + L"\\Editor.locres");
        if (!Put(locres, Bytes("\x0E\x14\x74\x75\x67\x4A\x03\xFC\x4A\x15\x90\x9D\xC3\x37\x7F\x1B\x02", 17), error)) {
            return false;
        }
    }
    return Copy(options.launcherSource, JoinPath(root, L"KorvaneEditor.exe"), error) &&
        Copy(options.editorSource, JoinPath(win64, L"UnrealEditor.exe"), error) &&
        Copy(options.toolSource, JoinPath(root, L"Engine\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe"), error) &&
        PutText(JoinPath(win64, L"UnrealEditor.modules"), modules, error) &&
        PutText(JoinPath(win64, L"UnrealEditor.version"), VersionFile(options.engineVersion, paths.buildId), error) &&
        PutText(JoinPath(root, L"Engine\\Build\\Build.version"), VersionFile(options.engineVersion, L""), error) &&
        PutText(JoinPath(root, L"Engine\\Korvane\\AuthoringLayout.json"),
            L"{\n  \"schemaVersion\": 1,\n  \"layout\": \"builtin\",\n  \"resourceRoot\": \"Engine/Korvane\",\n"
            L"  \"modules\": [\"KorvaneRuntime\", \"KorvaneUI\", \"KorvaneBridge\", \"KorvaneAuthoring\"]\n}\n",
            error) &&
        PutText(JoinPath(root, L"Engine\\Korvane\\Resources\\AuthoringTemplate\\KorvaneSDK.uproject"),
            L"{\n\t\"FileVersion\": 3,\n\t\"EngineAssociation\": \"" + options.engineVersion +
                L"\",\n\t\"Category\": \"\",\n\t\"Description\": \"Korvane Mod authoring workspace\",\n"
                L"\t\"Plugins\": [\n\t\t{\n\t\t\t\"Name\": \"Korvane\",\n\t\t\t\"Enabled\": true\n\t\t}\n\t]\n}\n",
            error) &&
        PutText(JoinPath(root, L"KorvaneEditor.receipt.json"),
            L"{\"schemaVersion\":1,\"product\":\"Korvane Mod Editor\",\"engineBuild\":\"" + engineBuild +
                L"\",\"editorBuildId\":\"" + paths.buildId + L"\",\"channel\":\"sample\"}",
            error);
}

}  // namespace

size_t SampleModCount()
{
    return Catalogue().size();
}

Text SampleBuildId(TextView engineVersion)
{
    const Text hex = ModIdFromSeed(L"editor-build-" + Text(engineVersion)).substr(4);
    return hex.substr(0, 8) + L"-" + hex.substr(8, 4) + L"-" + hex.substr(12, 4) + L"-" + hex.substr(16, 4) + L"-" +
        hex.substr(20, 12);
}

bool LayOutSampleInstall(const SampleInstallOptions& options, SampleInstallPaths& paths, Text& error)
{
    const Text root = NormalizePath(options.root);
    paths = {};
    paths.gameDirectory = JoinPath(root, L"Skyhaven");
    paths.editorRoot = JoinPath(paths.gameDirectory, L"KorvaneEditor");
    paths.sdkPath = JoinPath(paths.gameDirectory, L"Skyhaven.kvsdk");
    paths.buildId = SampleBuildId(options.engineVersion);
    const Text engineBuild = options.engineVersion + L".1";
    if (!WriteEditorInstall(options, paths, error) ||
        !Put(JoinPath(paths.gameDirectory, L"Skyhaven.exe"), "MZ stand-in game", error) ||
        !WriteMods(paths.gameDirectory, L"skyhaven/", 0, options.modCount, options, paths.mods, error) ||
        !WriteSdk(paths.sdkPath, L"skyhaven", L"Skyhaven", L"\x5929\x7A7A\x6E2F", L"1.4.2", engineBuild, paths.buildId,
            paths.mods, error)) {
        return false;
    }
    if (options.mismatchedSdk) {
        const Text frontier = JoinPath(root, L"Frontier");
        std::vector<ModRecord> mods;
        paths.mismatchedSdkPath = JoinPath(frontier, L"Frontier.kvsdk");
        if (!WriteMods(frontier, L"frontier/", SampleModCount() - 3, 3, options, mods, error) ||
            !WriteSdk(paths.mismatchedSdkPath, L"frontier", L"Frontier", L"\x8FB9\x5883", L"0.8.0", engineBuild,
                SampleBuildId(L"older-" + options.engineVersion), mods, error)) {
            return false;
        }
    }
    return true;
}

}  // namespace korvane::standins
