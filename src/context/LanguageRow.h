#pragma once
// One language the installed editor can show: its culture code and the name the picker's
// language list shows for it.

#include "foundation/Text.h"

namespace korvane {

struct LanguageRow {
    Text code;         // culture name, spelled as its folder on disk
    Text displayName;  // shown in the picker's language list
};

}  // namespace korvane
