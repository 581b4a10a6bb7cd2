#pragma once
// Real folder trees for the host tests: scratch installs running the built launcher, games,
// project folders, SDK files, the install's per-user selection, and folder links.
#include "TestSupport.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "host/LaunchSelection.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace korvane::hosttest {

inline void Touch(TextView path) { testing::WriteFileBytes(path, ""); }

// Empty files below `root`; an entry ending in `\` is a folder.
inline void MakeTree(TextView root, const std::vector<Text>& entries)
{
    testing::MakeDirectories(root);
    for (const Text& entry : entries) {
        if (!entry.empty() && entry.back() == L'\\') {
            testing::MakeDirectories(JoinPath(root, entry.substr(0, entry.size() - 1)));
        } else {
            Touch(JoinPath(root, entry));
        }
    }
}

// A shipped game: the folder holds `exeName`.
inline void MakeGameInstall(TextView directory, TextView exeName = L"Game.exe")
{
    testing::WriteFileBytes(JoinPath(directory, exeName), "MZ");
}

// A game's project folder prepared for Mods, with or without the bundle marker.
inline void MakeGameProject(TextView directory, bool withBundleMarker = false)
{
    MakeTree(directory, {L"Config\\DefaultGame.ini", L"Content\\Korvane\\DA_KorvaneContract.uasset", L"Game.uproject"});
    if (withBundleMarker) {
        Touch(JoinPath(directory, L".korvane-host-bundle.json"));
    }
}

// `text` with its first `from` replaced by `to`.
inline Bytes Replace(BytesView text, BytesView from, BytesView to)
{
    Bytes result(text);
    const size_t at = result.find(from);
    EXPECT_NE(at, Bytes::npos) << from;
    return at == Bytes::npos ? result : result.replace(at, from.size(), to);
}

// The bytes a save writes for these values.
inline Bytes SelectionBytes(TextView editorRoot, TextView environment, TextView gameDirectory, TextView sdk)
{
    return TextToUtf8(L"{\"schemaVersion\":1,\"editorRoot\":" + QuoteJsonText(editorRoot) + L",\"environment\":" +
        QuoteJsonText(environment) + L",\"gameDirectory\":" + QuoteJsonText(gameDirectory) + L",\"sdkFile\":" +
        QuoteJsonText(sdk) + L"}");
}

// Every file and folder below `root` with its bytes: what "nothing changed on disk" means.
inline std::map<Text, Bytes> SnapshotTree(TextView root)
{
    std::map<Text, Bytes> files;
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator it(std::filesystem::path(Text(root)), error), end;
         !error && it != end; it.increment(error)) {
        const Text path = it->path().wstring();
        Bytes bytes = IsRegularFile(path) ? testing::ReadFileBytes(path) : "<folder>";
        // Large files by size and digest, so that a failure's message stays readable.
        files[path] = bytes.size() <= 4096
            ? bytes : std::to_string(bytes.size()) + " bytes, digest " + std::to_string(std::hash<Bytes>{}(bytes));
    }
    return files;
}

// The per-user selection of one install root; its folder (with any sibling) goes with this object.
class SelectionStore {
public:
    explicit SelectionStore(TextView editorRoot) : path_(LaunchSelectionPath(editorRoot))
    {
        EXPECT_FALSE(path_.empty()) << "no local application data folder";
    }
    ~SelectionStore()
    {
        std::error_code error;
        if (!path_.empty()) {
            std::filesystem::remove_all(std::filesystem::path(ParentPath(path_)), error);
        }
    }
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
    explicit ScratchInstall(TextView label, TextView installRelative = L"Install")
        : LauncherInstall(label, installRelative), selection_(Root())
    {
        testing::MakeDirectories(*this / L"reports");
    }
    Text ConfigFile() const { return Root() + L"\\KorvaneUpdate.config.json"; }
    const SelectionStore& Selection() const noexcept { return selection_; }

    // -KorvaneResolveHostContext plus `arguments`: the exit code and the report ("" when none).
    std::pair<DWORD, Bytes> ResolveHostContext(const std::vector<Text>& arguments = {}) const
    {
        // Beside the install: a report file never makes a folder a game.
        const Text reportPath = *this / L"reports\\host-context.json";
        std::vector<Text> all{L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + reportPath};
        all.insert(all.end(), arguments.begin(), arguments.end());
        std::pair<DWORD, Bytes> result{Run(all), {}};
        result.second = testing::ReadFileBytes(reportPath);
        DeleteFileW(reportPath.c_str());
        return result;
    }

    // Expects exit code 0 and the report of these three values.
    void ExpectReport(const std::vector<Text>& arguments, TextView game, TextView sdk, TextView environment) const
    {
        EXPECT_EQ(ResolveHostContext(arguments), std::make_pair(DWORD{0}, TextToUtf8(L"{\"game\":" +
            QuoteJsonText(game) + L",\"sdk\":" + QuoteJsonText(sdk) + L",\"environment\":" +
            QuoteJsonText(environment) + L"}")));
    }

private:
    SelectionStore selection_;
};

// A folder link `link` -> `target` (a directory symbolic link, or /bin/ln under Wine), removed
// without touching its target when this goes. IsMade() false: the caller skips.
class FolderLink {
public:
    FolderLink(Text link, TextView target) : link_(std::move(link))
    {
        constexpr DWORD kAllowUnprivileged = 0x2;
        if (CreateSymbolicLinkW(link_.c_str(), Text(target).c_str(),
                SYMBOLIC_LINK_FLAG_DIRECTORY | kAllowUnprivileged) && IsReparsePoint(link_)) {
            made_ = true;
            return;
        }
        const Text unixLink = UnixPath(link_);
        made_ = !unixLink.empty() && RunUnixTool(L"Z:\\bin\\ln", {L"-s", UnixPath(target), unixLink}, true);
    }
    ~FolderLink()
    {
        // Under Wine, RemoveDirectoryW follows the link and removes its target: the link goes through Unix.
        const Text unixLink = made_ ? UnixPath(link_) : Text();
        if (!unixLink.empty()) {
            EXPECT_TRUE(RunUnixTool(L"Z:\\bin\\rm", {L"-f", unixLink}, false)) << "the folder link stayed";
        } else if (made_) {
            RemoveDirectoryW(link_.c_str());
        }
    }
    FolderLink(const FolderLink&) = delete;
    FolderLink& operator=(const FolderLink&) = delete;
    bool IsMade() const noexcept { return made_; }

private:
    // The Unix path of `path` through Wine's own export (by its parent, as a link may not exist
    // yet); "" outside Wine.
    static Text UnixPath(TextView path)
    {
        using UnixFileName = char*(__cdecl*)(const wchar_t*);
        const auto unixFileName = reinterpret_cast<UnixFileName>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
        char* parent = unixFileName == nullptr ? nullptr : unixFileName(ParentPath(path).c_str());
        if (parent == nullptr) {
            return {};
        }
        const Text result = Utf8ToText(Bytes(parent) + "/" + TextToUtf8(LastPathComponent(path)));
        HeapFree(GetProcessHeap(), 0, parent);
        return result;
    }

    // Wine runs a Unix program detached, so its effect on the link is polled for, ten seconds at most.
    bool RunUnixTool(TextView tool, const std::vector<Text>& arguments, bool wantLink) const
    {
        testing::ProcessOptions options;
        options.timeoutMs = 30000;
        testing::RunProcess(tool, arguments, options);
        for (const ULONGLONG deadline = GetTickCount64() + 10000; GetTickCount64() <= deadline; Sleep(10)) {
            if (wantLink ? IsReparsePoint(link_) : GetFileAttributesW(link_.c_str()) == INVALID_FILE_ATTRIBUTES) {
                return true;
            }
        }
        return false;
    }

    Text link_;
    bool made_ = false;
};

}  // namespace korvane::hosttest
