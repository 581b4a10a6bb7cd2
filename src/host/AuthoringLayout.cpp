#include "host/AuthoringLayout.h"

#include "foundation/Files.h"
#include "foundation/Json.h"
#include "foundation/Paths.h"

#include <exception>

namespace korvane {
namespace {

constexpr TextView kLayoutFile = L"Engine\\Korvane\\AuthoringLayout.json";
constexpr TextView kModuleListFile = L"Engine\\Binaries\\Win64\\UnrealEditor.modules";
constexpr TextView kModuleFolder = L"Engine\\Binaries\\Win64\\";
constexpr TextView kAuthoringTemplate = L"Engine\\Korvane\\Resources\\AuthoringTemplate\\KorvaneSDK.uproject";
constexpr TextView kBuiltinTool = L"Engine\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe";
constexpr TextView kPluginTool = L"Plugins\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe";

// The layout file promises exactly these modules, in this order.
constexpr TextView kAuthoringModules[] = {L"KorvaneRuntime", L"KorvaneUI", L"KorvaneBridge", L"KorvaneAuthoring"};

// A module file name must stay inside the engine's binaries folder: a bare name only.
bool IsBareFileName(TextView name) noexcept
{
    return !name.empty() && name.find_first_of(L"/\\:") == TextView::npos;
}

// Every test of the built-in layout, in order; the first that fails decides. Throws what the
// JSON reader throws.
bool IsBuiltinLayoutWhole(TextView editorRoot)
{
    const JsonValue layout = ParseJson(ReadWholeFile(JoinPath(editorRoot, kLayoutFile), kSmallFileLimit));
    if (FindJsonMember(layout, L"schemaVersion").text != L"1" || FindJsonMember(layout, L"layout").text != L"builtin" ||
        FindJsonMember(layout, L"resourceRoot").text != L"Engine/Korvane") {
        return false;
    }
    const std::vector<JsonValue>& modules = FindJsonMember(layout, L"modules").items;
    if (modules.size() != std::size(kAuthoringModules)) {
        return false;
    }

    const JsonValue moduleList = ParseJson(ReadWholeFile(JoinPath(editorRoot, kModuleListFile), kLargeFileLimit));
    if (FindJsonMember(moduleList, L"BuildId").text.empty()) {
        return false;
    }
    const JsonValue& moduleFiles = FindJsonMember(moduleList, L"Modules");
    for (size_t index = 0; index < std::size(kAuthoringModules); ++index) {
        if (modules[index].text != kAuthoringModules[index]) {
            return false;
        }
        const Text& fileName = FindJsonMember(moduleFiles, kAuthoringModules[index]).text;
        if (!IsBareFileName(fileName) || !IsRegularFile(JoinPath(editorRoot, Text(kModuleFolder) + fileName))) {
            return false;
        }
    }
    return IsRegularFile(JoinPath(editorRoot, kAuthoringTemplate));
}

}  // namespace

Text ResolveToolPath(TextView editorRoot)
{
    if (!IsRegularFile(JoinPath(editorRoot, kLayoutFile))) {
        return JoinPath(editorRoot, kPluginTool);
    }
    try {
        if (!IsBuiltinLayoutWhole(editorRoot)) {
            return {};
        }
    } catch (const std::exception&) {
        return {};
    }
    return JoinPath(editorRoot, kBuiltinTool);
}

}  // namespace korvane
