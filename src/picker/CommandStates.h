#pragma once
// Which of the picker's commands are open, as plain logic over its four flags.

namespace korvane {

struct CommandStates {
    bool chooseGameFolder = false;  // 1002
    bool chooseSdk = false;         // 1007
    bool refresh = false;           // 1014
    bool newMod = false;            // 1010
    bool importMod = false;         // 1011
    bool deleteMod = false;         // 1012
    bool startEditing = false;      // 1003
    bool pathsAndLanguage = false;  // the two path edits and the language list
    bool closeCancels = false;      // 1004 reads "Cancel" rather than "Close"
};

// `rowSelected`: an SDK is loaded and the list's selection lies among the visible rows. While a
// task runs every command is closed but Cancel; a build mismatch keeps Delete and Import open
// and closes New and Start editing.
CommandStates CommandStatesFor(bool taskRunning, bool sdkLoaded, bool rowSelected, bool editorBuildMatches) noexcept;

}  // namespace korvane
