// The marker table of the editor's log, in both languages.
#include "startup/StartupMarkers.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(StartupMarkers, EachRowGivesItsLineInBothLanguages)
{
    struct Case {
        const wchar_t* line;
        const wchar_t* english;  // empty: no marker
        const wchar_t* chinese;
    };
    const Case cases[] = {
        {L"[2026.01.01-10.00.00:000][  0]LogKorvane: Registered automatic read-only policies without loading assets",
            L"Read-only protection registered; preparing to load the Mod…", L"只读保护已登记，准备载入 Mod…"},
        {L"LogKorvane: Standalone Mod project Foo mounted from D:/Mods/Foo",
            L"Selected Mod mounted; preparing the editing environment…", L"所选 Mod 已挂载，正在建立编辑环境…"},
        {L"LogKorvane: Mod authoring policy active", L"Mod authoring protection active; preparing the interface…",
            L"Mod 创作保护已启用，正在建立界面…"},
        {L"[2024.12.19-15.38.17:230][  0]LogEngine: Initializing Engine...", L"Initializing the Editor engine…",
            L"正在初始化编辑器引擎…"},
        {L"[2024.12.19-15.38.30:963][  0]LogLoad: (Engine Initialization) Total time: 36.29 seconds",
            L"Engine initialized; preparing the Editor interface…", L"引擎初始化完成，正在建立编辑界面…"},
        {L"LogInit: Display: Engine is initialized. Leaving FEngineLoop::Init()",
            L"Engine initialized; preparing the Editor interface…", L"引擎初始化完成，正在建立编辑界面…"},
        {L"LogShaderCompilers: Display: Compiling shader autogen file: ../AutogenShaderHeaders.ush",
            L"Preparing rendering and shaders…", L"正在准备渲染与着色器…"},
        // The first matching marker wins; the mounted-Mod marker needs both its texts in one line.
        {L"LogEngine: Initializing Engine and Mod authoring policy active",
            L"Mod authoring protection active; preparing the interface…", L"Mod 创作保护已启用，正在建立界面…"},
        {L"Standalone Mod project Foo; LogShaderCompilers: Display: Compiling shader x",
            L"Preparing rendering and shaders…", L"正在准备渲染与着色器…"},
        {L"mounted from D:/Mods", L"", L""},
        // With case, and the whole marker text.
        {L"logengine: initializing engine", L"", L""},
        {L"LogEngine: Initializing Engin", L"", L""},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(MatchStartupMarker(row.line, false), row.english) << row.line;
        EXPECT_EQ(MatchStartupMarker(row.line, true), row.chinese) << row.line;
    }
}

}  // namespace
}  // namespace korvane
