#pragma once
// The one result of every picker task. Made on the worker and handed to the window thread with
// one posted message; moved, never copied, so its bitmaps change owner and nothing is decoded
// or parsed on the window thread.

#include "foundation/GdiplusImage.h"
#include "foundation/Json.h"
#include "foundation/Text.h"

#include <map>

namespace korvane {

struct WorkResult {
    WorkResult() = default;
    WorkResult(WorkResult&&) noexcept = default;
    WorkResult& operator=(WorkResult&&) noexcept = default;
    WorkResult(const WorkResult&) = delete;
    WorkResult& operator=(const WorkResult&) = delete;

    JsonValue preview;               // the parsed sdk-preview document
    bool previewLoaded = false;      // `preview` is usable
    bool launched = false;           // LaunchEditor reported true
    bool editorBuildMatches = true;  // the SDK fits the installed editor
    Text errorText;                  // for the user
    Text gameDirectory;              // the game directory a first load worked with
    Text selectedModProject;         // the Mod to select once the list is rebuilt
    Text noticeText;                 // a success notice for the status line
    UniqueGdiplusBitmap gameIcon;
    std::map<Text, UniqueGdiplusBitmap, std::less<>> covers;  // thumbnails by `modProject`, by code units
};

}  // namespace korvane
