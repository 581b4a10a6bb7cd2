// DLL planting: the launcher sits in a game's folder, which users can often write to, so a DLL
// put beside it under a system DLL's name must never be loaded, in any run mode.
#include "SampleInstall.h"
#include "TestSupport.h"

#include "foundation/Paths.h"

#include <gtest/gtest.h>

#include <vector>

namespace korvane {
namespace {

using testing::SampleInstall;

// System DLLs outside the KnownDLLs that a picker window with common controls, tooltips, file
// dialogs and GDI+ loads: the search would look beside the launcher first.
constexpr const wchar_t* kPlantedNames[] = {L"gdiplus", L"uxtheme", L"dwmapi", L"comctl32"};

// Makes Wine prefer a native copy of the planted DLLs in every KorvaneEditor.exe it starts,
// for the guard's lifetime: by default Wine takes its built-in DLL whatever lies beside the
// program. Wine's per-program registry key is used because Wine 8 takes WINEDLLOVERRIDES from
// the Unix environment a process inherits, not from the block a Windows parent passes on.
// Launchers of other test programs meanwhile find only the system's copies, so for them
// nothing changes.
class PreferNativeInLaunchers {
public:
    PreferNativeInLaunchers()
    {
        for (const wchar_t* name : kPlantedNames) {
            const LSTATUS status =
                RegSetKeyValueW(HKEY_CURRENT_USER, kOverrides, name, REG_SZ, kNativeFirst, sizeof(kNativeFirst));
            EXPECT_EQ(status, ERROR_SUCCESS) << "cannot set the DLL override";
        }
    }
    ~PreferNativeInLaunchers()
    {
        RegDeleteKeyW(HKEY_CURRENT_USER, kOverrides);
        RegDeleteKeyW(HKEY_CURRENT_USER, kProgram);  // only while it holds nothing else
    }
private:
    static constexpr wchar_t kProgram[] = L"Software\\Wine\\AppDefaults\\KorvaneEditor.exe";
    static constexpr wchar_t kOverrides[] = L"Software\\Wine\\AppDefaults\\KorvaneEditor.exe\\DllOverrides";
    static constexpr wchar_t kNativeFirst[] = L"native,builtin";
};

TEST(DllSearch, NoRunModeLoadsADllPlantedBesideTheLauncher)
{
    SampleInstall install(L"dll-search");
    install.SetEditorScenario(LR"({"mode":"normal","runMs":200})");
    for (const wchar_t* name : kPlantedNames) {
        testing::CopyFileTo(JoinPath(testing::BinaryDirectory(), L"PlantedDll.dll"),
            JoinPath(install.EditorRoot(), Text(name) + L".dll"));
    }
    testing::ScratchDirectory reports(L"dll-search-report");
    const Text fixture = reports / L"fixture.json";
    testing::WriteFileText(fixture, LR"({"mods":[]})");
    const PreferNativeInLaunchers preferNative;

    // The control: a program of the launcher's name without its guard takes every plant, so a
    // load by the launcher below could be seen at all.
    const Text probeFolder = reports / L"probe";
    testing::MakeDirectories(probeFolder);
    const Text probe = JoinPath(probeFolder, L"KorvaneEditor.exe");
    testing::CopyFileTo(JoinPath(testing::BinaryDirectory(), L"DllProbe.exe"), probe);
    std::vector<Text> dlls;
    for (const wchar_t* name : kPlantedNames) {
        dlls.push_back(Text(name) + L".dll");
        testing::CopyFileTo(JoinPath(testing::BinaryDirectory(), L"PlantedDll.dll"), JoinPath(probeFolder, dlls.back()));
    }
    EXPECT_EQ(testing::RunProcess(probe, dlls, {.currentDirectory = probeFolder, .timeoutMs = 30000}).exitCode, 0u);
    for (const Text& dll : dlls) {
        EXPECT_TRUE(testing::FileExists(JoinPath(probeFolder, dll + L".loaded")))
            << "a plant nothing guards against was not taken: " << TextToUtf8(dll);
    }

    // The interactive start opens the same window as the picker preview and stays open for its
    // user, so the shown preview stands for it; the hidden one with a picture adds the PNG encoder.
    const std::pair<const char*, std::vector<Text>> rows[] = {
        {"resolve host context", {L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + (reports / L"host.json")}},
        {"launcher check", {L"-KorvaneLauncherCheck"}},
        {"instance check", {L"-KorvaneInstanceCheck"}},
        {"start-up preview", {L"-KorvaneStartupPreview", L"-KorvaneStartupPreviewMs=250"}},
        {"picker preview", {L"-KorvanePickerPreview", L"-KorvanePickerPreviewMs=250"}},
        {"picker picture", {L"-KorvanePickerPreview", L"-KorvanePickerPreviewHidden", L"-KorvanePickerPreviewMs=250",
                               L"-KorvanePickerFixture=" + fixture, L"-KorvanePickerReport=" + (reports / L"picker.json"),
                               L"-KorvanePickerSnapshot=" + (reports / L"picker.png")}},
        {"direct edit", {L"-sdk=" + install.SdkPath(), L"-KorvaneSelectedMod=" + install.ModId(0)}},
    };
    // A launcher that loaded a planted DLL may hang in Wine's crash dialog.
    const testing::ProcessOptions options{.currentDirectory = install.EditorRoot(), .timeoutMs = 30000, .hidden = false};
    for (const auto& [mode, arguments] : rows) {
        const testing::ProcessResult result = testing::RunProcess(install.Launcher(), arguments, options);
        EXPECT_EQ(result.exitCode, 0u) << mode;
        for (const wchar_t* name : kPlantedNames) {
            const Text marker = JoinPath(install.EditorRoot(), Text(name) + L".dll.loaded");
            EXPECT_FALSE(testing::FileExists(marker)) << mode << " loaded the planted " << TextToUtf8(name);
            DeleteFileW(marker.c_str());  // so that each mode answers for itself
        }
    }
    EXPECT_TRUE(testing::FileExists(reports / L"picker.png")) << "the picture was taken, encoder and all";
}

}  // namespace
}  // namespace korvane
