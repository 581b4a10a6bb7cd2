#pragma once
// The stand-in tool's own file formats, shared with the code that lays out sample installs.
//
// SDK file (.kvsdk), one JSON object; relative paths are relative to the SDK's folder:
//   {"schemaVersion":1, "gameId":"skyhaven",
//    "gameInfo":{"displayName":"Skyhaven","localizedDisplayNames":{"zh-Hans":"天空港"}},
//    "gameVersion":"1.4.2", "engineVersion":"5.6.1-...", "editorBuildId":"...",
//    "requiresEditorBuildBinding":true, "iconPath":"SdkAssets/Icon.png", "modsFolder":"Mods",
//    "mods":[{"id":"mod.<32 hex>", "name":"...", "localizedNames":{"en":"...","zh-Hans":"..."},
//             "authorName":"...", "version":"1.0.0", "supportedGameVersions":["1.4"],
//             "package":"Mods/X.umod", "coverPath":"Mods/Covers/X.png"}]}
// Mod source package (.umod), one JSON object describing the Mod, with "format":"KorvaneModSource"
// and the same Mod keys as above ("coverPath" relative to the package's folder), plus "kind"
// ("standard" or "translation").
// Mod library (<modsFolder>\Library.json): {"mods":["<full path of a package>", ...]}, the Mods
// that create, translations create and import-source added after the SDK was exported.

#include "foundation/Json.h"
#include "foundation/Text.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace korvane::standins {

struct ModRecord {
    Text id;
    Text name;
    Text englishName;
    Text chineseName;
    Text authorName;
    Text version;
    std::vector<Text> supportedGameVersions;
    Text package;    // full path
    Text coverPath;  // full path, or empty
    Text kind = L"standard";
};

// "mod." and 32 lower-case hex digits made from a seed text; the same seed gives the same id.
Text ModIdFromSeed(TextView seed);
bool IsModId(TextView text);

// The package document for a Mod; its cover is written relative to `packageFolder` when it
// lies below it.
Bytes PackageDocument(const ModRecord& mod, TextView packageFolder);
// A package read back; nullopt when it is not a Mod source package.
std::optional<ModRecord> ReadPackage(TextView packagePath);

// The JSON object of one Mod as the SDK lists it, with paths relative to `sdkFolder`.
Text SdkModEntry(const ModRecord& mod, TextView sdkFolder);

// A path from a document: relative ones are taken from `base`; `/` becomes `\`.
Text ResolveDocumentPath(TextView base, TextView path);
// `path` relative to `base` with `/`, when it lies below it; else the full path.
Text RelativeDocumentPath(TextView base, TextView path);

// A version text down to Major.Minor: "5.6.1-123" gives "5.6".
Text MajorMinor(TextView version);

}  // namespace korvane::standins
