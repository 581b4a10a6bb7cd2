// Lays out the demo install in build\<preset>\sample-install from the launcher and the stand-ins
// of this build: the game Skyhaven holding the editor install, its SDK with a dozen Mods, and the
// stand-alone SDK Frontier exported for another editor build. The stand-ins are paced so that
// stages and log phases can be watched. An earlier sample install is replaced as a whole.
#include "common/SampleLayout.h"
#include "common/StandinSupport.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"

#include <filesystem>
#include <system_error>

int wmain()
{
    using namespace korvane;
    using namespace korvane::standins;
    const Text bin = ParentPath(ExecutableFolder());  // the program lies in bin\standins
    SampleInstallOptions options;
    options.root = JoinPath(ParentPath(bin), L"sample-install");
    options.launcherSource = JoinPath(bin, L"shipped\\KorvaneEditor.exe");  // as authors have it
    options.toolSource = JoinPath(bin, L"standins\\KorvaneTool.exe");
    options.editorSource = JoinPath(bin, L"standins\\UnrealEditor.exe");
    options.modCount = SampleModCount();
    options.coverWidth = 320;
    options.coverHeight = 180;
    options.mismatchedSdk = true;

    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(options.root), ignored);
    SampleInstallPaths paths;
    Text error;
    if (!LayOutSampleInstall(options, paths, error)) {
        WriteAll(GetStdHandle(STD_ERROR_HANDLE), TextToUtf8(L"sample install: " + error + L"\n"));
        return 1;
    }
    const bool paced =
        WriteWholeFile(JoinPath(paths.editorRoot, L"Engine\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.scenario.json"),
            "{\"prepare\":{\"stageDelayMs\":350},\"*\":{\"sleepMs\":150}}") &&
        WriteWholeFile(JoinPath(paths.editorRoot, L"Engine\\Binaries\\Win64\\UnrealEditor.scenario.json"),
            "{\"splashMs\":800,\"logPaceMs\":40,\"shaderLines\":1500}");
    WriteAll(GetStdHandle(STD_OUTPUT_HANDLE), TextToUtf8(L"sample install laid out in " + options.root + L"\n"));
    return paced ? 0 : 1;
}
