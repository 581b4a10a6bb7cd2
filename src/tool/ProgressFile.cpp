#include "tool/ProgressFile.h"

#include "context/UiLanguage.h"
#include "foundation/Json.h"
#include "startup/CacheStatus.h"
#include "tool/PrepareStage.h"

#include <stdexcept>

namespace korvane {
namespace {

// Only the value's text is compared, so a quoted "true" counts as well.
void ApplyCacheHit(const JsonValue& holder, std::int32_t& cacheHit)
{
    const Text& value = FindJsonMember(holder, L"cacheHit").text;
    if (value == L"true") {
        cacheHit = 1;
    } else if (value == L"false") {
        cacheHit = 0;
    }
}

// While the tool runs the cache is never verified yet.
Text RunningCacheSuffix(std::int32_t cacheHit)
{
    if (cacheHit < 0) {
        return {};
    }
    return Text(L" · ") + CacheStatusText(cacheHit, false, IsChineseUi());
}

}  // namespace

std::optional<Text> ProgressFileFollower::Take(BytesView content, std::int32_t& cacheHit)
{
    if (content.empty() || content == lastApplied_) {
        return std::nullopt;
    }
    JsonValue document;
    try {
        document = ParseJson(content);
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
    ApplyCacheHit(document, cacheHit);
    Text line = StageText(FindJsonMember(document, L"stage").text) + RunningCacheSuffix(cacheHit);
    lastApplied_.assign(content);
    return line;
}

void ApplyTimingReport(BytesView content, std::int32_t& cacheHit)
{
    JsonValue report;
    try {
        report = ParseJson(content);
    } catch (const std::runtime_error&) {
        return;
    }
    for (const JsonValue& row : FindJsonMember(report, L"stages").items) {
        ApplyCacheHit(row, cacheHit);
    }
}

}  // namespace korvane
