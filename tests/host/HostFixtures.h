#pragma once
// Real folder trees for the host tests: scratch installs running the built launcher with their
// per-user selection, project folders, SDK files, and folder links. Any .exe makes a shipped game.
#include "TestSupport.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "host/LaunchSelection.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <filesystem>
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

// A game's project folder prepared for Mods, without the bundle marker.
inline void MakeGameProject(TextView directory)
{
    MakeTree(directory, {L"Config\\DefaultGame.ini", L"Content\\Korvane\\DA_KorvaneContract.uasset", L"Game.uproject"});
}

// `text` with its first `from` replaced by `to`; std::out_of_range when there is none.
inline Bytes Replace(BytesView text, BytesView from, BytesView to)
{
    Bytes result(text);
    return result.replace(result.find(from), from.size(), to);
}

// A JSON document padded with blanks inside the object to exactly `size` bytes.
inline Bytes PaddedTo(BytesView document, size_t size)
{
    return Replace(document, "{", "{" + Bytes(size - document.size(), ' '));
}

// The bytes a save writes for these values.
inline Bytes SelectionBytes(TextView editorRoot, TextView environment, TextView gameDirectory, TextView sdk)
{
    return TextToUtf8(L"{\"schemaVersion\":1,\"editorRoot\":" + QuoteJsonText(editorRoot) + L",\"environment\":" +
        QuoteJsonText(environment) + L",\"gameDirectory\":" + QuoteJsonText(gameDirectory) + L",\"sdkFile\":" +
        QuoteJsonText(sdk) + L"}");
}

// A launcher install in a scratch tree (at `installRelative`, so that the folder above it can be
// made a game or not), with its configuration file, its per-user selection (whose folder goes
// with this object) and its report mode.
class ScratchInstall : public testing::LauncherInstall {
public:
    explicit ScratchInstall(TextView label, TextView installRelative = L"Install")
        : LauncherInstall(label, installRelative), selection_(LaunchSelectionPath(Root()))
    {
    }
    ~ScratchInstall()
    {
        std::error_code error;
        std::filesystem::remove_all(std::filesystem::path(ParentPath(selection_)), error);
    }
    Text ConfigFile() const { return Root() + L"\\KorvaneUpdate.config.json"; }
    const Text& SelectionFile() const noexcept { return selection_; }
    void WriteSelection(BytesView bytes) const { testing::WriteFileBytes(selection_, bytes); }
    Bytes ReadSelection() const { return testing::ReadFileBytes(selection_); }

    // -KorvaneResolveHostContext plus `arguments` ends with exit code 0 and the report of these values.
    void ExpectReport(const std::vector<Text>& arguments, TextView game, TextView sdk, TextView environment) const
    {
        // Beside the install: a report file never makes a folder a game.
        const Text report = *this / L"host-context.json";
        std::vector<Text> all{L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + report};
        all.insert(all.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(Run(all), 0u);
        EXPECT_EQ(testing::ReadFileBytes(report), TextToUtf8(L"{\"game\":" + QuoteJsonText(game) + L",\"sdk\":" +
            QuoteJsonText(sdk) + L",\"environment\":" + QuoteJsonText(environment) + L"}"));
        DeleteFileW(report.c_str());
    }

private:
    Text selection_;
};

// A folder link `link` -> `target`, made and removed through Unix: Wine makes no link of its own
// and will not remove one without its target. IsMade() false: the caller skips.
class FolderLink {
public:
    FolderLink(Text link, TextView target) : link_(std::move(link))
    {
        const Text unixLink = UnixPath(link_);
        made_ = RunUnixTool(L"Z:\\bin\\ln", {L"-s", UnixPath(target), unixLink}, true);
        // Under Wine a link can always be made, and the rows that need one are the only check of
        // the rule on links: a link that was not made fails, rather than drop those rows unseen.
        EXPECT_TRUE(made_ || unixLink.empty()) << "no folder link made at " << TextToUtf8(link_);
    }
    ~FolderLink()
    {
        if (made_) {
            EXPECT_TRUE(RunUnixTool(L"Z:\\bin\\rm", {L"-f", UnixPath(link_)}, false)) << "the folder link stayed";
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
        if (arguments.back().empty()) {
            return false;  // outside Wine: the link has no Unix path
        }
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
