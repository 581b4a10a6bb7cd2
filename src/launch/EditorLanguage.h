#pragma once
// Which language the editor is asked to start in.

#include "foundation/Text.h"

#include <span>

namespace korvane {

// The run's language, else the saved one, else "en"; then each pass-through element that
// begins with "-culture=" or "-language=" (letter case ignored) replaces it with the text
// behind its "=", so the last such element wins, whichever option it is.
Text RequestedEditorLanguage(TextView runLanguage, TextView savedLanguage, std::span<const Text> passThroughArguments);

}  // namespace korvane
