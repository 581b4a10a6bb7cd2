#include "common/SdkFormat.h"

#include "common/StandinSupport.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"

namespace korvane::standins {
namespace {

std::uint64_t Fnv1a(TextView text, std::uint64_t basis)
{
    std::uint64_t hash = basis;
    for (const wchar_t unit : text) {
        hash ^= static_cast<std::uint16_t>(unit);
        hash *= 0x100000001B3ull;
    }
    return hash;
}

Text Hex(std::uint64_t value)
{
    static const wchar_t digits[] = L"0123456789abcdef";
    Text text(16, L'0');
    for (int index = 15; index >= 0; --index) {
        text[static_cast<size_t>(index)] = digits[value & 0xF];
        value >>= 4;
    }
    return text;
}

std::vector<Text> StringItems(const JsonValue& array)
{
    std::vector<Text> items;
    for (const JsonValue& item : array.items) {
        items.push_back(item.text);
    }
    return items;
}

Text LocalizedNames(const ModRecord& mod)
{
    Text text = L"{";
    if (!mod.englishName.empty()) {
        text += L"\"en\":" + QuoteJsonText(mod.englishName);
    }
    if (!mod.chineseName.empty()) {
        if (text.size() > 1) {
            text += L',';
        }
        text += L"\"zh-Hans\":" + QuoteJsonText(mod.chineseName);
    }
    return text + L"}";
}

}  // namespace

Text ModIdFromSeed(TextView seed)
{
    return L"mod." + Hex(Fnv1a(seed, 0xCBF29CE484222325ull)) + Hex(Fnv1a(seed, 0x84222325CBF29CE4ull));
}

bool IsModId(TextView text)
{
    if (text.size() != 36 || text.substr(0, 4) != L"mod.") {
        return false;
    }
    for (const wchar_t unit : text.substr(4)) {
        if (!((unit >= L'0' && unit <= L'9') || (unit >= L'a' && unit <= L'f') || (unit >= L'A' && unit <= L'F'))) {
            return false;
        }
    }
    return true;
}

Bytes PackageDocument(const ModRecord& mod, TextView packageFolder)
{
    Text text = L"{\"format\":\"KorvaneModSource\",\"schemaVersion\":1,\"id\":" + QuoteJsonText(mod.id) +
        L",\"kind\":" + QuoteJsonText(mod.kind) + L",\"name\":" + QuoteJsonText(mod.name) +
        L",\"localizedNames\":" + LocalizedNames(mod) + L",\"authorName\":" + QuoteJsonText(mod.authorName) +
        L",\"version\":" + QuoteJsonText(mod.version) +
        L",\"supportedGameVersions\":" + JsonStringArray(mod.supportedGameVersions) + L",\"coverPath\":" +
        QuoteJsonText(mod.coverPath.empty() ? Text() : RelativeDocumentPath(packageFolder, mod.coverPath)) + L"}";
    return TextToUtf8(text);
}

std::optional<ModRecord> ReadPackage(TextView packagePath)
{
    const std::optional<JsonValue> document = ReadJsonFile(packagePath, 1048576);
    if (!document || document->kind != JsonKind::Object ||
        FindJsonMember(*document, L"format").text != L"KorvaneModSource") {
        return std::nullopt;
    }
    ModRecord mod;
    mod.id = FindJsonMember(*document, L"id").text;
    if (!IsModId(mod.id)) {
        return std::nullopt;
    }
    mod.name = FindJsonMember(*document, L"name").text;
    mod.englishName = FindJsonMember(FindJsonMember(*document, L"localizedNames"), L"en").text;
    mod.chineseName = FindJsonMember(FindJsonMember(*document, L"localizedNames"), L"zh-Hans").text;
    mod.authorName = FindJsonMember(*document, L"authorName").text;
    mod.version = FindJsonMember(*document, L"version").text;
    mod.supportedGameVersions = StringItems(FindJsonMember(*document, L"supportedGameVersions"));
    mod.kind = FindJsonMember(*document, L"kind").text;
    mod.package = NormalizePath(packagePath);
    const Text& cover = FindJsonMember(*document, L"coverPath").text;
    if (!cover.empty()) {
        mod.coverPath = ResolveDocumentPath(ParentPath(mod.package), cover);
    }
    return mod;
}

Text SdkModEntry(const ModRecord& mod, TextView sdkFolder)
{
    return L"{\"id\":" + QuoteJsonText(mod.id) + L",\"name\":" + QuoteJsonText(mod.name) +
        L",\"localizedNames\":" + LocalizedNames(mod) + L",\"authorName\":" + QuoteJsonText(mod.authorName) +
        L",\"version\":" + QuoteJsonText(mod.version) +
        L",\"supportedGameVersions\":" + JsonStringArray(mod.supportedGameVersions) + L",\"package\":" +
        QuoteJsonText(RelativeDocumentPath(sdkFolder, mod.package)) + L",\"coverPath\":" +
        QuoteJsonText(mod.coverPath.empty() ? Text() : RelativeDocumentPath(sdkFolder, mod.coverPath)) + L"}";
}

Text ResolveDocumentPath(TextView base, TextView path)
{
    Text windows(path);
    for (wchar_t& unit : windows) {
        if (unit == L'/') {
            unit = L'\\';
        }
    }
    return NormalizePath(IsAbsoluteInForm(windows) ? windows : JoinPath(base, windows));
}

Text RelativeDocumentPath(TextView base, TextView path)
{
    const Text prefix = NormalizePath(base) + L"\\";
    const Text full = NormalizePath(path);
    if (!StartsWithIgnoringCase(full, prefix)) {
        return full;
    }
    Text relative = full.substr(prefix.size());
    for (wchar_t& unit : relative) {
        if (unit == L'\\') {
            unit = L'/';
        }
    }
    return relative;
}

Text MajorMinor(TextView version)
{
    const size_t first = version.find(L'.');
    if (first == TextView::npos) {
        return {};
    }
    size_t end = first + 1;
    while (end < version.size() && version[end] >= L'0' && version[end] <= L'9') {
        ++end;
    }
    return Text(version.substr(0, end));
}

}  // namespace korvane::standins
