#include "startup/StartupReport.h"

#include "foundation/UniqueResource.h"
#include "startup/StartupPaint.h"

namespace korvane {
namespace {

// One member as "key":value and the comma before the next one.
void AppendMember(Text& json, const wchar_t* key, TextView value)
{
    json += L'"';
    json += key;
    json += L"\":";
    json += value;
    json += L',';
}

void AppendNumber(Text& json, const wchar_t* key, std::uint64_t value)
{
    AppendMember(json, key, DecimalText(value));
}

void AppendString(Text& json, const wchar_t* key, TextView value)
{
    AppendMember(json, key, QuoteJsonText(value));
}

void AppendBool(Text& json, const wchar_t* key, bool value)
{
    AppendMember(json, key, value ? L"true" : L"false");
}

}  // namespace

Bytes ComposeStartupReport(const StartupSnapshot& snapshot)
{
    Text json = L"{";
    AppendNumber(json, L"firstPaintMs", snapshot.firstPaintMs == 0 ? 0 : snapshot.firstPaintMs - 1);
    AppendNumber(json, L"assetLoadMs", snapshot.assetLoadMs);
    AppendNumber(json, L"windowCreateMs", snapshot.windowCreateMs);
    AppendNumber(json, L"firstDrawMs", snapshot.firstDrawMs);
    AppendNumber(json, L"paintCount", snapshot.paintCount);
    AppendNumber(json, L"dpi", snapshot.dpi);
    AppendString(json, L"language", snapshot.chinese ? L"zh-Hans" : L"en");
    AppendString(json, L"editorCulture", snapshot.editorCulture);
    AppendNumber(json, L"width", static_cast<std::uint64_t>(ScaleForDpi(kStartupCardWidth, snapshot.dpi)));
    AppendNumber(json, L"height", static_cast<std::uint64_t>(ScaleForDpi(kStartupCardHeight, snapshot.dpi)));
    AppendBool(json, L"backgroundLoaded", snapshot.backgroundDrawn);
    AppendBool(json, L"logoLoaded", snapshot.logoLoaded);
    AppendString(json, L"phase", snapshot.phaseText);
    json += L"\"observedPhases\":[";
    for (std::size_t index = 0; index < snapshot.observedPhases.size(); ++index) {
        if (index != 0) {
            json += L',';
        }
        json += QuoteJsonText(snapshot.observedPhases[index]);
    }
    json += L"],";
    AppendString(json, L"cacheStatus", snapshot.cacheStatusText);
    AppendMember(json, L"cacheHit", snapshot.cacheHit < 0 ? L"null" : (snapshot.cacheHit == 0 ? L"false" : L"true"));
    json += L"\"cacheVerified\":";
    json += snapshot.cacheVerified ? L"true" : L"false";
    json += L'}';
    return TextToUtf8(json);
}

void WriteStartupReport(StartupMonitor& monitor, TextView path)
{
    if (path.empty()) {
        return;
    }
    const Bytes report = ComposeStartupReport(monitor.Snapshot());
    const Text target(path);
    const UniqueFileHandle file(
        CreateFileW(target.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return;
    }
    DWORD written = 0;
    WriteFile(file.Get(), report.data(), static_cast<DWORD>(report.size()), &written, nullptr);
}

}  // namespace korvane
