// One editing session per logon session: the gate's named events, the wait for a closing
// editor, and the search for the editor a launcher was started from. Real launchers in
// scratch installs; events created here stand for other launchers and editors.
#include "MessageBoxes.h"
#include "TestSupport.h"

#include "foundation/Paths.h"
#include "launch/LaunchContext.h"
#include "launch/SessionGate.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <thread>

namespace korvane {
namespace {

using testing::ScratchDirectory;

constexpr wchar_t kKV1830[] = L"KV1830: A Mod editor is already open. Close it before opening another.";
constexpr wchar_t kClosing[] =
    L"The previous editing session is still closing. Finish saving and close it before retrying.";

// A named event created by the test: another launcher or a running editor while it lives.
class HeldEvent {
public:
    explicit HeldEvent(const wchar_t* name) : event_(CreateEventW(nullptr, TRUE, FALSE, name))
    {
        const DWORD error = GetLastError();
        EXPECT_TRUE(event_.IsValid());
        EXPECT_NE(error, static_cast<DWORD>(ERROR_ALREADY_EXISTS)) << "left behind by someone else";
    }
    HANDLE Get() const { return event_.Get(); }
    void Close() { event_.Reset(); }

private:
    UniqueHandle event_;
};

// An event with a name of this test alone, for talking to the stand-in parent editor.
class SignalEvent {
public:
    SignalEvent()
        : name_(L"Local\\KorvaneGateTest." + std::to_wstring(GetCurrentProcessId()) + L"." +
                std::to_wstring(++counter_)),
          event_(CreateEventW(nullptr, TRUE, FALSE, name_.c_str()))
    {
        EXPECT_TRUE(event_.IsValid());
    }
    const Text& Name() const { return name_; }
    HANDLE Get() const { return event_.Get(); }

private:
    static inline int counter_ = 0;
    Text name_;
    UniqueHandle event_;
};

// A scratch install: the launcher at the root and a file where the editor is looked for.
class ScratchInstall {
public:
    explicit ScratchInstall(TextView label) : scratch_(label), root_(scratch_ / L"install")
    {
        testing::CopyFileTo(testing::BuiltLauncherPath(), Launcher());
        testing::WriteFileBytes(Editor(), "MZ");
    }

    const Text& Root() const { return root_; }
    Text Launcher() const { return JoinPath(root_, L"KorvaneEditor.exe"); }
    Text Editor() const { return JoinPath(root_, L"Engine\\Binaries\\Win64\\UnrealEditor.exe"); }
    Text Scratch(TextView relative) const { return scratch_ / relative; }

    testing::ChildProcess Start(const std::vector<Text>& arguments) const
    {
        testing::ProcessOptions options;
        options.currentDirectory = root_;
        return testing::ChildProcess::Start(Launcher(), arguments, options);
    }

    DWORD Run(const std::vector<Text>& arguments) const
    {
        testing::ProcessOptions options;
        options.currentDirectory = root_;
        return testing::RunProcess(Launcher(), arguments, options).exitCode;
    }

private:
    ScratchDirectory scratch_;
    Text root_;
};

Text ParentEditorProgram()
{
    return JoinPath(testing::BinaryDirectory(), L"ParentEditor.exe");
}

// The id of a process that has ended: the stand-in parent refuses to run without arguments.
DWORD EndedProcessId()
{
    testing::ChildProcess child = testing::ChildProcess::Start(ParentEditorProgram(), {});
    EXPECT_TRUE(child.Wait(30000));
    return child.Id();
}

// Waits for the launcher's box, checks its text, presses OK and gives the exit code.
void ExpectBoxThenExit(testing::ChildProcess& launcher, const wchar_t* text, DWORD exitCode)
{
    const auto box = testing::WaitForMessageBox(launcher.Id(), launcher.Handle());
    ASSERT_TRUE(box.has_value()) << "the launcher ended without a box";
    EXPECT_EQ(box->title, L"Korvane launch error");
    EXPECT_EQ(box->text, text);
    testing::PressMessageBoxButton(box->window, IDOK);
    ASSERT_TRUE(launcher.Wait(30000));
    EXPECT_EQ(launcher.ExitCode(), exitCode);
}

TEST(SessionGate, InstanceCheckSeesLaunchersAndEditorsAndLeavesNothing)
{
    ASSERT_FALSE(SessionEventExists(kLauncherSessionEventName));
    ASSERT_FALSE(SessionEventExists(kEditorSessionEventName));
    ScratchInstall install(L"instance-check");

    EXPECT_EQ(install.Run({L"-KorvaneInstanceCheck"}), 0u);
    EXPECT_FALSE(SessionEventExists(kLauncherSessionEventName)) << "the event went with the process";
    {
        HeldEvent launcher(kLauncherSessionEventName);
        EXPECT_EQ(install.Run({L"-KorvaneInstanceCheck"}), 9u);
    }
    {
        HeldEvent editor(kEditorSessionEventName);
        EXPECT_EQ(install.Run({L"-KorvaneInstanceCheck"}), 9u);
        EXPECT_FALSE(SessionEventExists(kLauncherSessionEventName)) << "a blocked launcher keeps no event";
    }
    // Text that is no number is the same as no option.
    EXPECT_EQ(install.Run({L"-KorvaneInstanceCheck", L"-KorvaneWaitForEditorPid=abc"}), 0u);
    EXPECT_FALSE(SessionEventExists(kLauncherSessionEventName));
}

TEST(SessionGate, GateInProcessHoldsTheNameUntilReleased)
{
    LaunchContext context;
    UniqueHandle first;
    ASSERT_TRUE(PassSessionGate(first));
    EXPECT_TRUE(first.IsValid());
    EXPECT_TRUE(SessionEventExists(kLauncherSessionEventName));

    UniqueHandle second;
    EXPECT_FALSE(PassSessionGate(second)) << "the name is taken";
    EXPECT_FALSE(second.IsValid());
    first.Reset();
    EXPECT_FALSE(SessionEventExists(kLauncherSessionEventName));

    HeldEvent editor(kEditorSessionEventName);
    UniqueHandle blocked;
    EXPECT_FALSE(PassSessionGate(blocked));
    EXPECT_FALSE(blocked.IsValid());
    EXPECT_FALSE(SessionEventExists(kLauncherSessionEventName));
}

TEST(SessionGate, InteractiveStartInTheWayOfASessionShowsKV1830)
{
    ScratchInstall install(L"gate-box");
    {
        HeldEvent launcher(kLauncherSessionEventName);
        testing::ChildProcess second = install.Start({L"-KorvaneEmptyHost"});
        ExpectBoxThenExit(second, kKV1830, 9);
    }
    {
        HeldEvent editor(kEditorSessionEventName);
        testing::ChildProcess second = install.Start({L"-KorvaneEmptyHost"});
        ExpectBoxThenExit(second, kKV1830, 9);
    }
}

TEST(ClosingEditorWait, EndsWhenTheEditorAndItsLauncherAreGone)
{
    LaunchContext context;
    ClosingEditorLimits quick;
    quick.editorWaitMs = 300;
    quick.launcherWaitMs = 300;

    // Nothing named and nothing to look for.
    EXPECT_TRUE(WaitForClosingEditor(context, {0, true, false}, quick));
    EXPECT_TRUE(WaitForClosingEditor(context, {0, false, true}, quick));
    // Started from the test program, which is no editor of this install.
    context.editorRoot = L"C:\\nowhere";
    EXPECT_TRUE(WaitForClosingEditor(context, {0, false, false}, quick));

    // A process that is gone is not waited for; an earlier launcher that stays is.
    const DWORD ended = EndedProcessId();
    EXPECT_TRUE(WaitForClosingEditor(context, {ended, true, false}, quick));
    {
        HeldEvent launcher(kLauncherSessionEventName);
        EXPECT_FALSE(WaitForClosingEditor(context, {ended, true, false}, quick));
    }

    // The own process id can never end while waiting.
    EXPECT_FALSE(WaitForClosingEditor(context, {GetCurrentProcessId(), true, false}, quick));

    // An editor that does not end within the limit.
    SignalEvent ready;
    SignalEvent release;
    testing::ChildProcess editor =
        testing::ChildProcess::Start(ParentEditorProgram(), {ready.Name(), release.Name(), L"-"});
    ASSERT_EQ(WaitForSingleObject(ready.Get(), 30000), WAIT_OBJECT_0);
    EXPECT_FALSE(WaitForClosingEditor(context, {editor.Id(), true, false}, quick));

    // An earlier launcher that goes while the new one polls, with the shipped limits.
    HeldEvent launcher(kLauncherSessionEventName);
    bool goesOn = false;
    std::thread waiter([&] { goesOn = WaitForClosingEditor(context, {ended, true, false}); });
    launcher.Close();
    waiter.join();
    EXPECT_TRUE(goesOn);

    SetEvent(release.Get());
    EXPECT_TRUE(editor.Wait(30000));
}

TEST(ClosingEditorWait, OwnProcessIdShowsTheClosingMessage)
{
    LaunchContext context;
    bool goesOn = true;
    std::thread waiter([&] { goesOn = WaitForClosingEditor(context, {GetCurrentProcessId(), false, false}); });
    const auto box = testing::WaitForMessageBox(GetCurrentProcessId(), nullptr);
    ASSERT_TRUE(box.has_value());
    EXPECT_EQ(box->title, L"Korvane launch error");
    EXPECT_EQ(box->text, kClosing);
    testing::PressMessageBoxButton(box->window, IDOK);
    waiter.join();
    EXPECT_FALSE(goesOn);
}

TEST(ClosingEditorWait, LauncherStandsByUntilTheNamedEditorEnds)
{
    ScratchInstall install(L"wait-editor");
    SignalEvent ready;
    SignalEvent release;
    testing::ChildProcess editor =
        testing::ChildProcess::Start(ParentEditorProgram(), {ready.Name(), release.Name(), L"-"});
    ASSERT_EQ(WaitForSingleObject(ready.Get(), 30000), WAIT_OBJECT_0);

    // Headless as it is, the instance check honours the explicit id.
    testing::ChildProcess launcher =
        install.Start({L"-KorvaneInstanceCheck", L"-KorvaneWaitForEditorPid=" + std::to_wstring(editor.Id())});
    EXPECT_FALSE(launcher.Wait(1500)) << "the launcher did not wait for the editor";
    SetEvent(release.Get());
    ASSERT_TRUE(editor.Wait(30000));
    ASSERT_TRUE(launcher.Wait(30000));
    EXPECT_EQ(launcher.ExitCode(), 0u);
    EXPECT_FALSE(SessionEventExists(kLauncherSessionEventName));
}

TEST(ClosingEditorWait, EarlierLauncherThatStaysGivesNineAfterFifteenSeconds)
{
    ScratchInstall install(L"wait-launcher");
    const std::wstring pidOption = L"-KorvaneWaitForEditorPid=" + std::to_wstring(EndedProcessId());
    HeldEvent earlier(kLauncherSessionEventName);

    // Both run side by side: one headless without a box, one ordinary start with it.
    const ULONGLONG start = GetTickCount64();
    testing::ChildProcess headless = install.Start({L"-KorvaneInstanceCheck", pidOption});
    testing::ChildProcess interactive = install.Start({L"-KorvaneEmptyHost", pidOption});

    ASSERT_TRUE(headless.Wait(60000));
    EXPECT_EQ(headless.ExitCode(), 9u);
    EXPECT_GE(GetTickCount64() - start, 15000u) << "gave up before the earlier launcher's time was out";
    ExpectBoxThenExit(interactive, kClosing, 9);
}

// The stand-in editor program placed where an install keeps its editor, starting a launcher
// as its own child and staying until released.
class ParentEditor {
public:
    ParentEditor(TextView program, const ScratchInstall& install, const std::vector<Text>& launcherArguments)
        : pidFile_(install.Scratch(L"launcher.pid"))
    {
        std::vector<Text> arguments{ready_.Name(), release_.Name(), pidFile_, install.Launcher()};
        arguments.insert(arguments.end(), launcherArguments.begin(), launcherArguments.end());
        testing::ProcessOptions options;
        options.currentDirectory = install.Root();
        editor_ = testing::ChildProcess::Start(program, arguments, options);
        EXPECT_EQ(WaitForSingleObject(ready_.Get(), 30000), WAIT_OBJECT_0) << "the parent editor did not start";
        const Bytes pid = testing::ReadFileBytes(pidFile_);
        launcherId_ = pid.empty() ? 0 : static_cast<DWORD>(std::stoul(pid));
        launcher_.Reset(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION | PROCESS_TERMINATE, FALSE,
            launcherId_));
        EXPECT_TRUE(launcher_.IsValid());
    }

    ~ParentEditor()
    {
        if (launcher_ && WaitForSingleObject(launcher_.Get(), 0) == WAIT_TIMEOUT) {
            TerminateProcess(launcher_.Get(), 0xDEAD);
            WaitForSingleObject(launcher_.Get(), 5000);
        }
        Release();
    }

    DWORD LauncherId() const { return launcherId_; }
    HANDLE Launcher() const { return launcher_.Get(); }
    bool EditorRuns() { return !editor_.Wait(0); }

    void Release()
    {
        SetEvent(release_.Get());
        editor_.Wait(30000);
    }

    DWORD LauncherExitCode(DWORD timeoutMs = 30000) const
    {
        DWORD code = 0xFFFFFFFF;
        if (WaitForSingleObject(launcher_.Get(), timeoutMs) == WAIT_OBJECT_0) {
            GetExitCodeProcess(launcher_.Get(), &code);
        }
        return code;
    }

private:
    SignalEvent ready_;
    SignalEvent release_;
    Text pidFile_;
    testing::ChildProcess editor_;
    UniqueHandle launcher_;
    DWORD launcherId_ = 0;
};

void PressOk(const std::optional<testing::MessageBoxSeen>& box, const wchar_t* text)
{
    ASSERT_TRUE(box.has_value()) << "no box";
    EXPECT_EQ(box->text, text);
    testing::PressMessageBoxButton(box->window, IDOK);
}

TEST(FindParentEditor, LauncherFromThisInstallsEditorWaitsForItsEnd)
{
    ScratchInstall install(L"parent-editor");
    testing::CopyFileTo(ParentEditorProgram(), install.Editor());
    {
        HeldEvent openEditor(kEditorSessionEventName);  // after the wait, the gate blocks with a box
        // Started through a path in other letter case and with forward slashes.
        const Text editorPath = install.Root() + L"/engine/BINARIES/win64/unrealeditor.EXE";
        ParentEditor parent(editorPath, install, {L"-KorvaneEmptyHost"});
        EXPECT_FALSE(testing::WaitForMessageBox(parent.LauncherId(), parent.Launcher(), 2000).has_value())
            << "the launcher went on while its editor was still running";
        EXPECT_TRUE(parent.EditorRuns());
        parent.Release();
        PressOk(testing::WaitForMessageBox(parent.LauncherId(), parent.Launcher()), kKV1830);
        EXPECT_EQ(parent.LauncherExitCode(), 9u);
    }
    {
        // Headless modes do not look for a parent editor.
        ParentEditor parent(install.Editor(), install, {L"-KorvaneInstanceCheck"});
        EXPECT_EQ(parent.LauncherExitCode(), 0u);
        EXPECT_TRUE(parent.EditorRuns());
    }
}

TEST(FindParentEditor, SameFileNameElsewhereIsNoEditorOfThisInstall)
{
    ScratchInstall install(L"parent-other");
    const Text otherEditor = install.Scratch(L"other\\Engine\\Binaries\\Win64\\UnrealEditor.exe");
    testing::CopyFileTo(ParentEditorProgram(), otherEditor);
    HeldEvent openEditor(kEditorSessionEventName);

    ParentEditor parent(otherEditor, install, {L"-KorvaneEmptyHost"});
    PressOk(testing::WaitForMessageBox(parent.LauncherId(), parent.Launcher()), kKV1830);
    EXPECT_EQ(parent.LauncherExitCode(), 9u);
    EXPECT_TRUE(parent.EditorRuns()) << "the box came while the parent still ran";
}

}  // namespace
}  // namespace korvane
