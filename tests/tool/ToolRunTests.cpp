// Runs of the stand-in tool in a sample install. RunTool: what comes back for each way a run
// can end, that the tool and everything it started are gone afterwards, and that no temporary
// file is left. -KorvaneLauncherCheck: the one `sdk-info` run it makes and its verdict, and that it
// shows nothing. Workspace preparation and the source-conflict dialog: what lands in the launch
// context, what the start-up window is told, what the tool was asked, which box is shown and how
// its answers steer the tool.
#include "MessageBoxes.h"
#include "SampleInstall.h"
#include "ToolCalls.h"

#include "context/UiLanguage.h"
#include "foundation/Paths.h"
#include "host/LaunchSelection.h"
#include "TestSupport.h"
#include "tool/LauncherCheck.h"
#include "tool/ToolCommand.h"
#include "tool/ToolMessages.h"
#include "tool/ToolRun.h"
#include "tool/WorkspacePreparation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>
#include <utility>

namespace korvane {
namespace {

using testing::SampleInstall;
using CacheStates = std::vector<std::pair<std::int32_t, bool>>;

enum class Stop { None, CancelWhileRunning, TimeLimit };

TEST(RunTool, EveryWayARunEndsAndTheArgumentsItPasses)
{
    struct Row { Text scenario; Stop stop; std::uint32_t exitCode; const char* output /* nullptr: any */; Text error; };
    const Text flood = L"{\"*\":{\"exitCode\":2,\"stdout\":\"\",\"stderr\":\"" + Text(10000, L'x') + L"\"}}";
    const Row rows[] = {
        {LR"({"*":{"exitCode":3,"stdout":"out","stderr":"\u00e9 on stderr"}})", Stop::None, 3, "out", L"\x00E9 on stderr"},
        {LR"({"*":{"exitCode":3,"stdout":"","stderr":""}})", Stop::None, 3, "", L"KorvaneTool failed (exit code 3)."},
        {LR"({"*":{"exitCode":4,"stdout":"fallback","stderr":"broken","invalidUtf8":"stderr"}})", Stop::None, 4, nullptr,
            L"fallback"},
        {flood, Stop::None, 2, nullptr, Text(8192, L'x')},
        {LR"({"*":{"exitCode":0,"stdout":"{}","stdoutMiB":9}})", Stop::None, 0, "", L""},  // over 8 MiB: empty
        {LR"({"*":{"exitCode":6,"stdout":"words","stderrMiB":9}})", Stop::None, 6, nullptr, L"words"},
        // A normal end takes a grandchild along, which held the output files; warnings are no error.
        {LR"({"*":{"exitCode":0,"stdout":"{\"ok\":true}","stderr":"warning","grandchild":true}})", Stop::None, 0,
            "{\"ok\":true}", L""},
        {LR"({"*":{"hang":true,"grandchild":true}})", Stop::TimeLimit, 1223, "",
            L"Preparation timed out. Retry or check the tool log."},
        {LR"({"*":{"hang":true,"grandchild":true}})", Stop::CancelWhileRunning, 1223, "", L"Operation cancelled."},
    };
    SampleInstall install(L"run");
    const Text sdkInfo = L"sdk-info --sdk " + QuoteCommandArgument(install.SdkPath()) + L" --editor-root "
        + QuoteCommandArgument(install.EditorRoot());
    const auto tempBefore = testing::LauncherTempFiles();
    for (const Row& row : rows) {
        SCOPED_TRACE(TextToUtf8(row.scenario.substr(0, 100)) + " stop " + std::to_string(static_cast<int>(row.stop)));
        install.SetToolScenario(row.scenario);
        const std::size_t callsBefore = install.ToolCalls().size();
        std::atomic<bool> cancel{false};
        const ToolInvocation invocation{.editorRoot = install.EditorRoot(), .arguments = sdkInfo, .cancelFlag = &cancel,
            .progressFile = {}, .progressCallback = {}, .timingReport = {}};
        // Cancels once the tool has logged that it runs; RunTool must notice within its poll.
        std::thread canceller([&] {
            while (row.stop == Stop::CancelWhileRunning && !cancel) {
                if (install.ToolCalls().size() > callsBefore) {
                    cancel = true;
                }
                Sleep(10);
            }
        });
        const ULONGLONG start = GetTickCount64();
        const ToolResult result = RunTool(invocation, row.stop == Stop::TimeLimit ? 400 : kToolTimeLimitMs);
        cancel = true;  // ends the canceller whatever happened
        canceller.join();
        if (row.stop == Stop::TimeLimit) {
            EXPECT_GE(GetTickCount64() - start, 400u);
        }
        EXPECT_EQ(result.exitCode, row.exitCode);
        EXPECT_EQ(result.error, row.error);
        if (row.output) {
            EXPECT_EQ(result.output, row.output);
        }
        std::vector<JsonValue> calls = install.ToolCalls();
        calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(callsBefore));
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(FindJsonMember(calls[0], L"cwd").text, install.EditorRoot()) << "the child runs in the install";
        testing::ExpectNoToolRunning(calls);
        EXPECT_EQ(testing::LauncherTempFiles(), tempBefore);
    }
    EXPECT_EQ(kToolTimeLimitMs, 600000u) << "the shipped limit of every tool run; the rows above take their own";
    // Without a game the preview is asked of the SDK alone (with one, see the preview loads).
    EXPECT_EQ(BuildSdkArguments(L"C:\\Sdk\\Game.kvsdk", L""), L" --sdk \"C:\\Sdk\\Game.kvsdk\"");
    // Every path is quoted, a file without a name too; the answer to a conflict is a bare word.
    EXPECT_EQ(BuildToolCommand(ToolCommandKind::Prepare,
                  {.sdk = L"C:\\S\\G.kvsdk", .editorRoot = L"C:\\My Games\\E", .selectionFile = L"C:\\T e\\1.tmp",
                      .modFile = L"C:\\M\\A.umod", .progressFile = L"C:\\T e\\2.tmp"}),
        L"prepare --sdk \"C:\\S\\G.kvsdk\" --editor-root \"C:\\My Games\\E\" --selection-file \"C:\\T e\\1.tmp\""
        L" --mod-file \"C:\\M\\A.umod\" --progress-file \"C:\\T e\\2.tmp\" --timing-report \"\"");
    EXPECT_EQ(BuildToolCommand(ToolCommandKind::ResolveSource,
                  {.sdk = L"C:\\S\\G.kvsdk", .modFile = L"C:\\M\\A.umod", .resolution = L"workspace"}),
        L"resolve-source --sdk \"C:\\S\\G.kvsdk\" --mod-file \"C:\\M\\A.umod\" --resolution workspace");
}

TEST(RunTool, MissingToolIsKV4210AfterTheCancelCheck)
{
    // A folder where the tool should be is no tool either.
    testing::ScratchDirectory empty(L"run-missing");
    testing::MakeDirectories(empty / L"Plugins\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe");
    std::atomic<bool> cancel{false};
    const ToolInvocation invocation{.editorRoot = empty.Path(), .arguments = L"sdk-info", .cancelFlag = &cancel,
        .progressFile = {}, .progressCallback = {}, .timingReport = {}};
    const testing::ScopedUiLanguage chinese(L"zh-Hans");  // the messages come in the language of the moment
    ToolResult result = RunTool(invocation);
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_EQ(result.error, kToolMissingMessage.In(true));

    cancel = true;
    result = RunTool(invocation);
    EXPECT_EQ(result.exitCode, 1223u);
    EXPECT_EQ(result.error, kToolCancelledMessage.In(true)) << "the cancel is looked at before the tool";
}

// The checks before the tool (install, SDK selection) and the exit code of a failed check are
// the entry's and the host's; here, the one tool run the check takes and its verdict.
TEST(LauncherCheck, OneSdkInfoRunDecidesAndAToolOverTheLimitIsKilled)
{
    SampleInstall install(L"check");
    const testing::RunEnd end = testing::WaitAnsweringBox(testing::ChildProcess::Start(install.Launcher(),
        {L"-KorvaneLauncherCheck", L"-sdk=" + install.SdkPath()}, {.currentDirectory = install.EditorRoot()}));
    EXPECT_FALSE(end.box.has_value()) << "the check showed a box: " << TextToUtf8(end.box ? end.box->text : Text());
    EXPECT_EQ(end.exitCode, 0u);
    const std::vector<JsonValue> calls = install.ToolCalls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(testing::Argv(calls[0]), (std::vector<Text>{install.ToolPath(), L"sdk-info", L"--sdk", install.SdkPath(),
                                           L"--editor-root", install.EditorRoot()}));
    EXPECT_EQ(FindJsonMember(calls[0], L"cwd").text, install.EditorRoot());

    install.SetToolScenario(LR"({"sdk-info":{"exitCode":17,"stderr":"this SDK does not suit"}})");
    EXPECT_FALSE(RunLauncherCheck(install.EditorRoot(), install.SdkPath(), 60000));
    install.SetToolScenario(LR"({"sdk-info":{"hang":true}})");
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(kLauncherCheckTimeLimitMs, 180000u) << "the shipped limit; this run takes its own";
    EXPECT_FALSE(RunLauncherCheck(install.EditorRoot(), install.SdkPath(), 3000));
    EXPECT_GE(GetTickCount64() - start, 3000u);
    const std::vector<JsonValue> hung = install.ToolCalls();
    ASSERT_EQ(hung.size(), 3u) << "the hanging run never started";
    const DWORD toolId = testing::ProcessIdsOf({hung.back()}).front();
    const UniqueHandle tool(OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, toolId));
    const bool killed = !tool || WaitForSingleObject(tool.Get(), 5000) == WAIT_OBJECT_0;
    if (!killed) {
        TerminateProcess(tool.Get(), 1);  // nor does the test leave it hanging
    }
    EXPECT_TRUE(killed) << "the tool was not killed";
}

// What the start-up window would have been told, in order.
struct Observed {
    std::vector<Text> phases;
    CacheStates cacheStates;

    PreparationProgress Progress()
    {
        return {[this](TextView line) { phases.emplace_back(line); },
            [this](std::int32_t hit, bool verified) { cacheStates.emplace_back(hit, verified); }};
    }
};

// A preparation of the sample install's SDK and game, for the Mod package `modFile` (-1: none)
// or the Mod id `selectedMod`.
struct Preparation {
    Preparation(const SampleInstall& install, int modFile, Text mod = {})
        : editorRoot(install.EditorRoot()),
          sdk(install.SdkPath()),
          game(install.GameDirectory()),
          package(modFile < 0 ? Text() : install.ModPackage(static_cast<std::size_t>(modFile))),
          selectedMod(std::move(mod))
    {
    }
    bool Run(const PreparationProgress& progress, Text& error)
    {
        return PrepareWorkspace({editorRoot, sdk, game, package, selectedMod, cancel}, progress, outcome, error);
    }

    Text editorRoot, sdk, game, package, selectedMod;
    const std::atomic<bool>* cancel = nullptr;
    PreparationOutcome outcome;
};

TEST(PrepareWorkspace, EveryOutcomeWithItsMessageStateAndFiles)
{
    SampleInstall install(L"prepare-fail");
    enum class Gone { None, Sdk, Tool };
    // `error` empty: the preparation succeeds (the wording of every message is checked with the other
    // texts; here, which one a run gives); `states`: the cache states the window is given.
    struct Row { Text scenario; int modFile; Text selectedMod; Gone gone; bool chinese; Text error; CacheStates states; };
    const CacheStates failed = {{-1, false}};  // reset when the tool starts; verified only by a successful run
    const CacheStates hit = {{-1, false}, {1, true}};
    const Row rows[] = {
        {L"", 0, L"", Gone::Sdk, false, kNoSdkMessage.In(false), {}},
        {L"", 0, L"", Gone::Tool, false, kPreparationToolMissingMessage.In(false), {}},
        {L"", -1, L"mod.ffffffffffffffffffffffffffffffff", Gone::None, false, kModSourceNotFoundMessage.In(false), {}},
        // This sentence exists in English only.
        {LR"({"list-sources":{"stdout":"not a listing"}})", -1, install.ModId(0), Gone::None, true,
            kInvalidSourceListingMessage.In(true), {}},
        {LR"({"prepare":{"exitCode":7,"stderr":"KV3999: the tool's own reason"}})", 0, L"", Gone::None, false,
            L"KV3999: the tool's own reason", failed},
        // The failed run above got as far as making the SDK cache: from here on it is found.
        // Each rule of the answer has its case in the selection file tests.
        {LR"({"prepare":{"selectionFile":"twoLines"}})", 0, L"", Gone::None, true, kWorkspaceCheckMessage.In(true), hit},
        // An answer for another Mod.
        {L"", 0, install.ModId(2), Gone::None, false, kWorkspaceCheckMessage.In(false), hit},
        {L"", 0, L"", Gone::None, false, L"", hit},  // the id comes from the tool's answer
        // A Mod id is looked up; stages slower than the poll, so that each one is seen.
        {LR"({"prepare":{"stageDelayMs":200}})", -1, install.ModId(0), Gone::None, false, L"", hit},
        // Never reported: unknown when done.
        {LR"({"prepare":{"cacheHit":-1}})", 0, L"", Gone::None, false, L"", {{-1, false}, {-1, true}}},
        // A progress file over its limit costs only the live text; stages slower than the poll, so that
        // it is read.
        {LR"({"prepare":{"progress":"oversized","stageDelayMs":150}})", 0, L"", Gone::None, false, L"", hit},
    };
    const auto tempBefore = testing::LauncherTempFiles();
    const Text savedSelection = LaunchSelectionPath(install.EditorRoot());
    for (const Row& row : rows) {
        SCOPED_TRACE(TextToUtf8(row.scenario + L" " + row.selectedMod + L" " + row.error.substr(0, 20)));
        install.SetToolScenario(row.scenario);
        DeleteFileW(savedSelection.c_str());
        Preparation preparation(install, row.modFile, row.selectedMod);
        if (row.gone == Gone::Sdk) {
            preparation.sdk.clear();
        }
        if (row.gone == Gone::Tool) {
            preparation.editorRoot = install.Root();  // an install without the tool: the preparation's own words
        }
        const std::size_t callsBefore = install.ToolCalls().size();
        Observed observed;
        Text error;
        bool prepared = false;
        {
            const testing::ScopedUiLanguage language(row.chinese ? L"zh-Hans" : L"en");
            prepared = preparation.Run(observed.Progress(), error);
        }
        EXPECT_EQ(prepared, row.error.empty());
        EXPECT_EQ(error, row.error);
        EXPECT_EQ(preparation.outcome.workspace.has_value(), prepared) << "judged as in the selection file tests";
        const bool lookedUp = row.modFile < 0 && prepared;
        EXPECT_EQ(preparation.outcome.modFile, row.modFile >= 0 || lookedUp ? install.ModPackage(0) : Text());
        const std::vector<JsonValue> calls = install.ToolCalls();
        ASSERT_EQ(calls.size(), callsBefore + (row.gone == Gone::None ? 1 : 0) + (lookedUp ? 1 : 0))
            << "a package needs no lookup";
        if (lookedUp) {
            const std::vector<Text> listSources = {install.ToolPath(), L"list-sources", L"--sdk", install.SdkPath(),
                L"--editor-root", install.EditorRoot(), L"--game-root", install.GameDirectory()};
            EXPECT_EQ(testing::Argv(calls[callsBefore]), listSources);
            const std::vector<Text> prepare = testing::Argv(calls.back());
            ASSERT_EQ(prepare.size(), 16u);
            const std::vector<Text> expected = {install.ToolPath(), L"prepare", L"--sdk", install.SdkPath(),
                L"--editor-root", install.EditorRoot(), L"--selection-file", prepare[7], L"--game-root",
                install.GameDirectory(), L"--mod-file", install.ModPackage(0), L"--progress-file", prepare[13],
                L"--timing-report", prepare[15]};
            EXPECT_EQ(prepare, expected);
            // The tool's progress reaches the phase line while it runs, each line once, with the cache state
            // it reported (the lines' wording is checked with the progress file).
            const Text cacheLine = L"Verifying the local SDK cache… · SDK cache hit, verifying";
            EXPECT_EQ(std::count(observed.phases.begin(), observed.phases.end(), cacheLine), 1);
        }
        EXPECT_EQ(observed.cacheStates, row.states);
        EXPECT_EQ(testing::FileExists(savedSelection), row.states.size() == 2) << "saved after a tool success";
        if (row.scenario.find(L"oversized") != Text::npos) {
            EXPECT_EQ(observed.phases, std::vector<Text>{kPreparingLine.In(false)});
        }
        EXPECT_EQ(testing::LauncherTempFiles(), tempBefore);
    }
}

// Runs `work` on a thread of its own, as the launch does, so that this thread can find the
// question box it shows and press `answer` (when none is expected, Cancel is pressed). Gives the box.
std::optional<testing::MessageBoxSeen> RunAnswering(const std::function<void()>& work, int answer)
{
    const UniqueHandle done(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread thread([&] {
        work();
        SetEvent(done.Get());
    });
    const auto box = testing::WaitForMessageBox(GetCurrentProcessId(), done.Get(), 60000);
    if (box) {
        testing::PressMessageBoxButton(box->window, answer > 0 ? answer : IDCANCEL);
        // Gone before the next search, so that it cannot be found again.
        testing::WaitUntil(nullptr, [&] { return IsWindow(box->window) == FALSE; }, 30000);
        EXPECT_FALSE(testing::WaitForMessageBox(GetCurrentProcessId(), done.Get(), 60000).has_value()) << "a second box";
    }
    thread.join();
    return box;
}

TEST(ConflictDialog, AnswersSteerTheToolAndOnlyTheExactMarkersAsk)
{
    // `answer` 0: no box is shown, kCancelled: nor is one after a cancel; `commands`: the tool runs in
    // order; `error` empty: the preparation succeeds. The question needs the SDK and the Mod package as
    // well, which a preparation always has once it runs `prepare`.
    constexpr int kCancelled = -1;
    struct Row { const wchar_t* scenario; bool chinese; int answer; std::vector<Text> commands; Text error; };
    SampleInstall install(L"conflict");
    const std::vector<Text> settled = {L"prepare", L"resolve-source", L"prepare"};
    const Row rows[] = {
        {LR"({"prepare":{"conflictOnce":"KV3648"}})", false, IDYES, settled, L""},
        {LR"({"prepare":{"conflictOnce":true}})", true, IDNO, settled, L""},
        {LR"({"prepare":{"conflictOnce":true}})", false, IDCANCEL, {L"prepare"},
            L"Mod source conflict for " + install.ModId(0) + L": KV3651: source changed while a workspace exists. "
                + L"Run resolve-source with --resolution workspace or source.\n"},
        // A second refusal after a settled conflict ends it without asking again.
        {LR"({"prepare":{"exitCode":1,"stderr":"Mod source conflict: KV3651: source changed while a workspace exists."}})",
            false, IDYES, settled, L"Mod source conflict: KV3651: source changed while a workspace exists."},
        {LR"({"prepare":{"exitCode":1,"stderr":"KV3651: Source changed while a workspace exists"}})", false, 0,
            {L"prepare"}, L"KV3651: Source changed while a workspace exists"},
        // Cancelled once the tool has ended by itself: its own words, marker included, and yet cancelled.
        {LR"({"prepare":{"exitCode":1,"stageDelayMs":150,"stderr":"KV3651: source changed while a workspace exists"}})",
            false, kCancelled, {L"prepare"}, L"KV3651: source changed while a workspace exists"},
        // A resolve-source that fails ends it with its own message; prepare is not run again.
        {LR"({"prepare":{"conflictOnce":true},"resolve-source":{"exitCode":9,"stderr":"cannot settle"}})", false, IDNO,
            {L"prepare", L"resolve-source"}, L"cannot settle"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(TextToUtf8(row.scenario));
        install.SetToolScenario(row.scenario);
        DeleteFileW(JoinPath(ParentPath(install.ToolPath()), L"KorvaneTool.scenario.json.conflict-state").c_str());
        const std::size_t callsBefore = install.ToolCalls().size();
        Preparation preparation(install, 0);
        std::atomic<bool> cancel{false};
        preparation.cancel = &cancel;
        // Its stages are slower than the poll, so that the run is still going when its first line arrives.
        const auto cancelOnceTheToolEnded = [&](TextView) {
            if (row.answer == kCancelled && !cancel.load() && install.ToolCalls().size() > callsBefore) {
                const DWORD toolId = testing::ProcessIdsOf(install.ToolCalls()).back();
                const UniqueHandle tool(OpenProcess(SYNCHRONIZE, FALSE, toolId));
                WaitForSingleObject(tool.Get(), 30000);
                cancel.store(true);
            }
        };
        bool prepared = false;
        Text error;
        const testing::ScopedUiLanguage language(row.chinese ? L"zh-Hans" : L"en");
        const auto box =
            RunAnswering([&] { prepared = preparation.Run({cancelOnceTheToolEnded, {}}, error); }, row.answer);
        ASSERT_EQ(box.has_value(), row.answer > 0);
        if (box) {
            EXPECT_EQ(box->title, kConflictCaption.In(row.chinese));
            EXPECT_EQ(box->text, kConflictBody.In(row.chinese));
        }
        EXPECT_EQ(prepared, row.error.empty());
        EXPECT_EQ(error, row.error);

        const std::vector<JsonValue> all = install.ToolCalls();
        const std::vector<JsonValue> calls(all.begin() + static_cast<std::ptrdiff_t>(callsBefore), all.end());
        std::vector<Text> commands;
        for (const JsonValue& call : calls) {
            commands.push_back(testing::Argv(call).at(1));
        }
        ASSERT_EQ(commands, row.commands);
        if (calls.size() > 1) {
            const std::vector<Text> resolve = {install.ToolPath(), L"resolve-source", L"--sdk", install.SdkPath(),
                L"--mod-file", install.ModPackage(0), L"--resolution", row.answer == IDYES ? L"workspace" : L"source"};
            EXPECT_EQ(testing::Argv(calls[1]), resolve);
        }
        if (calls.size() == 3) {
            EXPECT_EQ(testing::Argv(calls[2]), testing::Argv(calls[0])) << "the second prepare: same arguments and files";
        }
    }
}

}  // namespace
}  // namespace korvane
