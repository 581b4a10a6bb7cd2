#pragma once
// Works out game and SDK when neither the command line nor the host configuration named
// them: from the selection stored by an earlier run, then from the folder the install lies in.

#include "foundation/Text.h"
#include "host/HostEnvironment.h"

namespace korvane {

// What a stored selection says, as the texts of its file.
struct StoredSelection {
    Text schemaVersion;
    Text editorRoot;
    Text environment;
    Text gameDirectory;
    Text sdkFile;
};

// The stored selection holds, by seven tests in order, for this install. `hostGame` is the
// install's parent folder when that is a game, else empty.
bool IsStoredSelectionValid(const StoredSelection& stored, TextView editorRoot, TextView hostGame);

// Changes nothing when the request names a game directory, an SDK or an environment. Otherwise
// the stored selection, else the game the install lies in, may name the game directory, the SDK
// and the environment. Writes no file; a stored selection that fails is left as it is. Lets no
// exception out.
HostChoice ResolveHostContext(const HostRequest& request);

}  // namespace korvane
