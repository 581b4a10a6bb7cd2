#include "InstallTree.h"

#include "TestSupport.h"

#include "foundation/Paths.h"

namespace korvane::testing {

void WriteEditorVersionFile(TextView install, TextView version)
{
    const size_t dot = version.find(L'.');
    const Bytes major = TextToUtf8(version.substr(0, dot));
    const Bytes minor = TextToUtf8(version.substr(dot + 1));
    // Laid out as the engine writes it, with the patch number and build fields around.
    WriteFileBytes(JoinPath(install, L"Engine\\Binaries\\Win64\\UnrealEditor.version"),
        "{\n\t\"MajorVersion\": " + major + ",\n\t\"MinorVersion\": " + minor +
            ",\n\t\"PatchVersion\": 1,\n\t\"Changelist\": 0,\n\t\"CompatibleChangelist\": 0,\n"
            "\t\"IsLicenseeVersion\": 1,\n\t\"IsPromotedBuild\": 0,\n\t\"BranchName\": \"\"\n}");
}

void WriteEditorCultures(TextView install, std::initializer_list<const wchar_t*> codes)
{
    const Text cultures = JoinPath(install, L"Engine\\Content\\Localization\\Editor");
    MakeDirectories(cultures);
    for (const wchar_t* code : codes) {
        WriteFileBytes(JoinPath(JoinPath(cultures, code), L"Editor.locres"), "LOCRES");
    }
}

void MakeEditorInstall(TextView install, TextView version, std::initializer_list<const wchar_t*> codes)
{
    WriteEditorCultures(install, codes);
    if (!version.empty()) {
        WriteEditorVersionFile(install, version);
    }
}

}  // namespace korvane::testing
