#include "HostFixtures.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "host/LaunchSelection.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace korvane::hosttest {

SelectionStore::SelectionStore(TextView editorRoot) : path_(LaunchSelectionPath(editorRoot))
{
    EXPECT_FALSE(path_.empty()) << "no local application data folder";
}

SelectionStore::~SelectionStore()
{
    if (path_.empty()) {
        return;
    }
    const Text folder = ParentPath(path_);
    std::error_code error;
    std::filesystem::remove_all(std::filesystem::path(folder), error);
}

void SelectionStore::Write(BytesView bytes) const
{
    testing::WriteFileBytes(path_, bytes);
}

Bytes SelectionStore::Read() const
{
    return testing::ReadFileBytes(path_);
}

ScratchInstall::ScratchInstall(TextView label, TextView installRelative)
    : scratch_(label), root_(scratch_ / installRelative), selection_(root_)
{
    testing::CopyFileTo(testing::BuiltLauncherPath(), Launcher());
    testing::WriteFileBytes(JoinPath(root_, L"Engine\\Binaries\\Win64\\UnrealEditor.exe"), "MZ");
    testing::MakeDirectories(scratch_ / L"reports");
}

Text ScratchInstall::Launcher() const
{
    return JoinPath(root_, L"KorvaneEditor.exe");
}

DWORD ScratchInstall::Run(const std::vector<Text>& arguments) const
{
    testing::ProcessOptions options;
    options.currentDirectory = root_;
    const testing::ProcessResult result = testing::RunProcess(Launcher(), arguments, options);
    EXPECT_FALSE(result.timedOut);
    return result.exitCode;
}

ScratchInstall::Report ScratchInstall::ResolveHostContext(const std::vector<Text>& arguments) const
{
    // Beside the install: a report file never makes a folder a game.
    const Text reportPath = scratch_ / L"reports\\host-context.json";
    DeleteFileW(reportPath.c_str());
    std::vector<Text> all{L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + reportPath};
    all.insert(all.end(), arguments.begin(), arguments.end());
    Report report;
    report.exitCode = Run(all);
    report.content = testing::ReadFileBytes(reportPath);
    DeleteFileW(reportPath.c_str());
    return report;
}

Bytes ExpectedReport(TextView game, TextView sdk, TextView environment)
{
    return TextToUtf8(L"{\"game\":" + QuoteJsonText(game) + L",\"sdk\":" + QuoteJsonText(sdk) +
        L",\"environment\":" + QuoteJsonText(environment) + L"}");
}

Bytes SelectionBytes(TextView editorRoot, TextView environment, TextView gameDirectory, TextView sdk)
{
    return TextToUtf8(L"{\"schemaVersion\":1,\"editorRoot\":" + QuoteJsonText(editorRoot) + L",\"environment\":" +
        QuoteJsonText(environment) + L",\"gameDirectory\":" + QuoteJsonText(gameDirectory) + L",\"sdkFile\":" +
        QuoteJsonText(sdk) + L"}");
}

void MakeGameInstall(TextView directory, TextView exeName)
{
    testing::WriteFileBytes(JoinPath(directory, exeName), "MZ");
}

void MakeGameProject(TextView directory, bool withBundleMarker)
{
    testing::WriteFileBytes(JoinPath(directory, L"Config\\DefaultGame.ini"), "[/Script/EngineSettings.GeneralProjectSettings]\r\n");
    testing::WriteFileBytes(JoinPath(directory, L"Content\\Korvane\\DA_KorvaneContract.uasset"), "uasset");
    testing::WriteFileBytes(JoinPath(directory, L"Game.uproject"), "{\"FileVersion\":3}");
    if (withBundleMarker) {
        testing::WriteFileBytes(JoinPath(directory, L".korvane-host-bundle.json"), "{}");
    }
}

void Touch(TextView path)
{
    testing::WriteFileBytes(path, "");
}

std::map<Text, Bytes> SnapshotTree(TextView root)
{
    std::map<Text, Bytes> files;
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator it(std::filesystem::path(Text(root)), error), end;
         !error && it != end; it.increment(error)) {
        const Text path = it->path().wstring();
        if (IsRegularFile(path)) {
            Bytes bytes = testing::ReadFileBytes(path);
            if (bytes.size() > 4096) {
                // Keeps a failure's message readable; a change still changes the digest.
                std::uint64_t digest = 0xCBF29CE484222325ull;
                for (const char byte : bytes) {
                    digest = (digest ^ static_cast<unsigned char>(byte)) * 0x100000001B3ull;
                }
                bytes = "<" + std::to_string(bytes.size()) + " bytes, digest " + std::to_string(digest) + ">";
            }
            files[path] = std::move(bytes);
        } else {
            files[path] = "<folder>";
        }
    }
    return files;
}

namespace {

using UnixFileNameFunction = char*(__cdecl*)(const wchar_t*);

// Wine's own export that names the Unix file behind a Windows path; null elsewhere.
UnixFileNameFunction WineUnixFileName()
{
    HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    return kernel == nullptr ? nullptr
                             : reinterpret_cast<UnixFileNameFunction>(
                                   reinterpret_cast<void*>(GetProcAddress(kernel, "wine_get_unix_file_name")));
}

Bytes UnixPath(UnixFileNameFunction unixFileName, TextView path)
{
    char* name = unixFileName(Text(path).c_str());
    if (name == nullptr) {
        return {};
    }
    Bytes result(name);
    HeapFree(GetProcessHeap(), 0, name);
    return result;
}

// Wine runs a Unix program detached: the Windows process it hands back ends at once, so
// there is nothing to wait on. Callers poll for the program's effect instead.
void RunUnixTool(TextView tool, const std::vector<Text>& arguments)
{
    testing::ProcessOptions options;
    options.timeoutMs = 30000;
    testing::RunProcess(tool, arguments, options);
}

// Polls the attributes of `path` until `done` holds them, for at most ten seconds.
template <typename Done>
bool AwaitAttributes(TextView path, Done done)
{
    const Text name(path);
    const ULONGLONG deadline = GetTickCount64() + 10000;
    for (;;) {
        if (done(GetFileAttributesW(name.c_str()))) {
            return true;
        }
        if (GetTickCount64() > deadline) {
            return false;
        }
        Sleep(10);
    }
}

}  // namespace

bool MakeFolderLink(TextView link, TextView target)
{
    constexpr DWORD kAllowUnprivileged = 0x2;
    if (CreateSymbolicLinkW(Text(link).c_str(), Text(target).c_str(), SYMBOLIC_LINK_FLAG_DIRECTORY | kAllowUnprivileged) &&
        IsReparsePoint(link)) {
        return true;
    }
    const UnixFileNameFunction unixFileName = WineUnixFileName();
    if (unixFileName == nullptr) {
        return false;
    }
    const Bytes unixTarget = UnixPath(unixFileName, target);
    const Bytes unixParent = UnixPath(unixFileName, ParentPath(link));
    if (unixTarget.empty() || unixParent.empty()) {
        return false;
    }
    const Bytes unixLink = unixParent + "/" + TextToUtf8(LastPathComponent(link));
    RunUnixTool(L"Z:\\bin\\ln", {L"-s", Utf8ToText(unixTarget), Utf8ToText(unixLink)});
    return AwaitAttributes(link, [](DWORD attributes) {
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    });
}

void RemoveFolderLink(TextView link)
{
    // Under Wine, RemoveDirectoryW follows the link and removes the folder it points to, so
    // the link itself goes through the Unix side.
    if (const UnixFileNameFunction unixFileName = WineUnixFileName()) {
        const Bytes unixParent = UnixPath(unixFileName, ParentPath(link));
        RunUnixTool(L"Z:\\bin\\rm", {L"-f", Utf8ToText(unixParent + "/" + TextToUtf8(LastPathComponent(link)))});
        EXPECT_TRUE(AwaitAttributes(link, [](DWORD attributes) { return attributes == INVALID_FILE_ATTRIBUTES; }))
            << "the folder link stayed";
        return;
    }
    RemoveDirectoryW(Text(link).c_str());
}

}  // namespace korvane::hosttest
