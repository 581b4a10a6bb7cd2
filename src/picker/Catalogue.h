#pragma once
// The Mod catalogue as plain logic: which Mods of a preview document are kept, how the search
// field filters them, and which row is selected afterwards. No window is touched here.

#include "context/PickerState.h"
#include "foundation/GdiplusImage.h"
#include "foundation/Json.h"
#include "foundation/Text.h"

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

namespace korvane {

// The document's `supportedGameVersions`, each element in order with ", " ahead of every
// element that follows a non-empty text.
Text JoinGameVersions(const JsonValue& versions);

// The kept Mods of a preview document, in document order: a Mod without id or name, or whose
// `modProject` does not end in ".umod" (any letter case), leaves no trace. Each kept Mod takes
// its cover out of `covers`, so a second Mod with the same package finds none.
std::vector<ModEntry> ReadModEntries(
    const JsonValue& preview, std::map<Text, UniqueGdiplusBitmap, std::less<>>& covers);

// `displayName` of `gameInfo`, else `gameId`.
Text GameTitleOf(const JsonValue& preview);

// The searchable text of a Mod into `haystack`: name, blank, author, blank, id, with A to Z folded.
void SearchHaystack(const ModEntry& mod, Text& haystack);

struct ModFilter {
    std::vector<std::size_t> visibleRows;  // indexes into the Mods, in their order
    std::optional<std::size_t> selectedRow;  // a position in visibleRows
};

// The rows the query lets through (untrimmed, A to Z folded, a contiguous run anywhere in the
// haystack; an empty query lets all through) and the row to select: the last one whose package
// is exactly `preferred`, else the first row, else none.
ModFilter FilterMods(const std::vector<ModEntry>& mods, TextView query, TextView preferred);

// The Mod count for the status line: the number and " Mods" (no singular).
Text ModCountText(std::size_t count);

}  // namespace korvane
