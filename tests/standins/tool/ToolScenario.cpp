#include "tool/ToolScenario.h"

#include "common/StandinSupport.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"

#include <cwchar>

namespace korvane::standins {

bool ToolScenario::Has(TextView key) const
{
    return entry.members.find(key) != entry.members.end();
}

const Text& ToolScenario::TextOf(TextView key) const
{
    return FindJsonMember(entry, key).text;
}

bool ToolScenario::IsTrue(TextView key) const
{
    return JsonTrue(entry, key);
}

std::uint64_t ToolScenario::Number(TextView key, std::uint64_t fallback) const
{
    return JsonUnsigned(entry, key, fallback);
}

std::optional<DWORD> ToolScenario::ExitCode() const
{
    if (!Has(L"exitCode")) {
        return std::nullopt;
    }
    return static_cast<DWORD>(Number(L"exitCode", 1));
}

std::optional<int> ToolScenario::CacheHit() const
{
    if (!Has(L"cacheHit")) {
        return std::nullopt;
    }
    const long value = std::wcstol(TextOf(L"cacheHit").c_str(), nullptr, 10);
    return value > 0 ? 1 : value == 0 ? 0 : -1;
}

ToolScenario LoadToolScenario(TextView command, TextView sdkPath)
{
    std::vector<Text> candidates;
    if (const std::optional<Text> named = EnvironmentValue(L"KORVANE_STANDIN_TOOL_SCENARIO"); named && !named->empty()) {
        candidates.push_back(*named);
    }
    if (!sdkPath.empty()) {
        candidates.push_back(Text(sdkPath) + L".scenario.json");
    }
    candidates.push_back(JoinPath(ExecutableFolder(), L"KorvaneTool.scenario.json"));

    ToolScenario scenario;
    for (const Text& candidate : candidates) {
        if (!IsRegularFile(candidate)) {
            continue;
        }
        scenario.path = candidate;
        if (const std::optional<JsonValue> document = ReadJsonFile(candidate)) {
            const JsonValue& own = FindJsonMember(*document, command);
            scenario.entry = own.kind == JsonKind::Object ? own : FindJsonMember(*document, L"*");
        }
        break;
    }
    return scenario;
}

std::optional<Bytes> ScenarioStream(const ToolScenario& scenario, TextView stream)
{
    const Text mibKey = Text(stream) + L"MiB";
    const bool invalid = scenario.TextOf(L"invalidUtf8") == stream;
    if (!scenario.Has(stream) && !scenario.Has(mibKey) && !invalid) {
        return std::nullopt;
    }
    Bytes bytes = TextToUtf8(scenario.TextOf(stream));
    const std::uint64_t mib = scenario.Number(mibKey, 0);
    if (mib > 0) {
        // Lines of 64 bytes, 16384 of them per MiB.
        const Bytes line = "LogKorvaneTool: filler line of a very talkative tool run ......\n";
        bytes.reserve(bytes.size() + mib * 1048576);
        for (std::uint64_t index = 0; index < mib * 16384; ++index) {
            bytes += line;
        }
    }
    if (invalid) {
        bytes += "KorvaneTool: broken \xC3\x28 text \xFF\xFE\n";
    }
    return bytes;
}

std::optional<Text> TakeConflictMarker(const ToolScenario& scenario)
{
    const Text& value = scenario.TextOf(L"conflictOnce");
    if (scenario.path.empty() || value.empty() || value == L"false") {
        return std::nullopt;
    }
    // CREATE_NEW makes exactly one run the one that reports.
    const Text state = scenario.path + L".conflict-state";
    UniqueFileHandle file(CreateFileW(state.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return std::nullopt;
    }
    return value == L"KV3648" ? Text(L"KV3648: source changed outside the Editor")
                              : Text(L"KV3651: source changed while a workspace exists");
}

}  // namespace korvane::standins
