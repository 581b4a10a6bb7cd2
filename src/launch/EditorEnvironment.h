#pragma once
// What the editor inherits from the launcher besides its command line: the launcher's own
// environment, changed in place before every start, and the shared local derived data
// cache of the install's engine version. The editor is started with the inherited
// environment, so these changes reach it and nothing else has to be handed over.

#include "foundation/Text.h"

namespace korvane {

// Would point the editor at SDKs outside the install.
inline constexpr wchar_t kSdksRootVariable[] = L"UE_SDKS_ROOT";
// Where the editor keeps its local derived data cache.
inline constexpr wchar_t kLocalDataCacheVariable[] = L"UE-LocalDataCachePath";

// Removes UE_SDKS_ROOT from the launcher's own environment.
void RemoveSdksRootFromEnvironment();

// Major.Minor of member "engineBuild" of "KorvaneEditor.receipt.json" in `editorRoot`, empty
// when the member is absent. Throws std::runtime_error for a receipt that is missing,
// empty, too large or malformed.
Text ReadReceiptMajorMinor(TextView editorRoot);

// Makes <LocalAppData>\Korvane\DerivedDataCache\<majorMinor> and sets UE-LocalDataCachePath
// to it in the launcher's own environment, in its short form where the volume has short
// names (the editor copes badly with non-ASCII letters there). Gives the folder as set, or
// empty when it could not be had; nothing is set then.
Text PrepareLocalDataCache(TextView majorMinor);

}  // namespace korvane
