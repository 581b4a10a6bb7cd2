// Direct edit from end to end: the real launcher, the stand-in tool preparing a workspace and
// the stand-in editor, with the faults an author can meet on the way.
#include "MessageBoxes.h"
#include "SampleInstall.h"
#include "TestSupport.h"
#include "ToolCalls.h"

#include "context/LaunchContext.h"
#include "context/UiLanguage.h"
#include "foundation/Json.h"
#include "foundation/Paths.h"
#include "launch/LaunchEditor.h"
#include "launch/LaunchErrors.h"
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

ChildProcess StartLauncher(const SampleInstall& install, const std::vector<Text>& arguments)
{
    testing::ProcessOptions options;
    options.currentDirectory = install.EditorRoot();
    options.hidden = false;
    return ChildProcess::Start(install.Launcher(), arguments, options);
}

// The text of the box the launcher shows before ending ("(no box)" without one; the box is
// answered with OK) and its exit code.
std::pair<Text, DWORD> ErrorBoxAndExitCode(ChildProcess launcher)
{
    const testing::RunEnd end = testing::WaitAnsweringBox(std::move(launcher), 60000);
    return {end.box ? end.box->text : L"(no box)", end.exitCode};
}

HWND WaitForProgressWindow(const ChildProcess& launcher)
{
    return testing::WaitForVisibleWindow(launcher.Id(), launcher.Handle(), L"KorvaneStartupProgress");
}

TEST(DirectEdit, PreparesTheWorkspaceStartsTheEditorAndPassesItsExitCodeOn)
{
    SampleInstall install(L"direct-edit");
    install.SetEditorScenario(LR"({"mode":"normal","runMs":300,"exitCode":42,"shaderLines":200})");
    testing::ScratchDirectory reports(L"direct-edit-report");
    const Text report = reports / L"startup.json";

    ChildProcess launcher = StartLauncher(install, DirectEditArguments(install, {L"-KorvaneStartupReport=" + report}));
    ASSERT_TRUE(launcher.Wait(120000));
    EXPECT_EQ(launcher.ExitCode(), 42u);

    const auto records = install.EditorRecords();
    ASSERT_EQ(records.size(), 1u);
    const Text commandLine = FindJsonMember(records[0], L"commandLine").text;
    const Text project = JoinPath(install.Workspace(0), L"KorvaneSDK.uproject");
    EXPECT_NE(commandLine.find(QuoteCommandArgument(project)), Text::npos) << commandLine;
    EXPECT_NE(commandLine.find(QuoteCommandArgument(L"-KorvaneSelectedMod=" + install.ModId(0))), Text::npos);
    EXPECT_NE(commandLine.find(L" -NoSplash \"-culture=en\""), Text::npos) << commandLine;
    EXPECT_NE(commandLine.find(L"-ABSLOG="), Text::npos);
    EXPECT_EQ(FindJsonMember(records[0], L"cwd").text, install.EditorRoot());
    EXPECT_EQ(FindJsonMember(records[0], L"UE_SDKS_ROOT").kind, JsonKind::Null);

    // The report of the moment the editor's window stood: the run's language, the cache the
    // preparation made (so the tool prepared the workspace), and the phases from the preparation
    // to the editor's own last marker.
    const JsonValue values = ParseJson(testing::ReadFileBytes(report));
    EXPECT_EQ(FindJsonMember(values, L"language").text, L"en");
    EXPECT_EQ(FindJsonMember(values, L"cacheStatus").text, L"SDK cache created and verified");
    const auto& phases = FindJsonMember(values, L"observedPhases").items;
    ASSERT_GE(phases.size(), 3u);
    EXPECT_EQ(phases.front().text, L"Checking the SDK and preparing the Mod workspace…");
    EXPECT_EQ(phases.back().text, L"Engine initialized; preparing the Editor interface…");
    EXPECT_EQ(FindJsonMember(values, L"phase").text, phases.back().text);
    testing::ExpectNoToolRunning(install.ToolCalls());
}

// A tool or editor that cannot be started, and a tool that refuses the lookup, each end in
// their message, exit code 6, no editor and no temporary file of the launcher.
TEST(DirectEdit, ProgramsThatCannotStartOrRefuseEndInTheirMessageWithNothingLeft)
{
    enum class Broken { Tool, Editor, None };
    const struct {
        const char* use;
        Broken broken;
        const wchar_t* toolScenario;
        bool byPackage;  // -KorvaneModFile= instead of -KorvaneSelectedMod=: no lookup
        bool chinese;
        Text before, after;  // the box reads these around a number, or `before` alone
    } rows[] = {
        {"lookup cannot start", Broken::Tool, L"", false, false, L"Could not start KorvaneTool (Windows error ", L")."},
        {"prepare cannot start", Broken::Tool, L"", true, true, L"无法启动 KorvaneTool（Windows 错误 ", L")."},
        {"editor cannot start", Broken::Editor, L"", false, false, L"The official Unreal Editor could not be started.", L""},
        {"lookup refused", Broken::None, LR"({"list-sources":{"exitCode":4,"stderr":"KV3999: the tool's own words"}})",
            false, true, L"KV3999: the tool's own words", L""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.use);
        SampleInstall install(L"direct-edit-broken");
        install.SetToolScenario(row.toolScenario);
        if (row.broken != Broken::None) {
            testing::WriteFileBytes(row.broken == Broken::Tool ? install.ToolPath() : install.EditorExe(), "no program");
        }
        testing::ScratchDirectory reports(L"direct-edit-broken-report");
        const Text report = reports / L"startup.json";
        std::vector<Text> arguments{L"-sdk=" + install.SdkPath(),
            row.byPackage ? L"-KorvaneModFile=" + install.ModPackage(0) : L"-KorvaneSelectedMod=" + install.ModId(0),
            L"-KorvaneStartupReport=" + report};
        if (row.chinese) {
            arguments.push_back(L"-culture=zh-Hans");
        }
        const auto tempBefore = testing::LauncherTempFiles();
        const testing::RunEnd end = testing::WaitAnsweringBox(StartLauncher(install, arguments), 60000);
        ASSERT_TRUE(end.box.has_value());
        const testing::MessageBoxSeen& box = *end.box;
        EXPECT_EQ(end.exitCode, 6u);
        EXPECT_EQ(box.title, row.chinese ? L"Korvane 启动错误" : L"Korvane launch error");
        if (row.after.empty()) {
            EXPECT_EQ(box.text, row.before);
        } else {
            ASSERT_EQ(box.text.rfind(row.before, 0), 0u) << TextToUtf8(box.text);
            const Text number = box.text.substr(row.before.size(), box.text.size() - row.before.size() - row.after.size());
            EXPECT_EQ(box.text, row.before + number + row.after);
            EXPECT_TRUE(!number.empty() && number.find_first_not_of(L"0123456789") == Text::npos && number != L"0");
        }
        EXPECT_TRUE(install.EditorRecords().empty()) << "no editor ran";
        EXPECT_EQ(testing::LauncherTempFiles(), tempBefore);
        // The report of the moment the language was settled stays when the launch then fails.
        const JsonValue values = ParseJson(testing::ReadFileBytes(report));
        EXPECT_EQ(FindJsonMember(values, L"editorCulture").text, row.chinese ? L"zh-Hans" : L"en");
        EXPECT_EQ(FindJsonMember(values, L"language").text, row.chinese ? L"zh-Hans" : L"en") << "the window's";
        EXPECT_TRUE(FindJsonMember(values, L"observedPhases").items.empty());
        testing::ExpectNoToolRunning(install.ToolCalls());
    }
}

// Under -unattended or -RenderOffscreen, in any letter case, nothing watches for a window: the
// editor's own exit code comes back, also from an editor that never shows one.
TEST(DirectEdit, UnattendedStartsAreNotWatched)
{
    SampleInstall install(L"direct-edit-unattended");
    install.SetEditorScenario(LR"({"mode":"noWindow","runMs":300,"exitCode":5})");
    for (const wchar_t* word : {L"-UNATTENDED", L"-renderoffscreen"}) {
        ChildProcess launcher = StartLauncher(install, DirectEditArguments(install, {word}));
        ASSERT_TRUE(launcher.Wait(60000));
        EXPECT_EQ(launcher.ExitCode(), 5u) << TextToUtf8(word) << ": watched, the launcher would say 6";
    }
    EXPECT_EQ(install.EditorRecords().size(), 2u);
}

TEST(DirectEdit, EditorsThatEndBeforeTheirWindowAreReportedWithTheirExitCode)
{
    SampleInstall install(L"direct-edit-early");
    install.SetEditorScenario(LR"({"mode":"exitBeforeWindow","exitCode":0})");
    const auto [text, exitCode] = ErrorBoxAndExitCode(StartLauncher(install, DirectEditArguments(install)));
    EXPECT_EQ(exitCode, 6u);
    EXPECT_EQ(text.rfind(L"Editor startup failed (exit code 0). Check the startup log in Saved/Logs.\n", 0), 0u) << text;

    // A Mod package, launched with the user's culture, which decides the message's language.
    install.SetEditorScenario(LR"({"mode":"crashBeforeWindow","exitCode":3})");
    const auto [chinese, packageExitCode] = ErrorBoxAndExitCode(StartLauncher(install,
        {L"-sdk=" + install.SdkPath(), L"-KorvaneModFile=" + install.ModPackage(1), L"-culture=zh-Hans"}));
    EXPECT_EQ(packageExitCode, 6u);
    EXPECT_EQ(chinese.rfind(L"编辑器启动失败（退出码 3）。请查看 Saved/Logs 中的启动日志。\n", 0), 0u) << chinese;
    EXPECT_NE(chinese.find(L"KorvaneLauncher-"), Text::npos) << "the made log path follows the message";

    // A file where the log folder should be: no log argument and no log path in the message.
    install.SetEditorScenario(LR"({"mode":"crashBeforeWindow"})");
    testing::WriteFileBytes(JoinPath(install.Workspace(2), L"Saved"), "not a folder");
    EXPECT_EQ(ErrorBoxAndExitCode(
                  StartLauncher(install, {L"-sdk=" + install.SdkPath(), L"-KorvaneSelectedMod=" + install.ModId(2)})),
        std::make_pair(Text(L"Editor startup failed (exit code 3221225477). Check the startup log in Saved/Logs."), DWORD{6}));
    const auto records = install.EditorRecords();
    ASSERT_EQ(records.size(), 3u);
    EXPECT_NE(FindJsonMember(records[1], L"commandLine").text.find(L"\"-culture=zh-Hans\" \"-culture=zh-Hans\""), Text::npos)
        << "the launcher's own culture, then the user's word passed on";
    EXPECT_EQ(FindJsonMember(records[2], L"commandLine").text.find(L"-ABSLOG="), Text::npos);
}

TEST(DirectEdit, CancelDuringLookupPreparationAndTheWatchLeavesNothingRunning)
{
    SampleInstall install(L"direct-edit-cancel");
    // A cancel while the tool runs, in the lookup and in the preparation: the tool's cancel
    // message goes first, and the tool is gone.
    for (const auto& [scenario, calls] : {std::pair(LR"({"list-sources":{"hang":true}})", 1u),
             std::pair(LR"({"prepare":{"hang":true}})", 2u)}) {
        install.SetToolScenario(scenario);
        const std::size_t before = install.ToolCalls().size();
        ChildProcess preparing = StartLauncher(install, DirectEditArguments(install));
        HWND progress = WaitForProgressWindow(preparing);
        ASSERT_NE(progress, nullptr);
        // The tool runs once its call is logged.
        for (int attempt = 0; attempt < 600 && install.ToolCalls().size() < before + calls; ++attempt) {
            WaitForSingleObject(preparing.Handle(), 50);
        }
        PostMessageW(progress, WM_CLOSE, 0, 0);
        EXPECT_EQ(ErrorBoxAndExitCode(std::move(preparing)), std::make_pair(Text(L"Operation cancelled."), DWORD{6}))
            << TextToUtf8(scenario);
        testing::ExpectNoToolRunning(install.ToolCalls());
    }
    EXPECT_TRUE(install.EditorRecords().empty());

    install.SetToolScenario(L"");
    install.SetEditorScenario(LR"({"mode":"noWindow"})");
    ChildProcess watching = StartLauncher(install, DirectEditArguments(install));
    const HWND progress = WaitForProgressWindow(watching);
    ASSERT_NE(progress, nullptr);
    for (int attempt = 0; attempt < 600 && install.EditorRecords().empty(); ++attempt) {
        WaitForSingleObject(watching.Handle(), 50);
    }
    ASSERT_EQ(install.EditorRecords().size(), 1u);
    const DWORD editorId = static_cast<DWORD>(std::stoul(FindJsonMember(install.EditorRecords()[0], L"pid").text));
    UniqueHandle editor(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, editorId));
    ASSERT_TRUE(editor.IsValid());
    PostMessageW(progress, WM_CLOSE, 0, 0);
    EXPECT_EQ(ErrorBoxAndExitCode(std::move(watching)), std::make_pair(Text(L"Editor launch cancelled."), DWORD{6}))
        << "no log path after a cancel";
    ASSERT_EQ(WaitForSingleObject(editor.Get(), 10000), WAIT_OBJECT_0);
    DWORD editorExit = 0;
    GetExitCodeProcess(editor.Get(), &editorExit);
    EXPECT_EQ(editorExit, 1223u);
}

// Ten launchers at once: one editing session; the others say so and end with 9.
TEST(DirectEdit, OneSessionAtATimeAmongConcurrentLaunchers)
{
    SampleInstall install(L"direct-edit-concurrent");
    install.SetEditorScenario(LR"({"mode":"normal","runMs":0,"exitCode":5})");
    std::vector<ChildProcess> launchers;
    for (int index = 0; index < 10; ++index) {
        launchers.push_back(StartLauncher(install, DirectEditArguments(install)));
    }
    int refused = 0;
    ChildProcess* winner = nullptr;
    for (ChildProcess& launcher : launchers) {
        const auto box = testing::WaitForMessageBox(launcher.Id(), launcher.Handle(), 20000);
        if (box) {
            EXPECT_EQ(box->text, L"KV1830: A Mod editor is already open. Close it before opening another.");
            testing::PressMessageBoxButton(box->window, IDOK);
            ASSERT_TRUE(launcher.Wait(30000));
            EXPECT_EQ(launcher.ExitCode(), 9u);
            ++refused;
        } else {
            EXPECT_EQ(winner, nullptr) << "a second launcher got past the gate";
            winner = &launcher;
        }
    }
    EXPECT_EQ(refused, 9);
    ASSERT_NE(winner, nullptr);

    // A late launcher while the first waits for its editor is refused too.
    for (int attempt = 0; attempt < 1200 && install.EditorRecords().empty(); ++attempt) {
        WaitForSingleObject(winner->Handle(), 50);
    }
    EXPECT_EQ(ErrorBoxAndExitCode(StartLauncher(install, DirectEditArguments(install))),
        std::make_pair(Text(L"KV1830: A Mod editor is already open. Close it before opening another."), DWORD{9}));

    ASSERT_EQ(install.EditorRecords().size(), 1u);
    const DWORD editorId = static_cast<DWORD>(std::stoul(FindJsonMember(install.EditorRecords()[0], L"pid").text));
    const HWND editorWindow = testing::WaitForVisibleWindow(editorId, winner->Handle(), L"UnrealWindow");
    ASSERT_NE(editorWindow, nullptr);
    PostMessageW(editorWindow, WM_CLOSE, 0, 0);
    ASSERT_TRUE(winner->Wait(60000));
    EXPECT_EQ(winner->ExitCode(), 5u) << "the editor's exit code is the launcher's";
}

// Counts the open handles of this process. Wine answers GetProcessHandleCount with 0, so the
// handle table is probed as well.
DWORD OpenHandleCount()
{
    DWORD count = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &count) && count != 0) {
        return count;
    }
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
            error.clear();
            if (LaunchEditor(context, error)) {
                EXPECT_EQ(WaitForSingleObject(context.editorProcess.Process(), 60000), WAIT_OBJECT_0);
                context.editorProcess.Reset();
                return true;
            }
            const bool wineRefusal = error == kEditorStartRefusedMessage.In(false) ||
                error == ToolStartFailedText(ERROR_INTERNAL_ERROR);
            if (!wineRefusal) {
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
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(launchOnce());
    }
    const DWORD after = OpenHandleCount();
    EXPECT_LE(after, before + 2) << "handles before " << before << ", after " << after;
}

}  // namespace
}  // namespace korvane
