// prepare: the one command with live progress. It rewrites the progress file in place through
// the stage words, builds the workspace below the game root (or beside the SDK without one),
// writes the timing report and answers through the selection file.
#include "tool/ToolCommands.h"

#include "tool/SdkCatalogue.h"

#include "common/StandinSupport.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"

namespace korvane::standins {
namespace {

struct StageRecord {
    Text stage;
    ULONGLONG ms = 0;
    int cacheHit = -1;
};

Text CacheHitJson(int cacheHit)
{
    return cacheHit > 0 ? Text(L"true") : Text(L"false");
}

// Truncates and rewrites the same file, as a tool that reports progress does.
void RewriteInPlace(TextView path, BytesView bytes)
{
    UniqueFileHandle file(CreateFileW(Text(path).c_str(), GENERIC_WRITE,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file) {
        WriteAll(file.Get(), bytes);
    }
}

class PrepareRun {
public:
    PrepareRun(const ToolCall& call, const ToolScenario& scenario)
        : call_(call), scenario_(scenario), mode_(scenario.TextOf(L"progress")),
          delayMs_(static_cast<DWORD>(scenario.Number(L"stageDelayMs", 0))), stageStart_(GetTickCount64())
    {
    }

    void Stage(TextView word)
    {
        CloseStage();
        current_ = word;
        const Text& progress = OptionValue(call_, L"progress-file");
        if (progress.empty()) {
            return;
        }
        Text json = L"{\"stage\":" + QuoteJsonText(word);
        if (cacheHit_ >= 0) {
            json += L",\"cacheHit\":" + CacheHitJson(cacheHit_);
        }
        Bytes bytes;
        if (mode_ == L"malformed") {
            bytes = TextToUtf8(json + L",");
        } else if (mode_ == L"oversized") {
            bytes = TextToUtf8(json + L",\"padding\":\"") + Bytes(70000, 'x') + "\"}";
        } else {
            bytes = TextToUtf8(json + L"}");
        }
        if (mode_ == L"dieMidWrite" && word == L"materialize") {
            // The tool dies with the file half rewritten.
            RewriteInPlace(progress, BytesView(bytes).substr(0, bytes.size() / 2));
            TerminateProcess(GetCurrentProcess(), scenario_.ExitCode().value_or(0xC0000005));
        }
        RewriteInPlace(progress, bytes);
        if (delayMs_ > 0) {
            Sleep(delayMs_);
        }
    }

    // The SDK cache is known from the verification on.
    void SetCacheHit(int cacheHit) { cacheHit_ = cacheHit; }

    CommandOutcome Finish(CommandOutcome outcome)
    {
        CloseStage();
        const Text& timing = OptionValue(call_, L"timing-report");
        if (!timing.empty()) {
            Text json = L"{\"tool\":\"KorvaneTool\",\"command\":\"prepare\",\"stages\":[";
            ULONGLONG total = 0;
            for (size_t index = 0; index < records_.size(); ++index) {
                const StageRecord& record = records_[index];
                json += (index == 0 ? L"" : L",") + Text(L"{\"stage\":") + QuoteJsonText(record.stage) + L",\"ms\":" +
                    DecimalText(record.ms);
                if (record.cacheHit >= 0) {
                    json += L",\"cacheHit\":" + CacheHitJson(record.cacheHit);
                }
                json += L"}";
                total += record.ms;
            }
            json += L"],\"totalMs\":" + DecimalText(total) + L",\"exitCode\":" + DecimalText(outcome.exitCode) + L"}";
            WriteWholeFile(timing, TextToUtf8(json));
        }
        return outcome;
    }

private:
    void CloseStage()
    {
        const ULONGLONG now = GetTickCount64();
        if (!current_.empty()) {
            records_.push_back({current_, now - stageStart_, current_ == L"cacheVerify" ? cacheHit_ : -1});
        }
        current_.clear();
        stageStart_ = now;
    }

    const ToolCall& call_;
    const ToolScenario& scenario_;
    Text mode_;
    DWORD delayMs_;
    ULONGLONG stageStart_;
    Text current_;
    int cacheHit_ = -1;
    std::vector<StageRecord> records_;
};

Text WorkspacesFolder(const SdkDocument& sdk, TextView gameRoot)
{
    return JoinPath(gameRoot.empty() ? sdk.folder : NormalizePath(gameRoot), L"Saved\\Korvane\\Workspaces");
}

// The workspace of one Mod: its Mod project, the authoring project and a content folder.
bool BuildWorkspace(const ToolCall& call, const SdkDocument& sdk, const ModRecord& mod, TextView folder, Text& error)
{
    const Text editorRoot(OptionValue(call, L"editor-root"));
    const Text uproject = JoinPath(folder, L"KorvaneSDK.uproject");
    const Text modProject = JoinPath(folder, L"Mod.kmodproject");
    Bytes projectBytes =
        ReadWholeFile(JoinPath(editorRoot, L"Engine\\Korvane\\Resources\\AuthoringTemplate\\KorvaneSDK.uproject"), 1048576);
    if (projectBytes.empty()) {
        projectBytes = "{\"FileVersion\":3,\"EngineAssociation\":\"" +
            TextToUtf8(MajorMinor(sdk.Member(L"engineVersion"))) + "\",\"Plugins\":[{\"Name\":\"Korvane\",\"Enabled\":true}]}";
    }
    const Text project = L"{\"schemaVersion\":1,\"modId\":" + QuoteJsonText(mod.id) + L",\"name\":" +
        QuoteJsonText(mod.name) + L",\"sourcePackage\":" + QuoteJsonText(mod.package) + L",\"sdkFile\":" +
        QuoteJsonText(sdk.path) + L",\"gameRoot\":" + QuoteJsonText(OptionValue(call, L"game-root")) +
        L",\"editorRoot\":" + QuoteJsonText(editorRoot) + L"}";
    if (!MakeFolders(JoinPath(folder, L"Content\\Mod")) || !WriteWholeFile(uproject, projectBytes) ||
        !WriteWholeFile(modProject, TextToUtf8(project))) {
        error = L"Could not build the Mod workspace in " + Text(folder);
        return false;
    }
    return true;
}

void WriteSelectionFile(TextView path, TextView folder, TextView modId, TextView variant)
{
    if (variant == L"missing") {
        DeleteFileW(Text(path).c_str());
        return;
    }
    const Bytes first = TextToUtf8(JoinPath(folder, L"Mod.kmodproject")) + "\n";
    const Bytes second = TextToUtf8(JoinPath(folder, L"KorvaneSDK.uproject")) + "\n";
    const Bytes third = TextToUtf8(variant == L"malformed" ? modId.substr(0, 35) : modId) + "\n";
    Bytes bytes = first + second + third;
    if (variant == L"twoLines") {
        bytes = first + second;
    } else if (variant == L"short") {
        bytes = Bytes(19, 'x') + "\n";
    } else if (variant == L"oversized") {
        bytes.resize(4096, '\n');
    }
    WriteWholeFile(path, bytes);
}

}  // namespace

CommandOutcome RunPrepare(const ToolCall& call, const ToolScenario& scenario, bool failing)
{
    PrepareRun run(call, scenario);
    Text error;
    SdkDocument sdk;
    run.Stage(L"sdkMetadata");
    if (!LoadSdk(OptionValue(call, L"sdk"), sdk, error)) {
        return run.Finish(Failure(error));
    }
    run.Stage(L"sdkVerify");
    if (!CheckEditorBuild(sdk, OptionValue(call, L"editor-root"), error)) {
        return run.Finish(Failure(error));
    }
    const Text& gameRoot = OptionValue(call, L"game-root");
    if (!gameRoot.empty() && !IsDirectory(gameRoot)) {
        return run.Finish(Failure(L"The game root does not exist: " + gameRoot));
    }
    // Computing the revision reports the same stage twice, with the same bytes.
    run.Stage(L"sdkHash");
    run.Stage(L"sdkHash");

    const Text workspaces = WorkspacesFolder(sdk, gameRoot);
    const Text cacheMarker = JoinPath(ParentPath(workspaces),
        L"SdkCache\\" + sdk.Member(L"gameId") + L"-" + sdk.Member(L"editorBuildId") + L".ready");
    const int cacheHit = scenario.CacheHit().value_or(IsRegularFile(cacheMarker) ? 1 : 0);
    run.SetCacheHit(cacheHit);
    run.Stage(L"cacheVerify");
    run.Stage(L"materialize");
    MakeFolders(ParentPath(cacheMarker));
    WriteWholeFile(cacheMarker, TextToUtf8(sdk.path));

    run.Stage(L"sourceInspect");
    if (failing) {
        return run.Finish({});
    }
    const std::optional<ModRecord> mod = ReadPackage(OptionValue(call, L"mod-file"));
    if (!mod) {
        return run.Finish(Failure(L"The Mod source package was not found or is damaged: " + OptionValue(call, L"mod-file")));
    }
    if (const std::optional<Text> marker = TakeConflictMarker(scenario)) {
        CommandOutcome conflict = Failure(L"Mod source conflict for " + mod->id + L": " + *marker +
            L". Run resolve-source with --resolution workspace or source.");
        conflict.settled = true;
        return run.Finish(conflict);
    }
    const Text folder = JoinPath(workspaces, mod->id);
    run.Stage(L"workspacePrepare");
    if (!BuildWorkspace(call, sdk, *mod, folder, error)) {
        return run.Finish(Failure(error));
    }
    run.Stage(L"pluginsApply");
    run.Stage(L"complete");
    WriteSelectionFile(OptionValue(call, L"selection-file"), folder, mod->id, scenario.TextOf(L"selectionFile"));
    return run.Finish({});
}

}  // namespace korvane::standins
