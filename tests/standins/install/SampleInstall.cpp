#include "SampleInstall.h"

#include "common/SampleLayout.h"

#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <system_error>

namespace korvane::testing {
namespace {

// The folder in which the launcher stores its selection for an install: its key is FNV-1a over
// the folded, normalised install path.
Text SelectionFolder(TextView editorRoot)
{
    const Text local = LocalAppDataFolder();
    if (local.empty()) {
        return {};
    }
    std::uint64_t hash = 0xCBF29CE484222325ull;
    for (const wchar_t unit : FoldAsciiCase(NormalizePath(editorRoot))) {
        hash ^= static_cast<std::uint16_t>(unit);
        hash *= 0x100000001B3ull;
    }
    return JoinPath(JoinPath(local, L"Korvane\\Launchers"), DecimalText(hash));
}

void WriteOrRemove(TextView path, TextView json)
{
    if (json.empty()) {
        DeleteFileW(Text(path).c_str());
    } else {
        WriteFileText(path, json);
    }
}

}  // namespace

SampleInstall::SampleInstall(TextView label, TextView engineVersion) : scratch_(label)
{
    standins::SampleInstallOptions options;
    // Under a folder with a blank, as so many installs are ("Program Files", a user's name): a
    // path that reaches a child unquoted then splits apart.
    options.root = scratch_ / L"Mod Games";
    options.engineVersion = Text(engineVersion);
    options.launcherSource = BuiltLauncherPath();
    options.toolSource = StandinPath(L"KorvaneTool.exe");
    options.editorSource = StandinPath(L"UnrealEditor.exe");
    standins::SampleInstallPaths paths;
    Text error;
    if (!standins::LayOutSampleInstall(options, paths, error)) {
        ADD_FAILURE() << "cannot lay out the sample install: " << TextToUtf8(error);
    }
    gameDirectory_ = paths.gameDirectory;
    editorRoot_ = paths.editorRoot;
    sdkPath_ = paths.sdkPath;
    buildId_ = paths.buildId;
    for (const standins::ModRecord& mod : paths.mods) {
        modPackages_.push_back(mod.package);
        modIds_.push_back(mod.id);
        modNames_.push_back(mod.name);
    }
}

SampleInstall::~SampleInstall()
{
    const Text selection = SelectionFolder(editorRoot_);
    if (!selection.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(std::filesystem::path(selection), ignored);
    }
}

Text SampleInstall::Launcher() const
{
    return JoinPath(editorRoot_, L"KorvaneEditor.exe");
}

Text SampleInstall::ToolPath() const
{
    return JoinPath(editorRoot_, L"Engine\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe");
}

Text SampleInstall::EditorExe() const
{
    return JoinPath(editorRoot_, L"Engine\\Binaries\\Win64\\UnrealEditor.exe");
}

void SampleInstall::SetToolScenario(TextView json) const
{
    WriteOrRemove(JoinPath(ParentPath(ToolPath()), L"KorvaneTool.scenario.json"), json);
}

void SampleInstall::SetEditorScenario(TextView json) const
{
    WriteOrRemove(JoinPath(ParentPath(EditorExe()), L"UnrealEditor.scenario.json"), json);
}

std::vector<JsonValue> SampleInstall::ToolCalls() const
{
    return ReadJsonLines(JoinPath(ParentPath(ToolPath()), L"KorvaneTool.calls.jsonl"));
}

std::vector<JsonValue> SampleInstall::EditorRecords() const
{
    return ReadJsonLines(JoinPath(ParentPath(EditorExe()), L"UnrealEditor.record.jsonl"));
}

Text SampleInstall::WorkspaceFolder() const
{
    return JoinPath(gameDirectory_, L"Saved\\Korvane\\Workspaces");
}

Text SampleInstall::Workspace(size_t index) const
{
    return JoinPath(WorkspaceFolder(), ModId(index));
}

std::vector<JsonValue> ReadJsonLines(TextView path)
{
    std::vector<JsonValue> values;
    const Bytes bytes = ReadFileBytes(path);
    size_t start = 0;
    while (start < bytes.size()) {
        size_t end = bytes.find('\n', start);
        if (end == Bytes::npos) {
            end = bytes.size();
        }
        const BytesView line = BytesView(bytes).substr(start, end - start);
        if (!line.empty()) {
            try {
                values.push_back(ParseJson(line));
            } catch (const std::exception& error) {
                ADD_FAILURE() << "not a JSON line (" << error.what() << "): " << line;
            }
        }
        start = end + 1;
    }
    return values;
}

}  // namespace korvane::testing
