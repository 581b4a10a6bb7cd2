// Workspace preparation and the source-conflict dialog against a sample install with the
// stand-in tool: what lands in the launch context, what the start-up window is told, what
// the tool was asked, which box is shown and how its answers steer the tool.
#include "MessageBoxes.h"
#include "SampleInstall.h"
#include "ToolProcess.h"

#include "foundation/Json.h"
#include "foundation/Paths.h"
#include "host/LaunchSelection.h"
#include "launch/LaunchContext.h"
#include "launch/UiLanguage.h"
#include "tool/Preparation.h"
#include "tool/WorkspacePreparation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <utility>

namespace korvane {
namespace {

using testing::SampleInstall;

constexpr wchar_t kWorkspaceCheck[] =
    L"Mod workspace check failed. This Mod may not publish editable source, or its game/SDK Contract does not match. "
    L"Run KorvaneTool.exe prepare for details.";
constexpr wchar_t kConflictText[] =
    L"The source package changed outside the editor.\n\nYes: write the current workspace edits back to the source "
    L"package.\nNo: reload the source package and discard the workspace edits.\nCancel: keep both and stop this "
    L"operation.";

// What the start-up window would have been told, in order.
struct Observed {
    std::vector<Text> phases;
    std::vector<std::pair<std::int32_t, bool>> cacheStates;

    PreparationProgress Progress()
    {
        return {[this](TextView line) { phases.emplace_back(line); },
            [this](std::int32_t hit, bool verified) { cacheStates.emplace_back(hit, verified); }};
    }
};

void PointAtSample(LaunchContext& context, const SampleInstall& install)
{
    context.editorRoot = install.EditorRoot();
    context.launchTarget = install.SdkPath();
    context.preparationSdk = install.SdkPath();
    context.gameDirectory = install.GameDirectory();
}

std::vector<Text> Argv(const JsonValue& call)
{
    std::vector<Text> words;
    for (const JsonValue& word : FindJsonMember(call, L"argv").items) {
        words.push_back(word.text);
    }
    return words;
}

Text Command(const JsonValue& call)
{
    const std::vector<Text> words = Argv(call);
    return words.size() > 1 ? words[1] : Text();
}

// The value behind an option word in a tool's argv.
Text OptionOf(const JsonValue& call, TextView option)
{
    const std::vector<Text> words = Argv(call);
    for (std::size_t index = 0; index + 1 < words.size(); ++index) {
        if (words[index] == option) {
            return words[index + 1];
        }
    }
    return {};
}

TEST(PrepareWorkspace, ModIdIsResolvedPreparedAndAnswered)
{
    SampleInstall install(L"prepare-ok");
    // Stages slower than the poll, so that each one is seen.
    install.SetToolScenario(LR"({"prepare":{"stageDelayMs":200}})");
    const auto tempBefore = testing::LauncherTempFiles();
    LaunchContext context;
    PointAtSample(context, install);
    context.selectedMod = install.ModId(1);
    Observed observed;
    Text error;
    ASSERT_TRUE(PrepareWorkspace(context, observed.Progress(), error)) << TextToUtf8(error);

    EXPECT_EQ(context.modFile, install.ModPackage(1)) << "filled from list-sources";
    EXPECT_EQ(context.modProjectFile, JoinPath(install.Workspace(1), L"Mod.kmodproject"));
    EXPECT_EQ(context.launchTarget, JoinPath(install.Workspace(1), L"KorvaneSDK.uproject"));
    EXPECT_EQ(context.selectedMod, install.ModId(1));
    EXPECT_EQ(context.preparationSdk, install.SdkPath());

    ASSERT_FALSE(observed.phases.empty());
    EXPECT_EQ(observed.phases.front(), L"Checking the SDK and preparing the Mod workspace…");
    const auto seen = [&](TextView line) {
        return std::count(observed.phases.begin(), observed.phases.end(), Text(line));
    };
    EXPECT_EQ(seen(L"Reading SDK metadata…"), 1);
    EXPECT_EQ(seen(L"Computing the SDK content revision…"), 1) << "rewritten with the same bytes: shown once";
    EXPECT_EQ(seen(L"Verifying the local SDK cache… · Creating the SDK cache"), 1)
        << "a first preparation creates the cache";
    EXPECT_EQ(seen(L"Preparing the Mod workspace… · Creating the SDK cache"), 1);
    const std::vector<std::pair<std::int32_t, bool>> firstStates = {{-1, false}, {0, true}};
    EXPECT_EQ(observed.cacheStates, firstStates);

    const std::vector<JsonValue> calls = install.ToolCalls();
    ASSERT_EQ(calls.size(), 2u);
    const std::vector<Text> listSources = {install.ToolPath(), L"list-sources", L"--sdk", install.SdkPath(),
        L"--editor-root", install.EditorRoot(), L"--game-root", install.GameDirectory()};
    EXPECT_EQ(Argv(calls[0]), listSources);
    const std::vector<Text> prepare = Argv(calls[1]);
    ASSERT_EQ(prepare.size(), 16u);
    const std::vector<Text> head(prepare.begin(), prepare.begin() + 6);
    const std::vector<Text> expectedHead = {
        install.ToolPath(), L"prepare", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot()};
    EXPECT_EQ(head, expectedHead);
    EXPECT_EQ(prepare[6], L"--selection-file");
    EXPECT_TRUE(StartsWithIgnoringCase(LastPathComponent(prepare[7]), L"KVD"));
    EXPECT_EQ(prepare[8], L"--game-root");
    EXPECT_EQ(prepare[9], install.GameDirectory());
    EXPECT_EQ(prepare[10], L"--mod-file");
    EXPECT_EQ(prepare[11], install.ModPackage(1));
    EXPECT_EQ(prepare[12], L"--progress-file");
    EXPECT_EQ(prepare[14], L"--timing-report");
    for (const std::size_t index : {7u, 13u, 15u}) {
        EXPECT_FALSE(testing::FileExists(prepare[index])) << "left behind: " << TextToUtf8(prepare[index]);
    }
    EXPECT_EQ(testing::LauncherTempFiles(), tempBefore);
    EXPECT_TRUE(testing::FileExists(LaunchSelectionPath(install.EditorRoot()))) << "the selection is remembered";

    // A second preparation of the same SDK finds its cache.
    install.SetToolScenario(L"");
    LaunchContext again;
    PointAtSample(again, install);
    again.modFile = install.ModPackage(0);
    Observed second;
    ASSERT_TRUE(PrepareWorkspace(again, second.Progress(), error));
    const std::vector<std::pair<std::int32_t, bool>> secondStates = {{-1, false}, {1, true}};
    EXPECT_EQ(second.cacheStates, secondStates);
    EXPECT_EQ(again.selectedMod, install.ModId(0)) << "the id comes from the tool's answer";
    EXPECT_EQ(install.ToolCalls().size(), 3u) << "a given package needs no source lookup";

    // A tool that never reports its cache leaves the state unknown, even when it is done.
    install.SetToolScenario(LR"({"prepare":{"cacheHit":-1}})");
    LaunchContext unreported;
    PointAtSample(unreported, install);
    unreported.modFile = install.ModPackage(0);
    Observed third;
    ASSERT_TRUE(PrepareWorkspace(unreported, third.Progress(), error));
    const std::vector<std::pair<std::int32_t, bool>> unknownStates = {{-1, false}, {-1, true}};
    EXPECT_EQ(third.cacheStates, unknownStates);
    for (const Text& phase : third.phases) {
        EXPECT_EQ(phase.find(L" · "), Text::npos) << "no cache suffix without a cache state";
    }
}

TEST(PrepareWorkspace, BrokenAnswersGiveTheWorkspaceCheckMessage)
{
    SampleInstall install(L"prepare-broken");
    const auto tempBefore = testing::LauncherTempFiles();
    for (const char* variant : {"malformed", "oversized", "short", "twoLines", "missing"}) {
        install.SetToolScenario(L"{\"prepare\":{\"selectionFile\":\"" + Utf8ToText(variant) + L"\"}}");
        LaunchContext context;
        PointAtSample(context, install);
        context.modFile = install.ModPackage(0);
        Observed observed;
        Text error;
        EXPECT_FALSE(PrepareWorkspace(context, observed.Progress(), error)) << variant;
        EXPECT_EQ(error, kWorkspaceCheck) << variant;
        EXPECT_EQ(context.modProjectFile, L"") << variant;
        EXPECT_EQ(context.launchTarget, install.SdkPath()) << variant;
        EXPECT_EQ(context.selectedMod, L"") << variant;
        ASSERT_EQ(observed.cacheStates.size(), 2u) << "the tool succeeded, so the cache is verified";
    }
    EXPECT_TRUE(testing::FileExists(LaunchSelectionPath(install.EditorRoot())))
        << "saved before the answer is judged";

    // An answer for another Mod than the one asked for is refused the same way.
    install.SetToolScenario(L"");
    LaunchContext other;
    PointAtSample(other, install);
    other.modFile = install.ModPackage(0);
    other.selectedMod = install.ModId(2);
    Text error;
    Observed observed;
    EXPECT_FALSE(PrepareWorkspace(other, observed.Progress(), error));
    EXPECT_EQ(error, kWorkspaceCheck);
    EXPECT_EQ(other.selectedMod, install.ModId(2));

    SetUiLanguage(L"zh-Hans");
    install.SetToolScenario(L"{\"prepare\":{\"selectionFile\":\"twoLines\"}}");
    LaunchContext chinese;
    PointAtSample(chinese, install);
    chinese.modFile = install.ModPackage(0);
    EXPECT_FALSE(PrepareWorkspace(chinese, observed.Progress(), error));
    SetUiLanguage(L"en");
    EXPECT_EQ(error,
        L"Mod 工作区校验失败。此 Mod 可能没有公开源码，或其游戏/SDK Contract 不匹配。运行 KorvaneTool.exe prepare 查看详细原因。");
    EXPECT_EQ(testing::LauncherTempFiles(), tempBefore);
}

TEST(PrepareWorkspace, FailuresBeforeAndDuringTheRunCarryTheirOwnMessages)
{
    SampleInstall install(L"prepare-fail");
    const auto tempBefore = testing::LauncherTempFiles();
    Text error;
    Observed observed;

    LaunchContext noSdk;
    noSdk.editorRoot = install.EditorRoot();
    noSdk.modFile = install.ModPackage(0);
    EXPECT_FALSE(PrepareWorkspace(noSdk, observed.Progress(), error));
    EXPECT_EQ(error, L"Direct editing requires a matching .kvsdk file.");

    LaunchContext unknownMod;
    PointAtSample(unknownMod, install);
    unknownMod.selectedMod = L"mod.ffffffffffffffffffffffffffffffff";
    EXPECT_FALSE(PrepareWorkspace(unknownMod, observed.Progress(), error));
    EXPECT_EQ(error, L"KV3654: The selected Mod's editable source was not found.");
    EXPECT_EQ(unknownMod.modFile, L"");

    LaunchContext differentCase;
    PointAtSample(differentCase, install);
    differentCase.selectedMod = L"MOD." + install.ModId(0).substr(4);
    EXPECT_FALSE(PrepareWorkspace(differentCase, observed.Progress(), error));
    EXPECT_EQ(error, L"KV3654: The selected Mod's editable source was not found.");

    install.SetToolScenario(LR"({"list-sources":{"stdout":"not a listing"}})");
    LaunchContext badListing;
    PointAtSample(badListing, install);
    badListing.selectedMod = install.ModId(0);
    SetUiLanguage(L"zh-Hans");
    EXPECT_FALSE(PrepareWorkspace(badListing, observed.Progress(), error));
    SetUiLanguage(L"en");
    EXPECT_EQ(error, L"KV3654: Invalid Mod source listing.") << "this sentence exists in English only";

    install.SetToolScenario(LR"({"prepare":{"exitCode":7,"stderr":"KV3999: the tool's own reason"}})");
    LaunchContext toolFails;
    PointAtSample(toolFails, install);
    toolFails.modFile = install.ModPackage(0);
    Observed failing;
    EXPECT_FALSE(PrepareWorkspace(toolFails, failing.Progress(), error));
    EXPECT_EQ(error, L"KV3999: the tool's own reason");
    const std::vector<std::pair<std::int32_t, bool>> onlyReset = {{-1, false}};
    EXPECT_EQ(failing.cacheStates, onlyReset) << "a failed run never verifies the cache";

    // A tool that dies while writing its progress file: the half-written file is never shown.
    install.SetToolScenario(LR"({"prepare":{"progress":"dieMidWrite","exitCode":5}})");
    LaunchContext dies;
    PointAtSample(dies, install);
    dies.modFile = install.ModPackage(0);
    Observed dying;
    EXPECT_FALSE(PrepareWorkspace(dies, dying.Progress(), error));
    EXPECT_EQ(error, L"KorvaneTool failed (exit code 5).");
    for (const Text& phase : dying.phases) {
        EXPECT_TRUE(phase.find(L"Preparing the Mod…") == Text::npos) << "a half-written file showed as a line";
    }

    for (const wchar_t* mode : {L"malformed", L"oversized"}) {
        install.SetToolScenario(L"{\"prepare\":{\"progress\":\"" + Text(mode) + L"\"}}");
        LaunchContext unreadable;
        PointAtSample(unreadable, install);
        unreadable.modFile = install.ModPackage(0);
        Observed quiet;
        EXPECT_TRUE(PrepareWorkspace(unreadable, quiet.Progress(), error)) << "progress costs only the live text";
        const std::vector<Text> onlyPreparing = {L"Checking the SDK and preparing the Mod workspace…"};
        EXPECT_EQ(quiet.phases, onlyPreparing);
    }

    // The tool goes missing: the preparation's own words, with "complete".
    install.SetToolScenario(L"");
    DeleteFileW(install.ToolPath().c_str());
    LaunchContext noTool;
    PointAtSample(noTool, install);
    noTool.modFile = install.ModPackage(0);
    EXPECT_FALSE(PrepareWorkspace(noTool, observed.Progress(), error));
    EXPECT_EQ(error, L"KV4210: KorvaneTool.exe is missing. Repair the complete Mod Editor installation.");
    EXPECT_EQ(testing::LauncherTempFiles(), tempBefore);
}

// Presses the button and waits until the box has gone, so that a later search cannot find it.
void AnswerBox(HWND box, int buttonId)
{
    testing::PressMessageBoxButton(box, buttonId);
    const ULONGLONG deadline = GetTickCount64() + 30000;
    while (IsWindow(box) && GetTickCount64() < deadline) {
        Sleep(10);
    }
    EXPECT_FALSE(IsWindow(box)) << "the box did not close";
}

// Runs the preparation on a thread of its own, as the launch does, so that this thread can
// answer its box.
class PreparationThread {
public:
    explicit PreparationThread(LaunchContext& context) : context_(context)
    {
        thread_ = std::thread([this] {
            succeeded_ = PrepareWorkspace(context_, observed_.Progress(), error_);
            SetEvent(done_.Get());
        });
    }
    ~PreparationThread()
    {
        if (thread_.joinable()) {
            thread_.join();
        }
    }
    std::optional<testing::MessageBoxSeen> WaitForBox()
    {
        return testing::WaitForMessageBox(GetCurrentProcessId(), done_.Get(), 60000);
    }
    bool Finish()
    {
        thread_.join();
        return succeeded_;
    }
    const Text& Error() const { return error_; }

private:
    LaunchContext& context_;
    Observed observed_;
    Text error_;
    bool succeeded_ = false;
    UniqueHandle done_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};  // set when the thread's work ends
    std::thread thread_;
};

TEST(ConflictDialog, YesKeepsTheWorkspaceAndPreparesAgain)
{
    SampleInstall install(L"conflict-yes");
    install.SetToolScenario(LR"({"prepare":{"conflictOnce":"KV3648","stageDelayMs":0}})");
    LaunchContext context;
    PointAtSample(context, install);
    context.modFile = install.ModPackage(0);
    PreparationThread preparation(context);
    const auto box = preparation.WaitForBox();
    ASSERT_TRUE(box.has_value()) << "no conflict box";
    EXPECT_EQ(box->title, L"Mod source conflict");
    EXPECT_EQ(box->text, kConflictText);
    EXPECT_NE(GetDlgItem(box->window, IDYES), nullptr);
    EXPECT_NE(GetDlgItem(box->window, IDNO), nullptr);
    EXPECT_NE(GetDlgItem(box->window, IDCANCEL), nullptr);
    testing::PressMessageBoxButton(box->window, IDYES);
    EXPECT_TRUE(preparation.Finish()) << TextToUtf8(preparation.Error());

    const std::vector<JsonValue> calls = install.ToolCalls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(Command(calls[0]), L"prepare");
    const std::vector<Text> resolve = {install.ToolPath(), L"resolve-source", L"--sdk", install.SdkPath(), L"--mod-file",
        install.ModPackage(0), L"--resolution", L"workspace"};
    EXPECT_EQ(Argv(calls[1]), resolve);
    EXPECT_EQ(Argv(calls[2]), Argv(calls[0])) << "the second prepare gets the same arguments and files";
    EXPECT_EQ(context.modProjectFile, JoinPath(install.Workspace(0), L"Mod.kmodproject"));
}

TEST(ConflictDialog, NoReloadsTheSourceAndCancelStops)
{
    SampleInstall install(L"conflict-no");
    install.SetToolScenario(LR"({"prepare":{"conflictOnce":true}})");
    {
        LaunchContext context;
        PointAtSample(context, install);
        context.modFile = install.ModPackage(1);
        SetUiLanguage(L"zh-Hans");
        PreparationThread preparation(context);
        const auto box = preparation.WaitForBox();
        SetUiLanguage(L"en");
        ASSERT_TRUE(box.has_value());
        EXPECT_EQ(box->title, L"Mod 源码冲突");
        EXPECT_EQ(box->text,
            L"源码包在编辑器外发生了变化。\n\n是：以当前工作区编辑写回源码包。\n否：重新载入源包并丢弃当前工作区编辑。\n"
            L"取消：保留双方内容，暂不继续。");
        testing::PressMessageBoxButton(box->window, IDNO);
        EXPECT_TRUE(preparation.Finish());
        const std::vector<JsonValue> calls = install.ToolCalls();
        ASSERT_EQ(calls.size(), 3u);
        EXPECT_EQ(OptionOf(calls[1], L"--resolution"), L"source");
    }

    // Armed again: Cancel gives the tool's own message and runs nothing more.
    DeleteFileW((JoinPath(ParentPath(install.ToolPath()), L"KorvaneTool.scenario.json.conflict-state")).c_str());
    LaunchContext context;
    PointAtSample(context, install);
    context.modFile = install.ModPackage(1);
    PreparationThread preparation(context);
    const auto box = preparation.WaitForBox();
    ASSERT_TRUE(box.has_value());
    testing::PressMessageBoxButton(box->window, IDCANCEL);
    EXPECT_FALSE(preparation.Finish());
    EXPECT_NE(preparation.Error().find(L"KV3651: source changed while a workspace exists"), Text::npos);
    EXPECT_EQ(install.ToolCalls().size(), 4u);
    EXPECT_EQ(context.modProjectFile, L"");
}

TEST(ConflictDialog, OnlyOneQuestionAndOnlyForTheExactMarkers)
{
    SampleInstall install(L"conflict-once");
    // The tool refuses every prepare with the marker; after Yes and a settled conflict the
    // second refusal ends the preparation without asking again.
    install.SetToolScenario(
        LR"({"prepare":{"exitCode":1,"stderr":"Mod source conflict: KV3651: source changed while a workspace exists."}})");
    {
        LaunchContext context;
        PointAtSample(context, install);
        context.modFile = install.ModPackage(0);
        PreparationThread preparation(context);
        const auto box = preparation.WaitForBox();
        ASSERT_TRUE(box.has_value());
        AnswerBox(box->window, IDYES);
        EXPECT_FALSE(preparation.WaitForBox().has_value()) << "a second box";
        EXPECT_FALSE(preparation.Finish());
        EXPECT_EQ(preparation.Error(), L"Mod source conflict: KV3651: source changed while a workspace exists.");
        EXPECT_EQ(install.ToolCalls().size(), 3u);
    }

    // A marker in other capitals is no conflict.
    install.SetToolScenario(LR"({"prepare":{"exitCode":1,"stderr":"KV3651: Source changed while a workspace exists"}})");
    {
        LaunchContext context;
        PointAtSample(context, install);
        context.modFile = install.ModPackage(0);
        PreparationThread preparation(context);
        EXPECT_FALSE(preparation.WaitForBox().has_value());
        EXPECT_FALSE(preparation.Finish());
        EXPECT_EQ(install.ToolCalls().size(), 4u);
    }

    // A resolve-source that fails ends it with its own message.
    install.SetToolScenario(LR"({"prepare":{"conflictOnce":true},"resolve-source":{"exitCode":9,"stderr":"cannot settle"}})");
    {
        LaunchContext context;
        PointAtSample(context, install);
        context.modFile = install.ModPackage(0);
        PreparationThread preparation(context);
        const auto box = preparation.WaitForBox();
        ASSERT_TRUE(box.has_value());
        testing::PressMessageBoxButton(box->window, IDNO);
        EXPECT_FALSE(preparation.Finish());
        EXPECT_EQ(preparation.Error(), L"cannot settle");
        const std::vector<JsonValue> calls = install.ToolCalls();
        ASSERT_EQ(calls.size(), 6u);
        EXPECT_EQ(Command(calls[5]), L"resolve-source") << "prepare is not run again";
    }
}

TEST(ConflictDialog, NoQuestionWithoutPackageOrSdk)
{
    SampleInstall install(L"conflict-empty");
    install.SetToolScenario(LR"({"*":{"exitCode":1,"stderr":"KV3648: source changed outside the Editor"}})");
    std::atomic<bool> cancel{false};
    const Text arguments = L"prepare --sdk " + QuoteCommandArgument(install.SdkPath()) + L" --editor-root "
        + QuoteCommandArgument(install.EditorRoot()) + L" --selection-file \"x\" --mod-file \"y\" --progress-file \"p\""
        + L" --timing-report \"t\"";
    const UniqueHandle done(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread run([&] {
        const ToolResult noPackage =
            RunPreparation(install.EditorRoot(), install.SdkPath(), L"", arguments, &cancel, L"", {}, L"");
        EXPECT_EQ(noPackage.error, L"KV3648: source changed outside the Editor");
        const ToolResult noSdk =
            RunPreparation(install.EditorRoot(), L"", install.ModPackage(0), arguments, &cancel, L"", {}, L"");
        EXPECT_EQ(noSdk.exitCode, 1u);
        SetEvent(done.Get());
    });
    EXPECT_FALSE(testing::WaitForMessageBox(GetCurrentProcessId(), done.Get(), 60000).has_value());
    run.join();
    EXPECT_EQ(install.ToolCalls().size(), 2u);
}

}  // namespace
}  // namespace korvane
