#pragma once
// The per-install memory of the last SDK and game: one selection.json in the user's local
// application data, in a folder named by a hash of the install's path. Only saved here; the
// host context judges what it reads back.

#include "foundation/Text.h"

#include <cstdint>

namespace korvane {

// 64-bit FNV-1a over the UTF-16 units of the normalised root with A to Z folded, so the same
// install reached in another letter case has the same key.
std::uint64_t InstallKey(TextView editorRoot);
// <LocalAppData>\Korvane\Launchers\<key>\selection.json; empty when the known folder cannot
// be had.
Text LaunchSelectionPath(TextView editorRoot);
// {"schemaVersion":1,"editorRoot":…,"environment":…,"gameDirectory":…,"sdkFile":…} in UTF-8.
Bytes ComposeLaunchSelection(TextView editorRoot, TextView environment, TextView gameDirectory, TextView sdk);
// Replaces the selection of the install at `editorRoot` through a sibling file. False, with
// nothing written, for an empty SDK, an SDK that is no file or does not belong to its packaged
// game, or when the store cannot be written. A picker preview never calls it. Callers may
// ignore the result.
bool SaveLaunchSelection(TextView editorRoot, TextView sdk, TextView gameDirectory);

}  // namespace korvane
