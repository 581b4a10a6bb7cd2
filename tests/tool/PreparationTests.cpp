// Workspace preparation and the source-conflict dialog against a sample install with the
// stand-in tool: what lands in the launch context, what the start-up window is told, what
// the tool was asked, which box is shown and how its answers steer the tool.
#include "MessageBoxes.h"
#include "SampleInstall.h"
#include "ToolCalls.h"

#include "context/UiLanguage.h"
#include "foundation/Paths.h"
#include "host/LaunchSelection.h"
#include "TestSupport.h"
#include "tool/Preparation.h"
#include "tool/ToolCommand.h"
#include "tool/ToolMessages.h"
#include "tool/WorkspacePreparation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <thread>
#include <utility>

namespace korvane {
namespace {

using testing::SampleInstall;
using CacheStates = std::vector<std::pair<std::int32_t, bool>>;

// The wording of every message is checked with the other texts; here, which one a run gives.
const Text kWorkspaceCheck = kWorkspaceCheckMessage.In(false);
const Text kPreparing = kPreparingLine.In(false);

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
        return PrepareWorkspace({editorRoot, sdk, game, package, selectedMod, nullptr}, progress, outcome, error);
    }

    Text editorRoot, sdk, game, package, selectedMod;
    PreparationOutcome outcome;
};

TEST(PrepareWorkspace, ModIdIsResolvedPreparedAndAnswered)
{
    SampleInstall install(L"prepare-ok");
    // Stages slower than the poll, so that each one is seen.
    install.SetToolScenario(LR"({"prepare":{"stageDelayMs":200}})");
    Preparation preparation(install, -1, install.ModId(1));
    Observed observed;
    Text error;
    ASSERT_TRUE(preparation.Run(observed.Progress(), error)) << TextToUtf8(error);

    EXPECT_EQ(preparation.outcome.modFile, install.ModPackage(1)) << "filled from list-sources";
    ASSERT_TRUE(preparation.outcome.workspace);
    EXPECT_EQ(preparation.outcome.workspace->modProjectFile, JoinPath(install.Workspace(1), L"Mod.kmodproject"));
    EXPECT_EQ(preparation.outcome.workspace->editorProject, JoinPath(install.Workspace(1), L"KorvaneSDK.uproject"));
    EXPECT_EQ(preparation.outcome.workspace->modId, install.ModId(1));
    ASSERT_FALSE(observed.phases.empty());
    EXPECT_EQ(observed.phases.front(), kPreparing);
    // The revision line is rewritten with the same bytes: shown once. A first preparation creates the cache.
    for (const wchar_t* line : {L"Reading SDK metadata…", L"Computing the SDK content revision…",
             L"Verifying the local SDK cache… · Creating the SDK cache",
             L"Preparing the Mod workspace… · Creating the SDK cache"}) {
        EXPECT_EQ(std::count(observed.phases.begin(), observed.phases.end(), Text(line)), 1) << TextToUtf8(line);
    }
    EXPECT_EQ(observed.cacheStates, (CacheStates{{-1, false}, {0, true}}));

    const std::vector<JsonValue> calls = install.ToolCalls();
    ASSERT_EQ(calls.size(), 2u);
    const std::vector<Text> listSources = {install.ToolPath(), L"list-sources", L"--sdk", install.SdkPath(),
        L"--editor-root", install.EditorRoot(), L"--game-root", install.GameDirectory()};
    EXPECT_EQ(testing::Argv(calls[0]), listSources);
    const std::vector<Text> prepare = testing::Argv(calls[1]);
    ASSERT_EQ(prepare.size(), 16u);
    const std::vector<Text> expected = {install.ToolPath(), L"prepare", L"--sdk", install.SdkPath(), L"--editor-root",
        install.EditorRoot(), L"--selection-file", prepare[7], L"--game-root", install.GameDirectory(), L"--mod-file",
        install.ModPackage(1), L"--progress-file", prepare[13], L"--timing-report", prepare[15]};
    EXPECT_EQ(prepare, expected);
    EXPECT_TRUE(StartsWithIgnoringCase(LastPathComponent(prepare[7]), L"KVD"));
    for (const std::size_t index : {7u, 13u, 15u}) {
        EXPECT_FALSE(testing::FileExists(prepare[index])) << "left behind: " << TextToUtf8(prepare[index]);
    }
}

TEST(PrepareWorkspace, EveryOutcomeWithItsMessageStateAndFiles)
{
    SampleInstall install(L"prepare-fail");
    // `error` empty: the preparation succeeds; `verified`: the cache state a successful tool run reports.
    using Verified = std::optional<std::int32_t>;
    struct Row { Text scenario; int modFile; Text selectedMod; bool withSdk, chinese; Text error; Verified verified; };
    const auto none = std::nullopt;
    const Row rows[] = {
        {L"", 0, L"", false, false, kNoSdkMessage.In(false), none},
        {L"", -1, L"mod.ffffffffffffffffffffffffffffffff", true, false, kModSourceNotFoundMessage.In(false), none},
        // This sentence exists in English only.
        {LR"({"list-sources":{"stdout":"not a listing"}})", -1, install.ModId(0), true, true,
            kInvalidSourceListingMessage.In(true), none},
        {LR"({"prepare":{"exitCode":7,"stderr":"KV3999: the tool's own reason"}})", 0, L"", true, false,
            L"KV3999: the tool's own reason", none},
        // A tool that dies while writing its progress file: the half-written file is never shown.
        {LR"({"prepare":{"progress":"dieMidWrite","exitCode":5}})", 0, L"", true, false,
            L"KorvaneTool failed (exit code 5).", none},
        // The failed runs above got as far as making the SDK cache: from here on it is found.
        // Each rule of the answer has its case in the selection file tests.
        {LR"({"prepare":{"selectionFile":"missing"}})", 0, L"", true, false, kWorkspaceCheck, 1},
        {LR"({"prepare":{"selectionFile":"twoLines"}})", 0, L"", true, true, kWorkspaceCheckMessage.In(true), 1},
        {L"", 0, install.ModId(2), true, false, kWorkspaceCheck, 1},  // an answer for another Mod
        {L"", 0, L"", true, false, L"", 1},  // the id comes from the tool's answer
        {LR"({"prepare":{"cacheHit":-1}})", 0, L"", true, false, L"", -1},  // never reported: unknown when done
        // An unreadable progress file costs only the live text.
        {LR"({"prepare":{"progress":"malformed"}})", 0, L"", true, false, L"", 1},
        {LR"({"prepare":{"progress":"oversized"}})", 0, L"", true, false, L"", 1},
    };
    const auto tempBefore = testing::LauncherTempFiles();
    const Text savedSelection = LaunchSelectionPath(install.EditorRoot());
    for (const Row& row : rows) {
        SCOPED_TRACE(TextToUtf8(row.scenario + L" " + row.selectedMod));
        install.SetToolScenario(row.scenario);
        DeleteFileW(savedSelection.c_str());
        Preparation preparation(install, row.modFile, row.selectedMod);
        if (!row.withSdk) {
            preparation.sdk.clear();
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
        EXPECT_EQ(preparation.outcome.workspace.has_value(), prepared);
        if (prepared) {
            EXPECT_EQ(preparation.outcome.workspace->modProjectFile, JoinPath(install.Workspace(0), L"Mod.kmodproject"));
            EXPECT_EQ(preparation.outcome.workspace->editorProject, JoinPath(install.Workspace(0), L"KorvaneSDK.uproject"));
            EXPECT_EQ(preparation.outcome.workspace->modId, install.ModId(0));
        }
        EXPECT_EQ(preparation.outcome.modFile, row.modFile < 0 ? Text() : install.ModPackage(0));
        EXPECT_EQ(install.ToolCalls().size(), callsBefore + (row.withSdk ? 1 : 0)) << "a package needs no lookup";
        // Reset when the tool starts; verified only by a successful run.
        CacheStates states;
        if (row.withSdk && row.modFile >= 0) {
            states.emplace_back(-1, false);
        }
        if (row.verified) {
            states.emplace_back(*row.verified, true);
        }
        EXPECT_EQ(observed.cacheStates, states);
        EXPECT_EQ(testing::FileExists(savedSelection), row.verified.has_value()) << "saved after a tool success";
        for (const Text& phase : observed.phases) {
            EXPECT_EQ(phase.find(L"Preparing the Mod…"), Text::npos) << "a broken progress file showed as a line";
            EXPECT_TRUE(row.verified != -1 || phase.find(L" · ") == Text::npos) << "a cache suffix without a state";
        }
        if (row.verified && row.scenario.find(L"\"progress\"") != Text::npos) {
            EXPECT_EQ(observed.phases, std::vector<Text>{kPreparing});
        }
        EXPECT_EQ(testing::LauncherTempFiles(), tempBefore);
    }

    // The tool goes missing: the preparation's own words, with "complete".
    install.SetToolScenario(L"");
    ASSERT_TRUE(DeleteFileW(install.ToolPath().c_str()));
    Preparation noTool(install, 0);
    Observed observed;
    Text error;
    EXPECT_FALSE(noTool.Run(observed.Progress(), error));
    EXPECT_EQ(error, kPreparationToolMissingMessage.In(false));
}

// Runs `work` on a thread of its own, as the launch does, so that this thread can find the
// question box it shows and press `answer` (0: none expected; Cancel is pressed). Gives the box.
std::optional<testing::MessageBoxSeen> RunAnswering(const std::function<void()>& work, int answer)
{
    const UniqueHandle done(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread thread([&] {
        work();
        SetEvent(done.Get());
    });
    const auto box = testing::WaitForMessageBox(GetCurrentProcessId(), done.Get(), 60000);
    if (box) {
        for (const int button : {IDYES, IDNO, IDCANCEL}) {
            EXPECT_NE(GetDlgItem(box->window, button), nullptr) << button;
        }
        testing::PressMessageBoxButton(box->window, answer != 0 ? answer : IDCANCEL);
        // Gone before the next search, so that it cannot be found again.
        const ULONGLONG deadline = GetTickCount64() + 30000;
        while (IsWindow(box->window) && GetTickCount64() < deadline) {
            Sleep(10);
        }
        EXPECT_FALSE(testing::WaitForMessageBox(GetCurrentProcessId(), done.Get(), 60000).has_value()) << "a second box";
    }
    thread.join();
    return box;
}

TEST(ConflictDialog, AnswersSteerTheToolAndOnlyTheExactMarkersAsk)
{
    // `answer` 0: no box is shown; `commands`: the tool runs in order; `error` empty: the preparation succeeds.
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
        bool prepared = false;
        Text error;
        const testing::ScopedUiLanguage language(row.chinese ? L"zh-Hans" : L"en");
        const auto box = RunAnswering([&] { prepared = preparation.Run({}, error); }, row.answer);
        ASSERT_EQ(box.has_value(), row.answer != 0);
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
        EXPECT_EQ(preparation.outcome.workspace.has_value(), row.error.empty());
    }
}

TEST(ConflictDialog, NoQuestionWithoutPackageOrSdk)
{
    SampleInstall install(L"conflict-empty");
    install.SetToolScenario(LR"({"*":{"exitCode":1,"stderr":"KV3648: source changed outside the Editor"}})");
    const Text arguments = BuildToolCommand(ToolCommandKind::Prepare,
        {.sdk = install.SdkPath(), .editorRoot = install.EditorRoot(), .selectionFile = L"x", .modFile = L"y",
            .progressFile = L"p", .timingReport = L"t"});
    const auto box = RunAnswering(
        [&] {
            const Text root = install.EditorRoot();
            EXPECT_EQ(RunPreparation(root, install.SdkPath(), L"", arguments, nullptr, L"", {}, L"").error,
                L"KV3648: source changed outside the Editor");
            EXPECT_EQ(RunPreparation(root, L"", install.ModPackage(0), arguments, nullptr, L"", {}, L"").exitCode, 1u);
        },
        0);
    EXPECT_FALSE(box.has_value());
    EXPECT_EQ(install.ToolCalls().size(), 2u);
}

TEST(ConflictDialog, NoQuestionAfterACancelEvenWhenTheToolNamedAConflict)
{
    SampleInstall install(L"conflict-cancelled");
    // Stages slower than the poll, so that the run is still going when its first line arrives.
    install.SetToolScenario(LR"({"prepare":{"exitCode":1,"stageDelayMs":150,)"
                            LR"("stderr":"KV3651: source changed while a workspace exists"}})");
    testing::ScratchDirectory scratch(L"conflict-cancelled");
    const Text progressFile = scratch / L"progress.json";
    const Text arguments = BuildToolCommand(ToolCommandKind::Prepare,
        {.sdk = install.SdkPath(), .editorRoot = install.EditorRoot(), .selectionFile = scratch / L"selection",
            .modFile = install.ModPackage(0), .progressFile = progressFile, .timingReport = scratch / L"timing.json"});
    std::atomic<bool> cancel{false};
    // The cancel comes once the tool has ended by itself, so that the run ends in the tool's own
    // words, marker included, and yet was cancelled.
    const auto cancelOnceTheToolEnded = [&](TextView) {
        if (!cancel.load()) {
            const UniqueHandle tool(OpenProcess(SYNCHRONIZE, FALSE, testing::ProcessIdsOf(install.ToolCalls()).back()));
            WaitForSingleObject(tool.Get(), 30000);
            cancel.store(true);
        }
    };
    ToolResult result;
    const auto box = RunAnswering(
        [&] {
            result = RunPreparation(install.EditorRoot(), install.SdkPath(), install.ModPackage(0), arguments, &cancel,
                progressFile, cancelOnceTheToolEnded, L"");
        },
        0);
    EXPECT_FALSE(box.has_value());
    EXPECT_EQ(result.error, L"KV3651: source changed while a workspace exists");
    EXPECT_EQ(install.ToolCalls().size(), 1u) << "no resolve-source, no second prepare";
}

}  // namespace
}  // namespace korvane
