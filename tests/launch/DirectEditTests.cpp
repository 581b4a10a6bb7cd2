// Direct edit from end to end: the real launcher, the stand-in tool preparing a workspace and
// the stand-in editor, with the faults an author can meet on the way.
#include "MessageBoxes.h"
#include "SampleInstall.h"
#include "TestSupport.h"
#include "ToolCalls.h"

#include "context/LaunchContext.h"
#include "foundation/Json.h"
#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"
#include "launch/LaunchEditor.h"
#include "launch/LaunchErrors.h"
#include "launch/SessionGate.h"
#include "tool/ToolMessages.h"
#include "tool/ToolOutcome.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <vector>

namespace korvane {
namespace {

using testing::ChildProcess;
using testing::SampleInstall;

std::vector<Text> DirectEditArguments(const SampleInstall& install, std::vector<Text> extra = {})
{
    std::vector<Text> arguments{L"-sdk=" + install.SdkPath(), L"-KorvaneSelectedMod=" + install.ModId(0)};
    arguments.insert(arguments.end(), extra.begin(), extra.end());
    return arguments;
}

// Started elsewhere than the install, so that the folder the editor runs in is the launcher's choice.
ChildProcess StartLauncher(const SampleInstall& install, const std::vector<Text>& arguments)
{
    return ChildProcess::Start(install.Launcher(), arguments, {.currentDirectory = install.Root(), .hidden = false});
}

// Waits until the launcher has seen its editor stand, and so closed its progress window: an editor
// closed before that has failed to start.
bool WaitUntilTheEditorStands(ChildProcess& launcher)
{
    return testing::WaitUntil(
        launcher, [&] { return testing::FindVisibleWindow(launcher.Id(), L"KorvaneStartupProgress") == nullptr; });
}

// A tool or editor that cannot be started ends in its message and exit code 6. The report of the
// moment the language was settled stays: the user's culture, which also chose the box's language.
TEST(DirectEdit, ProgramsThatCannotStartEndInTheirMessage)
{
    const struct {
        bool toolBroken;
        const wchar_t* culture;
        const wchar_t* box;
    } rows[] = {
        // A Mod package needs no lookup: the tool's first run is the preparation. Its file is no
        // program, which Windows calls error 193: never the 0 of an error read too late.
        {true, L"zh-Hans", L"无法启动 KorvaneTool（Windows 错误 193)."},
        {false, L"en", L"The official Unreal Editor could not be started."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(TextToUtf8(row.box));
        SampleInstall install(L"direct-edit-broken");
        testing::WriteFileBytes(row.toolBroken ? install.ToolPath() : install.EditorExe(), "no program");
        const Text report = install.Root() + L"\\startup.json";
        const std::vector<Text> arguments{L"-sdk=" + install.SdkPath(), L"-KorvaneModFile=" + install.ModPackage(0),
            L"-KorvaneStartupReport=" + report, L"-culture=" + Text(row.culture)};
        const testing::RunEnd end = testing::WaitAnsweringBox(StartLauncher(install, arguments), 60000);
        ASSERT_TRUE(end.box.has_value());
        EXPECT_EQ(end.exitCode, 6u);
        EXPECT_EQ(end.box->title, kLaunchErrorTitle.In(row.toolBroken));
        EXPECT_EQ(end.box->text, row.box);
        const JsonValue values = ParseJson(testing::ReadFileBytes(report));
        EXPECT_EQ(FindJsonMember(values, L"editorCulture").text, row.culture);
        EXPECT_EQ(FindJsonMember(values, L"language").text, row.culture) << "the window's";
        EXPECT_TRUE(FindJsonMember(values, L"observedPhases").items.empty());
    }
}

// The start-up window's close cancels each stage; starts it does not watch cannot be cancelled.
TEST(DirectEdit, CancelReachesEveryStageThatIsWatched)
{
    SampleInstall install(L"direct-edit-cancel");
    // A cancel while the tool runs, in the lookup and in the preparation, reaches the tool: its
    // cancel message is the one shown.
    for (const auto& [scenario, calls] : {std::pair(LR"({"list-sources":{"hang":true}})", 1u),
             std::pair(LR"({"prepare":{"hang":true}})", 2u)}) {
        install.SetToolScenario(scenario);
        const std::size_t before = install.ToolCalls().size();
        ChildProcess preparing = StartLauncher(install, DirectEditArguments(install));
        HWND progress = testing::WaitForVisibleWindow(preparing.Id(), preparing.Handle(), L"KorvaneStartupProgress");
        ASSERT_NE(progress, nullptr);
        // The tool runs once its call is logged.
        ASSERT_TRUE(testing::WaitUntil(preparing, [&] { return install.ToolCalls().size() >= before + calls; }));
        PostMessageW(progress, WM_CLOSE, 0, 0);
        const testing::RunEnd end = testing::WaitAnsweringBox(std::move(preparing), 60000);
        EXPECT_EQ(end.box ? end.box->text : Text(), L"Operation cancelled.") << TextToUtf8(scenario);
        EXPECT_EQ(end.exitCode, 6u);
    }

    install.SetToolScenario(L"");
    install.SetEditorScenario(LR"({"mode":"noWindow"})");
    ChildProcess watching = StartLauncher(install, DirectEditArguments(install));
    const HWND progress = testing::WaitForVisibleWindow(watching.Id(), watching.Handle(), L"KorvaneStartupProgress");
    ASSERT_NE(progress, nullptr);
    testing::WaitUntil(watching, [&] { return !install.EditorRecords().empty(); });
    ASSERT_EQ(install.EditorRecords().size(), 1u);
    const DWORD editorId = testing::ProcessIdsOf(install.EditorRecords())[0];
    UniqueHandle editor(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, editorId));
    PostMessageW(progress, WM_CLOSE, 0, 0);
    const testing::RunEnd end = testing::WaitAnsweringBox(std::move(watching), 60000);
    EXPECT_EQ(end.box ? end.box->text : Text(), L"Editor launch cancelled.") << "no log path after a cancel";
    EXPECT_EQ(end.exitCode, 6u);
    ASSERT_EQ(WaitForSingleObject(editor.Get(), 10000), WAIT_OBJECT_0);
    DWORD editorExit = 0;
    GetExitCodeProcess(editor.Get(), &editorExit);
    EXPECT_EQ(editorExit, 1223u);

    // Under -unattended or -RenderOffscreen, in any letter case, nothing watches for a window: the
    // editor's own exit code comes back, also from an editor that never shows one.
    install.SetEditorScenario(LR"({"mode":"noWindow","runMs":300,"exitCode":5})");
    for (const wchar_t* word : {L"-UNATTENDED", L"-renderoffscreen"}) {
        ChildProcess launcher = StartLauncher(install, DirectEditArguments(install, {word}));
        ASSERT_TRUE(launcher.Wait(60000));
        EXPECT_EQ(launcher.ExitCode(), 5u) << TextToUtf8(word) << ": watched, the launcher would say 6";
    }
}

// The short form of the cache folder of the sample installs' engine version, as editors get it.
Text SampleCacheFolder()
{
    wchar_t shortForm[MAX_PATH] = {};
    GetShortPathNameW(JoinPath(LocalAppDataFolder(), L"Korvane\\DerivedDataCache\\5.6").c_str(), shortForm, MAX_PATH);
    return shortForm;
}

// The whole line a launch of Mod 0 by its SDK alone gives the editor (so no game folder), written
// out here word by word: only the tick count in the made log's name is read back from what the
// editor got.
Text ExpectedEditorCommandLine(const SampleInstall& install, DWORD launcherId, const Text& received)
{
    const Text logName = L"KorvaneLauncher-" + DecimalText(launcherId) + L"-";
    const std::size_t tick = received.find(logName);
    const std::size_t tickEnd = received.find(L".log", tick);
    if (tick == Text::npos || tickEnd == Text::npos) {
        return L"(no made log path)";
    }
    const Text workspace = install.Workspace(0);
    return QuoteCommandArgument(install.EditorExe()) + L" " +
        QuoteCommandArgument(JoinPath(workspace, L"KorvaneSDK.uproject")) + L" -KorvaneSDKOffline " +
        QuoteCommandArgument(L"-KorvaneSelectedMod=" + install.ModId(0)) + L" " +
        QuoteCommandArgument(L"-KorvaneProject=" + JoinPath(workspace, L"Mod.kmodproject")) + L" -NoSplash " +
        QuoteCommandArgument(L"-culture=en") + L" " +
        QuoteCommandArgument(L"-ABSLOG=" + JoinPath(workspace, L"Saved\\Logs\\") + logName +
            received.substr(tick + logName.size(), tickEnd - tick - logName.size()) + L".log") +
        L" -KorvaneLauncherSession " + QuoteCommandArgument(L"-LocalDataCachePath=" + SampleCacheFolder());
}

// Ten launchers at once: one gets past the session gate, prepares the workspace, starts the editor
// and passes its exit code on; the others say so and end with 9.
TEST(DirectEdit, OneSessionAtATimeAmongConcurrentLaunchers)
{
    SampleInstall install(L"direct-edit-concurrent");
    // An SDK root of the author's own, which the editor must never see.
    const testing::ScopedEnvironmentVariable sdkRoot(L"UE_SDKS_ROOT", L"C:\\Elsewhere\\SDKs");
    install.SetEditorScenario(LR"({"mode":"normal","runMs":0,"exitCode":5})");
    const Text report = install.Root() + L"\\startup.json";
    std::vector<ChildProcess> launchers;
    for (int index = 0; index < 10; ++index) {
        launchers.push_back(StartLauncher(install, DirectEditArguments(install, {L"-KorvaneStartupReport=" + report})));
    }
    ChildProcess* winner = nullptr;
    for (ChildProcess& launcher : launchers) {
        const auto box = testing::WaitForMessageBox(launcher.Id(), launcher.Handle(), 20000);
        if (box) {
            EXPECT_EQ(box->text, kSessionInUseMessage.In(false));
            testing::PressMessageBoxButton(box->window, IDOK);
            ASSERT_TRUE(launcher.Wait(30000));
            EXPECT_EQ(launcher.ExitCode(), 9u);
        } else {
            EXPECT_EQ(winner, nullptr) << "a second launcher got past the gate";
            winner = &launcher;
        }
    }
    ASSERT_NE(winner, nullptr);

    // A late launcher while the first waits for its editor is refused too.
    testing::WaitUntil(*winner, [&] { return !install.EditorRecords().empty(); });
    const testing::RunEnd late = testing::WaitAnsweringBox(StartLauncher(install, DirectEditArguments(install)));
    EXPECT_EQ(late.box ? late.box->text : Text(), kSessionInUseMessage.In(false));
    EXPECT_EQ(late.exitCode, 9u);

    const auto records = install.EditorRecords();
    ASSERT_EQ(records.size(), 1u);
    const HWND editorWindow =
        testing::WaitForVisibleWindow(testing::ProcessIdsOf(records)[0], winner->Handle(), L"UnrealWindow");
    ASSERT_NE(editorWindow, nullptr);
    ASSERT_TRUE(WaitUntilTheEditorStands(*winner));
    PostMessageW(editorWindow, WM_CLOSE, 0, 0);
    ASSERT_TRUE(winner->Wait(60000));
    EXPECT_EQ(winner->ExitCode(), 5u) << "the editor's exit code is the launcher's";

    // The editor ran in the install on the prepared workspace, in the run's language, with the
    // per-version cache and without the author's SDK root. The report of the moment its window
    // stood holds the cache the preparation made and the phases from the preparation to the
    // editor's own last marker.
    const Text commandLine = FindJsonMember(records[0], L"commandLine").text;
    EXPECT_EQ(commandLine, ExpectedEditorCommandLine(install, winner->Id(), commandLine));
    EXPECT_EQ(FindJsonMember(records[0], L"cwd").text, install.EditorRoot());
    EXPECT_EQ(FindJsonMember(records[0], L"UE_SDKS_ROOT").kind, JsonKind::Null);
    EXPECT_EQ(FindJsonMember(records[0], L"UE-LocalDataCachePath").text, SampleCacheFolder());
    const JsonValue values = ParseJson(testing::ReadFileBytes(report));
    EXPECT_EQ(FindJsonMember(values, L"cacheStatus").text, L"SDK cache created and verified");
    const auto& phases = FindJsonMember(values, L"observedPhases").items;
    ASSERT_GE(phases.size(), 3u);
    EXPECT_EQ(phases.front().text, L"Checking the SDK and preparing the Mod workspace…");
    EXPECT_EQ(phases.back().text, L"Engine initialized; preparing the Editor interface…");
}

// A launcher that waits for an editor which keeps no session of its own (-unattended) still holds
// the session for it, and passes its exit code on.
TEST(DirectEdit, TheSessionIsHeldUntilTheEditorEnds)
{
    SampleInstall install(L"direct-edit-held");
    install.SetEditorScenario(LR"({"mode":"noWindow"})");
    ChildProcess first = StartLauncher(install, DirectEditArguments(install, {L"-unattended"}));
    ASSERT_TRUE(testing::WaitUntil(first, [&] { return !install.EditorRecords().empty(); }));
    const testing::RunEnd late = testing::WaitAnsweringBox(StartLauncher(install, DirectEditArguments(install)), 30000);
    EXPECT_EQ(late.box ? late.box->text : Text(), kSessionInUseMessage.In(false));
    EXPECT_EQ(late.exitCode, 9u);

    const UniqueHandle editor(
        OpenProcess(PROCESS_TERMINATE, FALSE, testing::ProcessIdsOf(install.EditorRecords())[0]));
    ASSERT_TRUE(TerminateProcess(editor.Get(), 7));
    ASSERT_TRUE(first.Wait(60000));
    EXPECT_EQ(first.ExitCode(), 7u);
}

// The source conflict is put to the author from the launch itself while the progress window
// stands. Yes settles it and the launch goes on; a cancel while the question stands settles
// nothing, whatever the answer, since that is the one step that changes the author's files.
TEST(DirectEdit, ASourceConflictIsAskedDuringTheLaunchAndACancelMeanwhileSettlesNothing)
{
    SampleInstall install(L"direct-edit-conflict");
    install.SetEditorScenario(LR"({"mode":"normal","runMs":300,"exitCode":4,"shaderLines":0})");
    const Text scenario = JoinPath(ParentPath(install.ToolPath()), L"KorvaneTool.scenario.json");
    for (const bool cancelled : {false, true}) {
        SCOPED_TRACE(cancelled ? "cancelled" : "answered");
        install.SetToolScenario(LR"({"prepare":{"conflictOnce":true}})");
        DeleteFileW((scenario + L".conflict-state").c_str());
        const std::size_t before = install.ToolCalls().size();
        ChildProcess launcher = StartLauncher(install, DirectEditArguments(install));
        const auto question = testing::WaitForMessageBox(launcher.Id(), launcher.Handle(), 60000);
        ASSERT_TRUE(question.has_value());
        EXPECT_EQ(question->title, kConflictCaption.In(false));
        const HWND progress = testing::FindVisibleWindow(launcher.Id(), L"KorvaneStartupProgress");
        ASSERT_NE(progress, nullptr) << "the progress window stands behind the question";
        if (cancelled) {
            // Sent, so that the cancel has been taken before the answer.
            SendMessageTimeoutW(progress, WM_CLOSE, 0, 0, SMTO_NORMAL, 10000, nullptr);
        }
        testing::PressMessageBoxButton(question->window, IDYES);
        ASSERT_TRUE(testing::WaitUntil(launcher, [&] { return IsWindow(question->window) == FALSE; }));
        const testing::RunEnd end = testing::WaitAnsweringBox(std::move(launcher), 60000);

        std::vector<Text> commands;
        const auto calls = install.ToolCalls();
        for (std::size_t index = before; index < calls.size(); ++index) {
            commands.push_back(testing::Argv(calls[index]).at(1));
        }
        if (cancelled) {
            EXPECT_EQ(end.box ? end.box->text : Text(), kToolCancelledMessage.In(false));
            EXPECT_EQ(end.exitCode, 6u);
            EXPECT_EQ(commands, (std::vector<Text>{L"list-sources", L"prepare"}));
        } else {
            EXPECT_FALSE(end.box.has_value());
            EXPECT_EQ(end.exitCode, 4u) << "the editor's";
            EXPECT_EQ(commands, (std::vector<Text>{L"list-sources", L"prepare", L"resolve-source", L"prepare"}));
        }
    }
}

// An author who switches Mods in the editor: the editor starts a launcher of its install naming
// itself, and closes. That launcher waits for the editor and for the launcher that started it,
// then takes the session over and opens its picker. (The earlier launcher is made to linger here
// by another handle on its session, so that the new one surely finds it still ending.)
TEST(DirectEdit, AnEditorThatSwitchesModsHandsTheSessionOnToTheLauncherItStarts)
{
    SampleInstall install(L"direct-edit-switch");
    install.SetEditorScenario(LR"({"mode":"waitForSelf","exitCode":3,"launcherArguments":["-KorvaneEmptyHost"]})");
    ChildProcess first = StartLauncher(install, DirectEditArguments(install));
    ASSERT_TRUE(testing::WaitUntil(first, [&] { return !install.EditorRecords().empty(); }));
    const DWORD editorId = testing::ProcessIdsOf(install.EditorRecords())[0];
    const HWND editorWindow = testing::WaitForVisibleWindow(editorId, first.Handle(), L"UnrealWindow");
    ASSERT_NE(editorWindow, nullptr);
    std::vector<DWORD> next;
    ASSERT_TRUE(testing::WaitUntil(first, [&] {
        return !(next = testing::ProcessesNamed(L"KorvaneEditor.exe", editorId)).empty();
    }));
    const UniqueHandle second(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, next[0]));
    ASSERT_TRUE(second);
    EXPECT_EQ(testing::FindVisibleWindow(next[0], L"KorvaneLauncherWindow"), nullptr) << "while the editor runs";

    UniqueHandle lingering(CreateEventW(nullptr, TRUE, FALSE, kLauncherSessionEventName));
    ASSERT_TRUE(WaitUntilTheEditorStands(first));
    PostMessageW(editorWindow, WM_CLOSE, 0, 0);
    ASSERT_TRUE(first.Wait(60000));
    EXPECT_EQ(first.ExitCode(), 3u);
    EXPECT_FALSE(testing::WaitForMessageBox(next[0], second.Get(), 1000).has_value()) << "gave up on the launcher";
    lingering.Reset();
    const HWND picker = testing::WaitForVisibleWindow(next[0], second.Get(), L"KorvaneLauncherWindow");
    ASSERT_NE(picker, nullptr) << "the new launcher went on";
    PostMessageW(picker, WM_CLOSE, 0, 0);
    ASSERT_EQ(WaitForSingleObject(second.Get(), 60000), WAIT_OBJECT_0);
    DWORD exitCode = 0;
    GetExitCodeProcess(second.Get(), &exitCode);
    EXPECT_EQ(exitCode, 0u);
}

// Counts the open handles of this process by probing the handle table: Wine answers
// GetProcessHandleCount with 0.
DWORD OpenHandleCount()
{
    DWORD count = 0;
    for (ULONG_PTR value = 4; value < 0x10000; value += 4) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) {
            ++count;
        }
    }
    return count;
}

// The launch path run again and again in one process holds no handle it does not give back.
TEST(DirectEdit, RepeatedLaunchesInOneProcessLeakNoHandles)
{
    const testing::ScopedUiLanguage english(L"en");
    SampleInstall install(L"direct-edit-handles");
    install.SetEditorScenario(LR"({"mode":"normal","runMs":400,"splashMs":0,"logPaceMs":0,"shaderLines":0})");
    const auto launchOnce = [&install] {
        Text error;
        // Wine now and then refuses to start an image whose previous process has just ended
        // (ERROR_INTERNAL_ERROR); that one refusal is tried again, anything else fails.
        for (int attempt = 0; attempt < 5; ++attempt) {
            LaunchContext context;
            context.editorRoot = install.EditorRoot();
            context.launchTarget = install.SdkPath();
            context.gameDirectory = install.GameDirectory();
            context.selectedMod = install.ModId(0);
            context.language = L"en";
            if (LaunchEditor(context, error)) {
                EXPECT_EQ(WaitForSingleObject(context.editorProcess.Process(), 60000), WAIT_OBJECT_0);
                return true;
            }
            if (error != kEditorStartRefusedMessage.In(false) && error != ToolStartFailedText(ERROR_INTERNAL_ERROR)) {
                break;
            }
            Sleep(100);  // nothing to wait on: the refusal clears once Wine has let the old image go
        }
        ADD_FAILURE() << TextToUtf8(error);
        return false;
    };
    for (int warmUp = 0; warmUp < 3; ++warmUp) {
        ASSERT_TRUE(launchOnce());
    }
    const DWORD before = OpenHandleCount();
    {
        const UniqueHandle probe(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        ASSERT_EQ(OpenHandleCount(), before + 1) << "the probe sees a handle just opened";
    }
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(launchOnce());
    }
    EXPECT_LE(OpenHandleCount(), before + 2) << "handles before: " << before;
}

}  // namespace
}  // namespace korvane
