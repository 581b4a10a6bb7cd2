#pragma once
// A complete install in a fresh scratch folder, laid out as a shipped game holds it:
//
//   Root()\Mod Games\Skyhaven\        GameDirectory(): Skyhaven.exe, SdkPath() = Skyhaven.kvsdk,
//                                     Mods\*.umod with PNG covers (ModCount() Mods, some named in
//                                     Chinese), Saved\Korvane\Workspaces\ once prepare ran
//   ...\Skyhaven\KorvaneEditor\       EditorRoot(): a copy of the built launcher, its receipt, and
//                                     Engine\ with the stand-in editor, its module list (BuildId()
//                                     and the four authoring modules as files), version files,
//                                     six editor cultures, the authoring layout and template, and
//                                     the stand-in tool in Engine\Korvane\Tools\KorvaneTool.
//
// The stand-ins inside it keep their call log and run record beside themselves, so each install
// sees only its own runs. Per-user files of its engine version (5.6 unless given) belong to
// sample installs: other tests keep their per-user files under other versions. The launcher's
// stored selection for this install is removed with it.

#include "TestSupport.h"

#include "foundation/Json.h"
#include "foundation/Text.h"

#include <vector>

namespace korvane::testing {

class SampleInstall {
public:
    explicit SampleInstall(TextView label = L"install", TextView engineVersion = L"5.6");
    ~SampleInstall();
    SampleInstall(const SampleInstall&) = delete;
    SampleInstall& operator=(const SampleInstall&) = delete;

    const Text& Root() const noexcept { return scratch_.Path(); }
    const Text& EditorRoot() const noexcept { return editorRoot_; }
    Text Launcher() const;   // EditorRoot()\KorvaneEditor.exe
    Text ToolPath() const;   // EditorRoot()\Engine\Korvane\Tools\KorvaneTool\KorvaneTool.exe
    Text EditorExe() const;  // EditorRoot()\Engine\Binaries\Win64\UnrealEditor.exe
    const Text& GameDirectory() const noexcept { return gameDirectory_; }
    const Text& SdkPath() const noexcept { return sdkPath_; }
    const Text& BuildId() const noexcept { return buildId_; }

    // The SDK's Mods in SDK order: the package (.umod), the id ("mod." and 32 hex digits) and
    // the name the catalogue shows.
    size_t ModCount() const noexcept { return modPackages_.size(); }
    const Text& ModPackage(size_t index) const { return modPackages_.at(index); }
    const Text& ModId(size_t index) const { return modIds_.at(index); }
    const Text& ModName(size_t index) const { return modNames_.at(index); }

    // Scenario files beside the stand-ins of this install (see the stand-ins' header comments);
    // an empty text removes the scenario.
    void SetToolScenario(TextView json) const;
    void SetEditorScenario(TextView json) const;

    // Every run of the tool so far, one parsed {"argv":[...],"cwd":...,"pid":N} per run.
    std::vector<JsonValue> ToolCalls() const;
    // Every run of the editor so far, one parsed record per run.
    std::vector<JsonValue> EditorRecords() const;

    // Where prepare builds workspaces for this game: GameDirectory()\Saved\Korvane\Workspaces.
    Text WorkspaceFolder() const;
    // The workspace of one Mod: WorkspaceFolder()\<ModId(index)>.
    Text Workspace(size_t index) const;

private:
    ScratchDirectory scratch_;
    Text gameDirectory_;
    Text editorRoot_;
    Text sdkPath_;
    Text buildId_;
    std::vector<Text> modPackages_;
    std::vector<Text> modIds_;
    std::vector<Text> modNames_;
};

// The lines of a JSON-lines file, each parsed; a line that is not JSON fails the test.
std::vector<JsonValue> ReadJsonLines(TextView path);

}  // namespace korvane::testing
