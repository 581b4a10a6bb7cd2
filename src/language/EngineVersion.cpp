#include "language/EngineVersion.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "language/DirectoryEntries.h"
#include "language/EngineVersionText.h"

#include <cstdint>
#include <string_view>

namespace korvane {
namespace {

constexpr std::uint32_t kVersionFileLimit = 1048576;  // inclusive
constexpr std::uint64_t kProjectFileLimit = 1048576;  // exclusive: a project file must be smaller
constexpr wchar_t kEditorFolder[] = L"KorvaneEditor";
constexpr wchar_t kProjectExtension[] = L".uproject";
constexpr const wchar_t* kVersionFiles[] = {
    L"Engine/Binaries/Win64/UnrealEditor.version",
    L"Engine/Build/Build.version",
};

Text AsciiToText(BytesView bytes)
{
    return Text(bytes.begin(), bytes.end());
}

bool HoldsCultureFolder(TextView directory)
{
    return IsDirectory(JoinPath(directory, kEditorCultureFolder));
}

bool IsMatchingInstall(TextView directory, TextView version)
{
    return HoldsCultureFolder(directory) && (version.empty() || ReadEngineVersion(directory) == version);
}

// The version named by the first project file of `directory` that names one in range.
Text PinnedProjectVersion(TextView directory)
{
    for (const DirectoryEntry& entry : ListDirectoryEntries(directory)) {
        if (entry.isDirectory || entry.size >= kProjectFileLimit || !TextView(entry.name).ends_with(kProjectExtension)) {
            continue;
        }
        const Bytes bytes = ReadWholeFile(JoinPath(directory, entry.name), kProjectFileLimit - 1);
        const Bytes version = FindProjectEngineVersion(bytes);
        if (!version.empty()) {
            return AsciiToText(version);
        }
    }
    return {};
}

// The one version folder of `editorFolder` that is a whole install of the version it is
// named after; empty when there is none or more than one.
Text SoleVersionFolder(TextView editorFolder)
{
    Text found;
    int count = 0;
    for (const DirectoryEntry& entry : ListDirectoryEntries(editorFolder)) {
        if (!entry.isDirectory || !IsSupportedEngineVersion(entry.name)) {
            continue;
        }
        Text candidate = JoinPath(editorFolder, entry.name);
        if (HoldsCultureFolder(candidate) && ReadEngineVersion(candidate) == entry.name) {
            found = std::move(candidate);
            ++count;
        }
    }
    return count == 1 ? found : Text();
}

}  // namespace

Text ReadEngineVersion(TextView installDirectory)
{
    if (installDirectory.empty()) {
        return {};  // the relative file names would otherwise be read from the current directory
    }
    for (const wchar_t* versionFile : kVersionFiles) {
        const Text path = JoinPath(installDirectory, versionFile);
        if (!IsRegularFile(path)) {
            continue;
        }
        const Bytes bytes = ReadWholeFile(path, kVersionFileLimit);
        const Bytes major = FindMajorVersion(bytes);
        const Bytes minor = FindMinorVersion(bytes);
        if (!major.empty() && !minor.empty()) {
            return AsciiToText(major) + L"." + AsciiToText(minor);
        }
    }
    return {};
}

Text FindEditorInstall(TextView startDirectory, Text& version)
{
    if (startDirectory.empty()) {
        return {};
    }
    Text current(startDirectory);
    for (;;) {
        if (IsMatchingInstall(current, version)) {
            return current;
        }
        if (version.empty()) {
            version = PinnedProjectVersion(current);
        }
        const Text editorFolder = JoinPath(current, kEditorFolder);
        if (IsMatchingInstall(editorFolder, version)) {
            return editorFolder;
        }
        if (version.empty()) {
            Text versioned = SoleVersionFolder(editorFolder);
            if (!versioned.empty()) {
                return versioned;
            }
        } else {
            Text versioned = JoinPath(editorFolder, version);
            if (IsMatchingInstall(versioned, version)) {
                return versioned;
            }
        }
        Text parent = ParentPath(current);
        if (parent.empty() || parent == current) {
            return Text(startDirectory);
        }
        current = std::move(parent);
    }
}

}  // namespace korvane
