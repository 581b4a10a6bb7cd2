#include "host/SdkDiscovery.h"

#include "context/UiLanguage.h"
#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

namespace korvane {
namespace {

constexpr TextView kSdkExtension = L".kvsdk";

// Calls `visit` for each entry of a FindFirstFileW pattern until it gives false. A listing
// that cannot be opened has no entries.
template <typename Visit>
void ForEachEntry(TextView pattern, Visit visit)
{
    WIN32_FIND_DATAW entry{};
    UniqueFindHandle listing(FindFirstFileW(Text(pattern).c_str(), &entry));
    if (!listing) {
        return;
    }
    do {
        if (!visit(entry)) {
            return;
        }
    } while (FindNextFileW(listing.Get(), &entry));
}

bool IsDirectoryEntry(const WIN32_FIND_DATAW& entry) noexcept
{
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// True when the listing holds a file whose name is not `excluded` (case ignored).
bool HasFileOtherThan(TextView pattern, TextView excluded)
{
    bool found = false;
    ForEachEntry(pattern, [&](const WIN32_FIND_DATAW& entry) {
        found = !IsDirectoryEntry(entry) && !EqualsIgnoringCase(entry.cFileName, excluded);
        return !found;
    });
    return found;
}

Text FindSdkInFolder(TextView gameDirectory)
{
    if (gameDirectory.empty()) {
        return {};
    }
    const Text folder = NormalizePath(gameDirectory);
    if (folder.empty()) {
        return {};
    }
    // The two fixed names win over whatever else lies beside them.
    for (const Text& name : {LastPathComponent(folder) + Text(kSdkExtension), Text(L"KorvaneSDK.kvsdk")}) {
        Text candidate = JoinPath(folder, name);
        if (IsRegularFile(candidate)) {
            return candidate;
        }
    }
    Text only;
    bool ambiguous = false;
    ForEachEntry(JoinPath(folder, L"*.kvsdk"), [&](const WIN32_FIND_DATAW& entry) {
        if ((entry.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) != 0) {
            return true;
        }
        if (!only.empty()) {
            ambiguous = true;
            return false;
        }
        only = JoinPath(folder, entry.cFileName);
        return true;
    });
    return ambiguous ? Text() : only;
}

}  // namespace

bool IsGameInstallDirectory(TextView directory)
{
    // The empty text is no folder; listing it would list the current directory.
    if (directory.empty()) {
        return false;
    }
    if (HasFileOtherThan(JoinPath(directory, L"*.exe"), L"KorvaneEditor.exe")) {
        return true;
    }
    const Text shipping = L"Binaries\\Win64\\" + LastPathComponent(directory) + L"-Win64-Shipping.exe";
    return IsRegularFile(JoinPath(directory, shipping));
}

bool IsGameProjectDirectory(TextView directory)
{
    return !directory.empty() && IsRegularFile(JoinPath(directory, L"Config\\DefaultGame.ini")) &&
        IsRegularFile(JoinPath(directory, L"Content\\Korvane\\DA_KorvaneContract.uasset")) &&
        HasFileOtherThan(JoinPath(directory, L"*.uproject"), L"KorvaneSDK.uproject");
}

Text FindSdkFile(TextView gameDirectory, TextView explicitSdk)
{
    if (explicitSdk.empty()) {
        return FindSdkInFolder(gameDirectory);
    }
    Text target = NormalizePath(explicitSdk);
    if (IsRegularFile(target) && EndsWithIgnoringCase(target, kSdkExtension)) {
        return target;
    }
    return {};
}

Text FindSdkBelowDirectory(TextView directory)
{
    if (Text own = FindSdkFile(directory, {}); !own.empty()) {
        return own;
    }
    const Text folder = directory.empty() ? Text() : NormalizePath(directory);
    if (folder.empty()) {
        return {};
    }
    Text only;
    bool ambiguous = false;
    ForEachEntry(JoinPath(folder, L"*"), [&](const WIN32_FIND_DATAW& entry) {
        // Plain folders only: links could lead anywhere, and dot-folders are caches and tools.
        const DWORD kinds = entry.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT);
        if (kinds != FILE_ATTRIBUTE_DIRECTORY || entry.cFileName[0] == L'.') {
            return true;
        }
        Text sdk = FindSdkFile(JoinPath(folder, entry.cFileName), {});
        if (sdk.empty()) {
            return true;
        }
        if (!only.empty()) {
            ambiguous = true;
            return false;
        }
        only = std::move(sdk);
        return true;
    });
    return ambiguous ? Text() : only;
}

bool ResolveSdkSelection(TextView requestedGameDirectory, TextView requestedSdk, Text& gameDirectory,
    Text& sdk, Text& message)
{
    gameDirectory = requestedGameDirectory.empty() ? Text() : NormalizePath(requestedGameDirectory);
    sdk = FindSdkFile(gameDirectory, requestedSdk);
    if (!sdk.empty()) {
        return true;
    }
    message = kNoSdkSelectedMessage.Now();
    return false;
}

}  // namespace korvane
