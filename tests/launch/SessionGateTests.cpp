// One editing session per logon session: the gate's named events, the wait for a closing
// editor, and the search for the editor a launcher was started from. Real launchers in
// scratch installs; events created here stand for other launchers and editors.
#include "MessageBoxes.h"
#include "TestSupport.h"

#include "foundation/Paths.h"
#include "launch/LaunchErrors.h"
#include "launch/SessionGate.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <thread>

namespace korvane {
namespace {

// The boxes' wording is checked with every other text; here, which box a run shows.
const Text kKV1830 = kSessionInUseMessage.In(false);
const Text kClosing = kSessionClosingMessage.In(false);

// Another launcher or a running editor, for as long as the handle is held.
UniqueHandle HoldEvent(const wchar_t* name)
{
    HANDLE event = CreateEventW(nullptr, TRUE, FALSE, name);
    EXPECT_NE(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS)) << "left behind by someone else";
    return UniqueHandle(event);
}

// An event of this test alone, for talking to the stand-in parent editor.
struct SignalEvent {
    static inline int counter = 0;
    Text name = L"Local\\KorvaneGateTest." + std::to_wstring(GetCurrentProcessId()) + L"." + std::to_wstring(++counter);
    UniqueHandle event{CreateEventW(nullptr, TRUE, FALSE, name.c_str())};
};

using testing::LauncherInstall;

Text ParentEditorProgram()
{
    return JoinPath(testing::BinaryDirectory(), L"ParentEditor.exe");
}

// Waits up to 30 s for the process to end; 0xFFFFFFFF when it runs on.
DWORD ExitCodeOf(HANDLE process)
{
    DWORD code = 0xFFFFFFFF;
    if (WaitForSingleObject(process, 30000) == WAIT_OBJECT_0) {
        GetExitCodeProcess(process, &code);
    }
    return code;
}

// Waits for the launcher's box, checks and answers it; the run then ends with 9.
void ExpectBoxThenNine(DWORD launcherId, HANDLE launcher, const Text& text)
{
    const auto box = testing::WaitForMessageBox(launcherId, launcher);
    ASSERT_TRUE(box.has_value()) << "the launcher ended without a box";
    EXPECT_EQ(box->title, kLaunchErrorTitle.In(false));
    EXPECT_EQ(box->text, text);
    testing::PressMessageBoxButton(box->window, IDOK);
    EXPECT_EQ(ExitCodeOf(launcher), 9u);
}

// The stand-in editor started from `program`. Given launcher words, it starts that launcher
// as its own child and writes the child's id to `pidFile`. It stays until released.
class ParentEditor {
public:
    explicit ParentEditor(TextView program, const Text& pidFile = L"-", const std::vector<Text>& launcher = {})
    {
        DeleteFileW(pidFile.c_str());
        std::vector<Text> arguments{ready_.name, release_.name, pidFile};
        arguments.insert(arguments.end(), launcher.begin(), launcher.end());
        editor_ = testing::ChildProcess::Start(program, arguments);
        EXPECT_EQ(WaitForSingleObject(ready_.event.Get(), 30000), WAIT_OBJECT_0) << "the parent editor did not start";
        if (!launcher.empty()) {
            launcherId_ = static_cast<DWORD>(std::stoul("0" + testing::ReadFileBytes(pidFile)));
            launcher_.Reset(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION | PROCESS_TERMINATE, FALSE,
                launcherId_));
            EXPECT_TRUE(launcher_.IsValid());
        }
    }
    ~ParentEditor()
    {
        if (launcher_ && WaitForSingleObject(launcher_.Get(), 0) == WAIT_TIMEOUT) {
            TerminateProcess(launcher_.Get(), 0xDEAD);
            WaitForSingleObject(launcher_.Get(), 5000);
        }
        Release();
    }

    DWORD Id() const { return editor_.Id(); }
    DWORD LauncherId() const { return launcherId_; }
    HANDLE Launcher() const { return launcher_.Get(); }
    bool Runs() { return !editor_.Wait(0); }
    void Release()
    {
        SetEvent(release_.event.Get());
        EXPECT_TRUE(editor_.Wait(30000));
    }

private:
    SignalEvent ready_;
    SignalEvent release_;
    testing::ChildProcess editor_;
    UniqueHandle launcher_;
    DWORD launcherId_ = 0;
};

// The id of a process that has ended: the stand-in parent refuses to run without arguments.
DWORD EndedProcessId()
{
    testing::ChildProcess child = testing::ChildProcess::Start(ParentEditorProgram(), {});
    EXPECT_TRUE(child.Wait(30000));
    return child.Id();
}

TEST(SessionGate, InstanceCheckSeesLaunchersAndEditorsAndLeavesNothing)
{
    ASSERT_FALSE(SessionEventExists(kLauncherSessionEventName));
    ASSERT_FALSE(SessionEventExists(kEditorSessionEventName));
    const LauncherInstall install(L"instance-check");
    // The check never reads the host configuration, so a broken one is no exit 3.
    testing::WriteFileBytes(JoinPath(install.Root(), L"KorvaneUpdate.config.json"), R"({"schemaVersion":2})");
    EXPECT_EQ(install.Run({L"-KorvaneInstanceCheck"}), 0u);
    EXPECT_FALSE(SessionEventExists(kLauncherSessionEventName)) << "the event went with the process";
    for (const wchar_t* other : {kLauncherSessionEventName, kEditorSessionEventName}) {
        const UniqueHandle held = HoldEvent(other);
        EXPECT_EQ(install.Run({L"-KorvaneInstanceCheck"}), 9u);
    }
    EXPECT_FALSE(SessionEventExists(kLauncherSessionEventName)) << "a blocked launcher keeps no event";
}

TEST(ClosingEditorWait, GoesOnOnceTheEditorAndItsLauncherAreGone)
{
    const Text editorRoot = L"C:\\nowhere";  // the test program is no editor of this install
    const ClosingEditorLimits quick{300, 300, kEarlierLauncherPollMs};
    const DWORD ended = EndedProcessId();
    ParentEditor editor(ParentEditorProgram());
    const struct {
        ClosingEditorWait wait;
        bool launcherHeld;
        bool goesOn;
    } rows[] = {
        {{0, true, false}, false, true},
        {{0, false, true}, false, true},
        {{0, false, false}, false, true},
        {{ended, true, false}, false, true},  // a process that is gone is not waited for
        {{ended, true, false}, true, false},  // an earlier launcher that stays is
        {{GetCurrentProcessId(), true, false}, false, false},  // can never end while waiting
        {{editor.Id(), true, false}, false, false},  // does not end within the limit
    };
    for (const auto& row : rows) {
        const UniqueHandle held = row.launcherHeld ? HoldEvent(kLauncherSessionEventName) : UniqueHandle();
        EXPECT_EQ(WaitForClosingEditor(editorRoot, row.wait, quick), row.goesOn) << row.wait.waitForEditorPid;
    }

    // An earlier launcher that goes while the new one polls, with the shipped limits.
    UniqueHandle launcher = HoldEvent(kLauncherSessionEventName);
    bool goesOn = false;
    std::thread waiter([&] { goesOn = WaitForClosingEditor(editorRoot, {ended, true, false}); });
    launcher.Reset();
    waiter.join();
    EXPECT_TRUE(goesOn);

    // Headless as it is, the instance check honours the explicit id and stands by.
    const LauncherInstall install(L"wait-editor");
    testing::ChildProcess check =
        install.Start({L"-KorvaneInstanceCheck", L"-KorvaneWaitForEditorPid=" + std::to_wstring(editor.Id())});
    EXPECT_FALSE(check.Wait(1500)) << "the launcher did not wait for the editor";
    editor.Release();
    ASSERT_TRUE(check.Wait(30000));
    EXPECT_EQ(check.ExitCode(), 0u);
}

// The one check that runs the shipped 15 s: headless ends with 9 alone, an ordinary start in a box.
TEST(ClosingEditorWait, EarlierLauncherThatStaysGivesNineAfterFifteenSeconds)
{
    const LauncherInstall install(L"wait-launcher");
    const Text pidOption = L"-KorvaneWaitForEditorPid=" + std::to_wstring(EndedProcessId());
    const UniqueHandle earlier = HoldEvent(kLauncherSessionEventName);
    const ULONGLONG start = GetTickCount64();
    testing::ChildProcess headless = install.Start({L"-KorvaneInstanceCheck", pidOption});
    testing::ChildProcess interactive = install.Start({L"-KorvaneEmptyHost", pidOption});
    ASSERT_TRUE(headless.Wait(60000));
    EXPECT_EQ(headless.ExitCode(), 9u);
    EXPECT_GE(GetTickCount64() - start, 15000u) << "gave up before the earlier launcher's time was out";
    ExpectBoxThenNine(interactive.Id(), interactive.Handle(), kClosing);
}

TEST(FindParentEditor, OnlyThisInstallsEditorIsWaitedFor)
{
    const LauncherInstall install(L"parent-editor");
    testing::CopyFileTo(ParentEditorProgram(), install.Editor());
    const Text otherEditor = install / L"other\\Engine\\Binaries\\Win64\\UnrealEditor.exe";
    testing::CopyFileTo(ParentEditorProgram(), otherEditor);
    const Text pidFile = install / L"launcher.pid";
    {
        const UniqueHandle openEditor = HoldEvent(kEditorSessionEventName);  // the gate blocks after the wait
        // The same file name elsewhere is no editor of this install: the gate blocks at once.
        ParentEditor other(otherEditor, pidFile, {install.Launcher(), L"-KorvaneEmptyHost"});
        ExpectBoxThenNine(other.LauncherId(), other.Launcher(), kKV1830);
        EXPECT_TRUE(other.Runs()) << "the box came while the parent still ran";

        // Started through a path in other letter case and with forward slashes.
        ParentEditor parent(install.Root() + L"/engine/BINARIES/win64/unrealeditor.EXE", pidFile,
            {install.Launcher(), L"-KorvaneEmptyHost"});
        EXPECT_FALSE(testing::WaitForMessageBox(parent.LauncherId(), parent.Launcher(), 2000).has_value())
            << "the launcher went on while its editor was still running";
        parent.Release();
        ExpectBoxThenNine(parent.LauncherId(), parent.Launcher(), kKV1830);
    }
    // Headless modes do not look for a parent editor.
    ParentEditor parent(install.Editor(), pidFile, {install.Launcher(), L"-KorvaneInstanceCheck"});
    EXPECT_EQ(ExitCodeOf(parent.Launcher()), 0u);
    EXPECT_TRUE(parent.Runs());
}

}  // namespace
}  // namespace korvane
