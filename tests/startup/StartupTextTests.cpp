// The markers of the editor's log, found in lines as real editors write them.
#include "startup/StartupMarkers.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(StartupMarkers, EachMarkerGivesItsLine)
{
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {  // the line, and its phase or none
        {L"[2026.01.01-10.00.00:000][  0]LogKorvane: Registered automatic read-only policies without loading assets",
            L"Read-only protection registered; preparing to load the Mod…"},
        {L"LogKorvane: Standalone Mod project Foo mounted from D:/Mods/Foo",
            L"Selected Mod mounted; preparing the editing environment…"},
        {L"LogKorvane: Mod authoring policy active", L"Mod authoring protection active; preparing the interface…"},
        {L"[2024.12.19-15.38.17:230][  0]LogEngine: Initializing Engine...", L"Initializing the Editor engine…"},
        {L"[2024.12.19-15.38.30:963][  0]LogLoad: (Engine Initialization) Total time: 36.29 seconds",
            L"Engine initialized; preparing the Editor interface…"},
        {L"LogInit: Display: Engine is initialized. Leaving FEngineLoop::Init()",
            L"Engine initialized; preparing the Editor interface…"},
        {L"LogShaderCompilers: Display: Compiling shader autogen file: ../AutogenShaderHeaders.ush",
            L"Preparing rendering and shaders…"},
        // The first matching marker wins; the mounted-Mod marker needs both its texts in one line.
        {L"LogEngine: Initializing Engine and Mod authoring policy active",
            L"Mod authoring protection active; preparing the interface…"},
        {L"Standalone Mod project Foo; LogShaderCompilers: Display: Compiling shader x", L"Preparing rendering and shaders…"},
        {L"mounted from D:/Mods", L""},
        // With case, and the whole marker text.
        {L"logengine: initializing engine", L""},
        {L"LogEngine: Initializing Engin", L""},
    };
    for (const auto& [line, phase] : cases) {
        EXPECT_EQ(MatchStartupMarker(line, false), phase) << line;
    }
    EXPECT_EQ(MatchStartupMarker(L"LogKorvane: Mod authoring policy active", true), L"Mod 创作保护已启用，正在建立界面…");
}

}  // namespace
}  // namespace korvane
