// Direct edit from end to end: the real launcher, the stand-in tool preparing a workspace and
// the stand-in editor, with the faults an author can meet on the way.
#include "MessageBoxes.h"
#include "SampleInstall.h"
#include "TestSupport.h"

#include "context/LaunchContext.h"
#include "context/UiLanguage.h"
#include "foundation/Paths.h"
#include "launch/LaunchEditor.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <vector>

namespace korvane {
namespace {

using testing::ChildProcess;
using testing::SampleInstall;

constexpr wchar_t kProgressWindowClass[] = L"KorvaneStartupProgress";

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

struct WindowSearch {
    DWORD processId;
    const wchar_t* className;
    HWND found;
};

HWND FindTopLevelWindow(DWORD processId, const wchar_t* className)
{
    WindowSearch search{processId, className, nullptr};
    EnumWindows(
        [](HWND window, LPARAM parameter) -> BOOL {
            auto& wanted = *reinterpret_cast<WindowSearch*>(parameter);
            DWORD owner = 0;
            GetWindowThreadProcessId(window, &owner);
            wchar_t name[128] = {};
            GetClassNameW(window, name, 128);
            if (owner == wanted.processId && lstrcmpiW(name, wanted.className) == 0 && IsWindowVisible(window)) {
                wanted.found = window;
                return FALSE;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

// Polls the window list: a window of another process gives nothing to wait on.
HWND WaitForTopLevelWindow(const ChildProcess& process, const wchar_t* className, DWORD timeoutMs = 60000)
{
    const ULONGLONG deadline = GetTickCount64() + timeoutMs;
    while (GetTickCount64() < deadline) {
        if (HWND window = FindTopLevelWindow(process.Id(), className)) {
            return window;
        }
        if (WaitForSingleObject(process.Handle(), 20) == WAIT_OBJECT_0) {
            return nullptr;
        }
    }
    return nullptr;
}

// Every tool run of this install has ended (checked by the ids the tool logged: other test
// programs may run tools of their own meanwhile).
void ExpectNoToolRunning(const SampleInstall& install)
{
    for (const JsonValue& call : install.ToolCalls()) {
        const DWORD id = static_cast<DWORD>(std::stoul(FindJsonMember(call, L"pid").text));
        for (const DWORD running : testing::ProcessesNamed(L"KorvaneTool.exe")) {
            EXPECT_NE(running, id) << "a tool of this launch still runs";
        }
    }
}

// The text of the box that the launcher shows before ending; the box is answered with OK.
Text AnswerErrorBox(const ChildProcess& launcher)
{
    const auto box = testing::WaitForMessageBox(launcher.Id(), launcher.Handle(), 60000);
    if (!box) {
        return L"(no box)";
    }
    testing::PressMessageBoxButton(box->window, IDOK);
    return box->text;
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

    bool prepared = false;
    for (const JsonValue& call : install.ToolCalls()) {
        prepared = prepared || (!call.members.empty() && FindJsonMember(call, L"argv").items.size() > 1 &&
                                   FindJsonMember(call, L"argv").items[1].text == L"prepare");
    }
    EXPECT_TRUE(prepared);
    const Bytes reportBytes = testing::ReadFileBytes(report);
    EXPECT_EQ(reportBytes.rfind("{\"", 0), 0u) << "the start-up report is written";
    ExpectNoToolRunning(install);
}

TEST(DirectEdit, AModPackageIsLaunchedAndTheUsersCultureDecidesTheLanguage)
{
    SampleInstall install(L"direct-edit-file");
    install.SetEditorScenario(LR"({"mode":"crashBeforeWindow","exitCode":3})");
    ChildProcess launcher = StartLauncher(install,
        {L"-sdk=" + install.SdkPath(), L"-KorvaneModFile=" + install.ModPackage(1), L"-culture=zh-Hans"});
    const Text text = AnswerErrorBox(launcher);
    ASSERT_TRUE(launcher.Wait(60000));
    EXPECT_EQ(launcher.ExitCode(), 6u);
    EXPECT_EQ(text.rfind(L"编辑器启动失败（退出码 3）。请查看 Saved/Logs 中的启动日志。\n", 0), 0u) << text;
    EXPECT_NE(text.find(L"KorvaneLauncher-"), Text::npos) << "the made log path follows the message";
    const auto records = install.EditorRecords();
    ASSERT_EQ(records.size(), 1u);
    const Text commandLine = FindJsonMember(records[0], L"commandLine").text;
    EXPECT_NE(commandLine.find(L"\"-culture=zh-Hans\" \"-culture=zh-Hans\""), Text::npos)
        << "the launcher's own culture, then the user's word passed on: " << commandLine;
}

TEST(DirectEdit, EditorsThatEndBeforeTheirWindowAreReportedWithTheirExitCode)
{
    SampleInstall install(L"direct-edit-early");
    install.SetEditorScenario(LR"({"mode":"exitBeforeWindow","exitCode":0})");
    ChildProcess early = StartLauncher(install, DirectEditArguments(install));
    const Text text = AnswerErrorBox(early);
    ASSERT_TRUE(early.Wait(60000));
    EXPECT_EQ(early.ExitCode(), 6u);
    EXPECT_EQ(text.rfind(L"Editor startup failed (exit code 0). Check the startup log in Saved/Logs.\n", 0), 0u) << text;

    // A file where the log folder should be: no log argument and no log path in the message.
    install.SetEditorScenario(LR"({"mode":"crashBeforeWindow"})");
    testing::WriteFileBytes(JoinPath(install.Workspace(2), L"Saved"), "not a folder");
    ChildProcess crash = StartLauncher(install, {L"-sdk=" + install.SdkPath(), L"-KorvaneSelectedMod=" + install.ModId(2)});
    const Text crashText = AnswerErrorBox(crash);
    ASSERT_TRUE(crash.Wait(60000));
    EXPECT_EQ(crash.ExitCode(), 6u);
    EXPECT_EQ(crashText, L"Editor startup failed (exit code 3221225477). Check the startup log in Saved/Logs.");
    const auto records = install.EditorRecords();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(FindJsonMember(records[1], L"commandLine").text.find(L"-ABSLOG="), Text::npos);
}

TEST(DirectEdit, CancelDuringPreparationAndDuringTheWatchLeavesNothingRunning)
{
    SampleInstall install(L"direct-edit-cancel");
    install.SetToolScenario(LR"({"prepare":{"hang":true}})");
    ChildProcess preparing = StartLauncher(install, DirectEditArguments(install));
    HWND progress = WaitForTopLevelWindow(preparing, kProgressWindowClass);
    ASSERT_NE(progress, nullptr);
    // The tool runs once its call is logged.
    for (int attempt = 0; attempt < 600 && install.ToolCalls().size() < 2; ++attempt) {
        WaitForSingleObject(preparing.Handle(), 50);
    }
    PostMessageW(progress, WM_CLOSE, 0, 0);
    EXPECT_EQ(AnswerErrorBox(preparing), L"Operation cancelled.") << "the tool's cancel message goes first";
    ASSERT_TRUE(preparing.Wait(60000));
    EXPECT_EQ(preparing.ExitCode(), 6u);
    ExpectNoToolRunning(install);
    EXPECT_TRUE(install.EditorRecords().empty());

    install.SetToolScenario(L"");
    install.SetEditorScenario(LR"({"mode":"noWindow"})");
    ChildProcess watching = StartLauncher(install, DirectEditArguments(install));
    progress = WaitForTopLevelWindow(watching, kProgressWindowClass);
    ASSERT_NE(progress, nullptr);
    for (int attempt = 0; attempt < 600 && install.EditorRecords().empty(); ++attempt) {
        WaitForSingleObject(watching.Handle(), 50);
    }
    ASSERT_EQ(install.EditorRecords().size(), 1u);
    const DWORD editorId = static_cast<DWORD>(std::stoul(FindJsonMember(install.EditorRecords()[0], L"pid").text));
    UniqueHandle editor(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, editorId));
    ASSERT_TRUE(editor.IsValid());
    PostMessageW(progress, WM_CLOSE, 0, 0);
    EXPECT_EQ(AnswerErrorBox(watching), L"Editor launch cancelled.") << "no log path after a cancel";
    ASSERT_TRUE(watching.Wait(60000));
    EXPECT_EQ(watching.ExitCode(), 6u);
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
    ChildProcess late = StartLauncher(install, DirectEditArguments(install));
    EXPECT_EQ(AnswerErrorBox(late), L"KV1830: A Mod editor is already open. Close it before opening another.");
    ASSERT_TRUE(late.Wait(30000));
    EXPECT_EQ(late.ExitCode(), 9u);

    ASSERT_EQ(install.EditorRecords().size(), 1u);
    const DWORD editorId = static_cast<DWORD>(std::stoul(FindJsonMember(install.EditorRecords()[0], L"pid").text));
    HWND editorWindow = nullptr;
    for (int attempt = 0; attempt < 1200 && editorWindow == nullptr; ++attempt) {
        editorWindow = FindTopLevelWindow(editorId, L"UnrealWindow");
        WaitForSingleObject(winner->Handle(), 50);
    }
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
    SampleInstall install(L"direct-edit-handles");
    install.SetEditorScenario(LR"({"mode":"normal","runMs":400,"splashMs":0,"logPaceMs":0,"shaderLines":0})");
    auto launchOnce = [&install] {
        LaunchContext context;
        context.editorRoot = install.EditorRoot();
        context.launchTarget = install.SdkPath();
        context.gameDirectory = install.GameDirectory();
        context.selectedMod = install.ModId(0);
        context.language = L"en";
        Text error;
        ASSERT_TRUE(LaunchEditor(context, error)) << error;
        ASSERT_TRUE(context.editorStarted);
        EXPECT_EQ(WaitForSingleObject(context.editorProcess.Process(), 60000), WAIT_OBJECT_0);
        context.editorProcess.Reset();
    };
    for (int warmUp = 0; warmUp < 3; ++warmUp) {
        launchOnce();
    }
    const DWORD before = OpenHandleCount();
    for (int round = 0; round < 50; ++round) {
        launchOnce();
        if (::testing::Test::HasFatalFailure()) {
            return;
        }
    }
    const DWORD after = OpenHandleCount();
    EXPECT_LE(after, before + 2) << "handles before " << before << ", after " << after;
    SetUiLanguage(L"en");
}

}  // namespace
}  // namespace korvane
