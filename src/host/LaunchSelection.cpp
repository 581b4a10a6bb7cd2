#include "host/LaunchSelection.h"

#include "foundation/Files.h"
#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"
#include "host/HostEnvironment.h"

#include <windows.h>

namespace korvane {

std::uint64_t InstallKey(TextView editorRoot)
{
    std::uint64_t hash = 0xCBF29CE484222325ull;
    for (const wchar_t unit : NormalizePath(editorRoot)) {
        hash ^= static_cast<std::uint16_t>(FoldAscii(unit));
        hash *= 0x100000001B3ull;
    }
    return hash;
}

Text LaunchSelectionPath(TextView editorRoot)
{
    const Text base = LocalAppDataFolder();
    if (base.empty()) {
        return {};
    }
    return JoinPath(JoinPath(base, L"Korvane\\Launchers\\" + DecimalText(InstallKey(editorRoot))), L"selection.json");
}

Bytes ComposeLaunchSelection(TextView editorRoot, TextView environment, TextView gameDirectory, TextView sdk)
{
    const Text text = L"{\"schemaVersion\":1,\"editorRoot\":" + QuoteJsonText(editorRoot) + L",\"environment\":" +
        QuoteJsonText(environment) + L",\"gameDirectory\":" + QuoteJsonText(gameDirectory) + L",\"sdkFile\":" +
        QuoteJsonText(sdk) + L"}";
    return TextToUtf8(text);
}

bool SaveLaunchSelection(TextView editorRoot, TextView sdk, TextView gameDirectory)
{
    if (sdk.empty()) {
        return false;
    }
    if (!IsRegularFile(sdk) || !SdkBelongsToHost(sdk, gameDirectory)) {
        return false;
    }
    const Text target = LaunchSelectionPath(editorRoot);
    if (target.empty()) {
        return false;
    }
    const int created = CreateFolderTree(ParentPath(target));
    if (created != ERROR_SUCCESS && created != ERROR_ALREADY_EXISTS && created != ERROR_FILE_EXISTS) {
        return false;
    }
    const Text normalizedGame = gameDirectory.empty() ? Text() : NormalizePath(gameDirectory);
    const Bytes content = ComposeLaunchSelection(
        NormalizePath(editorRoot), HostEnvironmentOf(gameDirectory), normalizedGame, NormalizePath(sdk));
    const Text sibling = target + L"." + DecimalText(GetCurrentProcessId()) + L".tmp";
    return ReplaceFileFromSibling(target, sibling, content);
}

}  // namespace korvane
