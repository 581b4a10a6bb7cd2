#pragma once
// Where KorvaneTool.exe lives. Installs without a layout file keep the tool below Plugins;
// installs with one keep it inside the engine, and are named whole only when the layout
// file, the editor's module list and the files on disk agree.

#include "foundation/Text.h"

namespace korvane {

// The tool's path joined to `editorRoot`, not normalised and not tested for existence
// (callers test it with IsRegularFile). The empty text means a damaged install. Never throws.
Text ResolveToolPath(TextView editorRoot);

}  // namespace korvane
