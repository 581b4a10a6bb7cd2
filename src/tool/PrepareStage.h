#pragma once
// The words the tool writes as `stage` into its progress file, and the line each one shows.

#include "foundation/Text.h"

namespace korvane {

// The display line for a stage word, matched exactly with case, in the language of the
// moment; any other word, or none, gives the general "Preparing the Mod…".
Text StageText(TextView stage);

}  // namespace korvane
