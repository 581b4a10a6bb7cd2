#include "editor/EditorScenario.h"

#include "common/StandinSupport.h"

#include "foundation/Paths.h"

namespace korvane::standins {

EditorScenario LoadEditorScenario()
{
    EditorScenario scenario;
    const std::optional<Text> named = EnvironmentValue(L"KORVANE_STANDIN_EDITOR_SCENARIO");
    const Text path =
        named && !named->empty() ? *named : JoinPath(ExecutableFolder(), L"UnrealEditor.scenario.json");
    const std::optional<JsonValue> document = ReadJsonFile(path);
    if (!document) {
        return scenario;
    }
    if (const Text& mode = FindJsonMember(*document, L"mode").text; !mode.empty()) {
        scenario.mode = mode;
    }
    scenario.exitCodeGiven = !FindJsonMember(*document, L"exitCode").text.empty();
    scenario.exitCode = static_cast<DWORD>(JsonUnsigned(*document, L"exitCode", 0));
    scenario.runMs = static_cast<DWORD>(JsonUnsigned(*document, L"runMs", scenario.runMs));
    scenario.splashMs = static_cast<DWORD>(JsonUnsigned(*document, L"splashMs", scenario.splashMs));
    scenario.logPaceMs = static_cast<DWORD>(JsonUnsigned(*document, L"logPaceMs", scenario.logPaceMs));
    scenario.shaderLines = static_cast<std::uint32_t>(JsonUnsigned(*document, L"shaderLines", scenario.shaderLines));
    scenario.splitLine = JsonTrue(*document, L"splitLine");
    for (const JsonValue& item : FindJsonMember(*document, L"launcherArguments").items) {
        scenario.launcherArguments.push_back(item.text);
    }
    return scenario;
}

}  // namespace korvane::standins
