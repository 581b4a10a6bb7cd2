#include "picker/CommandStates.h"

namespace korvane {

CommandStates CommandStatesFor(bool taskRunning, bool sdkLoaded, bool rowSelected, bool editorBuildMatches) noexcept
{
    const bool idle = !taskRunning;
    CommandStates states;
    states.chooseGameFolder = idle;
    states.chooseSdk = idle;
    states.refresh = idle;
    states.startEditing = idle && rowSelected && editorBuildMatches;
    states.deleteMod = idle && rowSelected;
    states.newMod = idle && sdkLoaded && editorBuildMatches;
    states.importMod = idle && sdkLoaded;
    states.pathsAndLanguage = idle;
    states.closeCancels = taskRunning;
    return states;
}

}  // namespace korvane
