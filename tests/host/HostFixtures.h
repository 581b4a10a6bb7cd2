#pragma once
// Real folder trees for the host tests: scratch installs running the built launcher, games,
// project folders, SDK files, the install's per-user selection, and folder links.
#include "TestSupport.h"

#include "foundation/Text.h"

#include <map>
#include <vector>

namespace korvane::hosttest {

// The per-user selection of one install root; its folder (with any sibling) goes with this object.
class SelectionStore {
public:
    explicit SelectionStore(TextView editorRoot);
    ~SelectionStore();
    SelectionStore(const SelectionStore&) = delete;
    SelectionStore& operator=(const SelectionStore&) = delete;
    const Text& Path() const noexcept { return path_; }
    void Write(BytesView bytes) const { testing::WriteFileBytes(path_, bytes); }
    Bytes Read() const { return testing::ReadFileBytes(path_); }

private:
    Text path_;
};

// A launcher install in a scratch tree (at `installRelative`, so that the folder above it can be
// made a game or not), with its configuration file, its stored selection and its report mode.
class ScratchInstall : public testing::LauncherInstall {
public:
    explicit ScratchInstall(TextView label, TextView installRelative = L"Install");
    Text ConfigFile() const { return Root() + L"\\KorvaneUpdate.config.json"; }
    const SelectionStore& Selection() const noexcept { return selection_; }
    // -KorvaneResolveHostContext plus `arguments`: the exit code and the report ("" when none).
    std::pair<DWORD, Bytes> ResolveHostContext(const std::vector<Text>& arguments = {}) const;
    // Expects exit code 0 and the report of these three values.
    void ExpectReport(const std::vector<Text>& arguments, TextView game, TextView sdk, TextView environment) const;

private:
    SelectionStore selection_;
};

// The bytes a save writes for these values.
Bytes SelectionBytes(TextView editorRoot, TextView environment, TextView gameDirectory, TextView sdk);
// `text` with its first `from` replaced by `to`.
Bytes Replace(BytesView text, BytesView from, BytesView to);

// Empty files below `root`; an entry ending in `\` is a folder.
void MakeTree(TextView root, const std::vector<Text>& entries);
void Touch(TextView path);
// A shipped game: the folder holds `exeName`.
void MakeGameInstall(TextView directory, TextView exeName = L"Game.exe");
// A game's project folder prepared for Mods, with or without the bundle marker.
void MakeGameProject(TextView directory, bool withBundleMarker = false);

// Every file and folder below `root` with its bytes: what "nothing changed on disk" means.
std::map<Text, Bytes> SnapshotTree(TextView root);

// A folder link `link` -> `target` (a directory symbolic link, or /bin/ln under Wine), removed
// without touching its target when this goes. IsMade() false: the caller skips.
class FolderLink {
public:
    FolderLink(Text link, TextView target);
    ~FolderLink();
    FolderLink(const FolderLink&) = delete;
    FolderLink& operator=(const FolderLink&) = delete;
    bool IsMade() const noexcept { return made_; }

private:
    Text link_;
    bool made_ = false;
};

}  // namespace korvane::hosttest
