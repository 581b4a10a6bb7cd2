#pragma once
// Real folder trees for the host tests: scratch installs with the built launcher, games,
// project folders, SDK files, the install's per-user selection, and folder links.

#include "TestSupport.h"

#include "foundation/Text.h"

#include <map>
#include <vector>

namespace korvane::hosttest {

// Owns the per-user selection folder of one install root and removes it (with the file,
// and any sibling a save left behind) when it goes, so no test leaves a file in the
// user's profile.
class SelectionStore {
public:
    explicit SelectionStore(TextView editorRoot);
    ~SelectionStore();
    SelectionStore(const SelectionStore&) = delete;
    SelectionStore& operator=(const SelectionStore&) = delete;

    const Text& Path() const noexcept { return path_; }
    void Write(BytesView bytes) const;
    Bytes Read() const;

private:
    Text path_;
};

// A scratch tree with the launcher copied to `installRelative`, so that the folder above it
// can be made a game or not. The editor's executable is put in place too.
class ScratchInstall {
public:
    explicit ScratchInstall(TextView label, TextView installRelative = L"Install");

    const Text& Root() const noexcept { return root_; }
    Text Launcher() const;
    Text operator/(TextView relative) const { return scratch_ / relative; }
    const Text& ScratchPath() const noexcept { return scratch_.Path(); }
    const SelectionStore& Selection() const noexcept { return selection_; }

    DWORD Run(const std::vector<Text>& arguments) const;

    struct Report {
        DWORD exitCode = 0;
        Bytes content;  // empty when the launcher wrote none
    };
    // -KorvaneResolveHostContext with a fresh report file, plus `arguments`.
    Report ResolveHostContext(const std::vector<Text>& arguments = {}) const;

private:
    testing::ScratchDirectory scratch_;
    Text root_;
    SelectionStore selection_;
};

// The report's bytes for these three values.
Bytes ExpectedReport(TextView game, TextView sdk, TextView environment);
// The bytes a save writes for these values.
Bytes SelectionBytes(TextView editorRoot, TextView environment, TextView gameDirectory, TextView sdk);

// A shipped game: the folder holds `exeName`.
void MakeGameInstall(TextView directory, TextView exeName = L"Game.exe");
// A game's project folder prepared for Mods, with or without the bundle marker.
void MakeGameProject(TextView directory, bool withBundleMarker = false);
// An empty file (an SDK, a marker, an executable stand-in).
void Touch(TextView path);

// Every file below `root` with its bytes, keyed by path: what "nothing changed on disk" means.
std::map<Text, Bytes> SnapshotTree(TextView root);

// A folder link `link` -> `target` made the way the platform allows (a directory symbolic
// link, or /bin/ln under Wine). False when neither works; the caller skips.
bool MakeFolderLink(TextView link, TextView target);
// Removes a link made by MakeFolderLink without touching what it points to.
void RemoveFolderLink(TextView link);

// Removes the link when it goes, before the scratch folder that holds it.
class FolderLink {
public:
    FolderLink(Text link, TextView target) : link_(std::move(link)), made_(MakeFolderLink(link_, target)) {}
    ~FolderLink()
    {
        if (made_) {
            RemoveFolderLink(link_);
        }
    }
    FolderLink(const FolderLink&) = delete;
    FolderLink& operator=(const FolderLink&) = delete;
    bool IsMade() const noexcept { return made_; }

private:
    Text link_;
    bool made_;
};

}  // namespace korvane::hosttest
