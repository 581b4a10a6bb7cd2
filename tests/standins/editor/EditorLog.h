#pragma once
// The editor's log as an engine writes it: UTF-8 lines ended by LF, each reaching the file in
// one write while the editor starts, with the Korvane plugin's lines among the engine's own.

#include "editor/EditorScenario.h"

#include "foundation/Text.h"
#include "foundation/UniqueResource.h"

#include <functional>

namespace korvane::standins {

// What the log tells about this run.
struct EditorRun {
    Text commandLine;
    Text project;      // the .uproject given on the command line, or empty
    Text selectedMod;  // -KorvaneSelectedMod=
    Text modProject;   // -KorvaneProject=
    Text engineVersion;
};

class EngineLog {
public:
    // `path` empty: nothing is written. Missing folders are created.
    explicit EngineLog(TextView path);

    // Pauses between lines go through `pause`, so that windows stay responsive.
    void SetPause(std::function<void(DWORD)> pause) { pause_ = std::move(pause); }

    // Up to and including "LogEngine: Initializing Engine...": what every mode writes.
    void WriteEarlyLines(const EditorRun& run, const EditorScenario& scenario);
    // The Korvane plugin's markers and the end of engine initialisation.
    void WriteInitialisedLines(const EditorRun& run, const EditorScenario& scenario);
    // Written once the main window stands.
    void WriteReadyLines();
    void WriteExitLines(DWORD exitCode);

private:
    void Line(BytesView text);
    void Raw(BytesView bytes);

    UniqueFileHandle file_;
    std::function<void(DWORD)> pause_;
};

}  // namespace korvane::standins
