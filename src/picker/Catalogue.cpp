#include "picker/Catalogue.h"

#include "picker/PickerTexts.h"

namespace korvane {

Text JoinGameVersions(const JsonValue& versions)
{
    Text joined;
    for (const JsonValue& version : versions.items) {
        if (!joined.empty()) {
            joined += L", ";
        }
        joined += version.text;
    }
    return joined;
}

std::vector<ModEntry> ReadModEntries(
    const JsonValue& preview, std::map<Text, UniqueGdiplusBitmap, std::less<>>& covers)
{
    std::vector<ModEntry> mods;
    for (const JsonValue& mod : FindJsonMember(preview, L"mods").items) {
        ModEntry entry;
        entry.id = FindJsonMember(mod, L"id").text;
        entry.name = FindJsonMember(mod, L"name").text;
        entry.authorName = FindJsonMember(mod, L"authorName").text;
        entry.modProject = FindJsonMember(mod, L"modProject").text;
        entry.coverPath = FindJsonMember(mod, L"coverPath").text;
        entry.supportedGameVersions = JoinGameVersions(FindJsonMember(mod, L"supportedGameVersions"));
        if (entry.id.empty() || entry.name.empty() || !EndsWithIgnoringCase(entry.modProject, L".umod")) {
            continue;
        }
        if (const auto cover = covers.find(entry.modProject); cover != covers.end()) {
            entry.cover = std::move(cover->second);
        }
        mods.push_back(std::move(entry));
    }
    return mods;
}

Text GameTitleOf(const JsonValue& preview)
{
    const Text& displayName = FindJsonMember(FindJsonMember(preview, L"gameInfo"), L"displayName").text;
    return displayName.empty() ? FindJsonMember(preview, L"gameId").text : displayName;
}

void SearchHaystack(const ModEntry& mod, Text& haystack)
{
    haystack.clear();
    haystack += mod.name;
    haystack += L' ';
    haystack += mod.authorName;
    haystack += L' ';
    haystack += mod.id;
    for (wchar_t& unit : haystack) {
        unit = FoldAscii(unit);
    }
}

ModFilter FilterMods(const std::vector<ModEntry>& mods, TextView query, TextView preferred)
{
    const Text folded = FoldAsciiCase(query);
    ModFilter filter;
    filter.visibleRows.reserve(mods.size());
    Text haystack;  // one buffer for every row: a keystroke over thousands of Mods allocates once
    for (std::size_t index = 0; index < mods.size(); ++index) {
        if (!folded.empty() && (SearchHaystack(mods[index], haystack), haystack.find(folded) == Text::npos)) {
            continue;
        }
        if (mods[index].modProject == preferred) {
            filter.selectedRow = filter.visibleRows.size();
        }
        filter.visibleRows.push_back(index);
    }
    if (!filter.selectedRow && !filter.visibleRows.empty()) {
        filter.selectedRow = 0;
    }
    return filter;
}

Text ModCountText(std::size_t count)
{
    return DecimalText(count) + kModCountSuffix.Now();
}

}  // namespace korvane
