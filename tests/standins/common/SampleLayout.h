#pragma once
// Lays out a whole install as the launcher expects to find it in a shipped game:
//
//   <root>\Skyhaven\                         the game folder: Skyhaven.exe, Skyhaven.kvsdk,
//                                            SdkAssets\Icon.png, Mods\*.umod, Mods\Covers\*.png
//   <root>\Skyhaven\KorvaneEditor\           the editor install (editorRoot): KorvaneEditor.exe,
//                                            KorvaneEditor.receipt.json, Engine\...
//   <root>\Frontier\Frontier.kvsdk           optional: a stand-alone SDK exported for another
//                                            editor build, with Mods of its own
//
// The editor install holds UnrealEditor.exe with its module list (BuildId and the four authoring
// modules as files), both version files, the editor cultures en, es, ja, ko, pt-BR and zh-Hans,
// the authoring layout file, the authoring template and the tool in Engine\Korvane\Tools.

#include "common/SdkFormat.h"

#include "foundation/Text.h"

#include <cstdint>
#include <vector>

namespace korvane::standins {

struct SampleInstallOptions {
    Text root;                    // folder to fill; created when missing
    Text engineVersion = L"5.6";  // Major.Minor of the engine in the install
    Text launcherSource;          // files copied into the install
    Text toolSource;
    Text editorSource;
    size_t modCount = 4;          // Mods of the game's SDK, at most SampleModCount()
    std::uint32_t coverWidth = 96;
    std::uint32_t coverHeight = 54;
    bool mismatchedSdk = false;   // also lay out Frontier
};

struct SampleInstallPaths {
    Text gameDirectory;
    Text editorRoot;
    Text sdkPath;
    Text buildId;               // BuildId of the editor, which the game's SDK names
    Text mismatchedSdkPath;     // empty unless asked for
    std::vector<ModRecord> mods;  // the game SDK's Mods, in SDK order
};

size_t SampleModCount();
// The editor build id of an engine version, the same for every install of that version.
Text SampleBuildId(TextView engineVersion);

bool LayOutSampleInstall(const SampleInstallOptions& options, SampleInstallPaths& paths, Text& error);

}  // namespace korvane::standins
