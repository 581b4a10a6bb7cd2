#include "startup/StartupMarkers.h"

#include "context/UiLanguage.h"

namespace korvane {
namespace {

struct StartupMarker {
    const wchar_t* contains;
    const wchar_t* alsoContains;  // null when one text suffices
    LocalizedText phase;
};

constexpr LocalizedText kEngineInitialized{
    L"Engine initialized; preparing the Editor interface…", L"引擎初始化完成，正在建立编辑界面…"};

// Tried from the top: a line with several markers takes the first row's line.
constexpr StartupMarker kStartupMarkers[] = {
    {L"automatic read-only policies without loading assets", nullptr,
        {L"Read-only protection registered; preparing to load the Mod…", L"只读保护已登记，准备载入 Mod…"}},
    {L"Standalone Mod project", L"mounted from",
        {L"Selected Mod mounted; preparing the editing environment…", L"所选 Mod 已挂载，正在建立编辑环境…"}},
    {L"Mod authoring policy active", nullptr,
        {L"Mod authoring protection active; preparing the interface…", L"Mod 创作保护已启用，正在建立界面…"}},
    {L"LogEngine: Initializing Engine", nullptr, {L"Initializing the Editor engine…", L"正在初始化编辑器引擎…"}},
    {L"(Engine Initialization) Total time", nullptr, kEngineInitialized},
    {L"Engine is initialized. Leaving FEngineLoop::Init", nullptr, kEngineInitialized},
    {L"LogShaderCompilers: Display: Compiling shader", nullptr,
        {L"Preparing rendering and shaders…", L"正在准备渲染与着色器…"}},
};

}  // namespace

Text MatchStartupMarker(TextView line, bool chinese)
{
    for (const StartupMarker& marker : kStartupMarkers) {
        if (line.find(marker.contains) == TextView::npos) {
            continue;
        }
        if (marker.alsoContains != nullptr && line.find(marker.alsoContains) == TextView::npos) {
            continue;
        }
        return marker.phase.In(chinese);
    }
    return {};
}

}  // namespace korvane
