#pragma once
// Turns the chosen SDK and Mod into a running editor with a prepared workspace.

#include "foundation/Text.h"

namespace korvane {

struct LaunchContext;

// True: the editor runs in context.editorProcess and editorStarted is set. False: `error`
// says why and no editor process is left.
bool LaunchEditor(LaunchContext& context, Text& error);

}  // namespace korvane
