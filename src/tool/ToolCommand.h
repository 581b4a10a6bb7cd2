#pragma once
// Every command line the launcher hands KorvaneTool.exe is built here: the command words, then
// the named arguments in the order the tool takes them, each value quoted exactly once. An
// optional argument whose value is empty goes away, word and value.

#include "foundation/Text.h"

namespace korvane {

enum class ToolCommandKind {
    SdkPreview,          // sdk-preview --sdk [--game-root]
    ListSources,         // list-sources --sdk --editor-root [--game-root]
    ResolveSource,       // resolve-source --sdk --mod-file --resolution <bare word>
    Prepare,             // prepare --sdk --editor-root --selection-file [--game-root] --mod-file
                         //         --progress-file --timing-report
    Create,              // create --sdk [--game-root] --editor-root [--cover] --name --author-name
                         //        [--output-file]
    TranslationsCreate,  // translations create, with the arguments of create
    ImportSource,        // import-source --sdk [--game-root] --editor-root --mod-file
    SdkInfo,             // sdk-info --sdk --editor-root
};

// The values a command may take; each command reads only its own. Views into the caller's text.
struct ToolArguments {
    TextView sdk{};
    TextView gameRoot{};
    TextView editorRoot{};
    TextView selectionFile{};
    TextView modFile{};
    TextView progressFile{};
    TextView timingReport{};
    TextView resolution{};  // "workspace" or "source", passed bare
    TextView cover{};
    TextView name{};
    TextView authorName{};
    TextView outputFile{};
};

// Everything behind the tool's own path: "<command words> --option "value" ...".
Text BuildToolCommand(ToolCommandKind kind, const ToolArguments& arguments);

// " --sdk <sdk>" and, for a game directory, " --game-root <dir>", quoted: the arguments of
// sdk-preview, with a leading blank so that a command word can stand directly in front.
Text BuildSdkArguments(TextView sdk, TextView gameDirectory);

}  // namespace korvane
