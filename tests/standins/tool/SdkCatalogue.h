#pragma once
// An SDK file and the Mods that can be edited with it: the SDK's own list, then the Mods that
// were created or imported later (the Mod library), each only while its package exists.

#include "common/SdkFormat.h"

#include "foundation/Json.h"
#include "foundation/Text.h"

#include <vector>

namespace korvane::standins {

struct SdkDocument {
    Text path;        // normalised
    Text folder;
    Text modsFolder;  // full path
    JsonValue json;

    const Text& Member(TextView key) const { return FindJsonMember(json, key).text; }
    // The SDK asks for its editor build id to match, unless it says "false".
    bool RequiresBuildBinding() const { return Member(L"requiresEditorBuildBinding") != L"false"; }
};

bool LoadSdk(TextView path, SdkDocument& sdk, Text& error);

// SDK Mods, then library Mods, in that order, without Mods whose package is gone.
std::vector<ModRecord> CatalogueOf(const SdkDocument& sdk);

// Adds a package to the Mod library, rewriting the library file as a whole.
bool AddToLibrary(const SdkDocument& sdk, TextView package, Text& error);

// BuildId of the editor below `editorRoot`; empty when the module list cannot be read.
Text EditorBuildIdOf(TextView editorRoot);
// False with a message when the SDK was exported for another editor build.
bool CheckEditorBuild(const SdkDocument& sdk, TextView editorRoot, Text& error);

}  // namespace korvane::standins
