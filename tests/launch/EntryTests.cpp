// The entry point: the options it reads, and the real launcher in scratch install trees with the
// exit codes, reports and boxes that follow. Then one editing session per logon session: the
// gate's named events, the wait for a closing editor, and the search for the editor a launcher
// was started from; events created here stand for other launchers and editors.
#include "launch/EntryOptions.h"

#include "MessageBoxes.h"
#include "TestSupport.h"

#include "context/LaunchContext.h"
#include "context/UiLanguage.h"
#include "foundation/Paths.h"
#include "launch/LaunchErrors.h"
#include "launch/SessionGate.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

namespace korvane {
namespace {

// Parses the arguments and names what differs from the defaults, in a fixed order, so that a
// row also fails when an argument sets something it should not.
Text Describe(const std::vector<Text>& arguments)
{
    const testing::ScopedUiLanguage english(L"en");
    EntryOptions o;
    LaunchContext c;
    c.languages = {{L"en", L"English"}, {L"zh-Hans", L"简体中文"}};
    Text d = ParseEntryArguments(arguments, o, c) == ArgumentsOutcome::ProjectFileGiven ? L"stop;" : L"";
    const auto text = [&d](const wchar_t* name, const Text& value) {
        d += value.empty() ? Text() : Text(name) + L"=" + value + L";";
    };
    const auto flag = [&d](const wchar_t* name, bool value) { d += value ? Text(name) + L";" : Text(); };
    const auto number = [&text](const wchar_t* name, std::uint32_t value, std::uint32_t standard) {
        text(name, value == standard ? Text() : std::to_wstring(value));
    };
    flag(L"emptyHost", o.emptyHost);
    flag(L"resolve", o.resolveHostContext);
    text(L"report", o.hostContextReportPath);
    flag(L"headless", o.headless);
    flag(L"instance", o.instanceCheck);
    flag(L"picker", c.pickerPreview);
    flag(L"pickerHidden", c.pickerPreviewHidden);
    text(L"snapshot", c.pickerSnapshot);
    text(L"fixture", c.pickerFixture);
    text(L"pickerReport", c.pickerReport);
    number(L"pickerMs", c.pickerPreviewMs, 0);
    number(L"pickerDpi", c.previewDpi, 96);
    text(L"language", c.language);
    flag(L"chineseUi", IsChineseUi());
    flag(L"startup", o.startupPreview);
    flag(L"noBackground", o.startupPreviewOptions.noBackground);
    flag(L"startupChinese", o.startupPreviewOptions.chinese);
    number(L"startupDpi", o.startupPreviewOptions.dpi, 96);
    number(L"startupMs", o.startupPreviewOptions.durationMs, 3000);
    text(L"startupReport", o.startupPreviewOptions.reportPath);
    text(L"phase", o.startupPreviewOptions.phaseText);
    number(L"pid", o.waitForEditorPid, 0);
    text(L"game", o.requestedGameDirectory);
    text(L"sdk", c.requestedSdk);
    text(L"mod", c.selectedMod);
    text(L"modFile", c.modFile);
    for (const Text& word : c.passThroughArguments) {
        text(L"pass", word);
    }
    return d;
}

TEST(EntryArguments, OptionTable)
{
    const struct {
        std::vector<Text> arguments;
        Text expected;
    } rows[] = {
        {{L"-KorvaneEmptyHost", L"-KorvaneHostContextReport=C:\\r.json", L"-KorvanePickerPreview",
             L"-KorvanePickerPreviewHidden", L"-KorvanePickerSnapshot=s.png", L"-KorvanePickerFixture=f.json",
             L"-KorvanePickerReport=p.json", L"-KorvanePickerPreviewMs=250", L"-KorvanePickerPreviewDpi=192",
             L"-KorvaneStartupPreview", L"-KorvaneStartupPreviewNoBackground", L"-KorvaneStartupPreviewDpi=144",
             L"-KorvaneStartupPreviewMs=60000", L"-KorvaneStartupReport=C:\\s.json", L"-KorvaneStartupPhase=P & Q",
             L"-KorvaneWaitForEditorPid=1234", L"-KorvaneGameDir=C:\\Game", L"-sdk=C:\\a.kvsdk",
             L"-KorvaneSelectedMod=mod.1", L"-KorvaneModFile=C:\\m.umod", L"-extra"},
            L"emptyHost;report=C:\\r.json;picker;pickerHidden;snapshot=s.png;fixture=f.json;pickerReport=p.json;"
            L"pickerMs=250;pickerDpi=192;startup;noBackground;startupDpi=144;startupMs=60000;"
            L"startupReport=C:\\s.json;phase=P & Q;pid=1234;game=C:\\Game;sdk=C:\\a.kvsdk;mod=mod.1;"
            L"modFile=C:\\m.umod;pass=-extra;"},
        {{L"-KorvaneResolveHostContext"}, L"resolve;headless;"},
        {{L"-KorvaneLauncherCheck"}, L"headless;"},
        {{L"-KorvaneInstanceCheck"}, L"headless;instance;"},
        // Values out of range or not strictly decimal are ignored; 4294967546 wraps to 250.
        {{L"-KorvaneStartupPreviewDpi=120", L"-KorvaneStartupPreviewMs=249", L"-KorvanePickerPreviewMs=60001",
             L"-KorvanePickerPreviewDpi=96x", L"-KorvaneStartupPreviewMs=", L"-KorvaneStartupPreviewDpi=+144",
             L"-KorvanePickerPreviewMs=4294967546", L"-KorvanePickerPreviewMs=249"},
            L""},
        {{L"-KorvaneStartupPreviewDpi=0144"}, L"startupDpi=144;"},
        {{L"-sdk=C:\\a.kvsdk", L"-sdk=C:\\b.kvsdk", L"-KorvaneStartupPreviewDpi=192", L"-KorvaneStartupPreviewDpi=100"},
            L"startupDpi=192;sdk=C:\\b.kvsdk;"},
        {{L"-KorvaneWaitForEditorPid=5", L"-KorvaneWaitForEditorPid=abc"}, L""},
        {{L"-KorvaneWaitForEditorPid= 42abc"}, L"pid=42;"},
        // Letter case matters except for the game, SDK and Mod options.
        {{L"-korvanegamedir=C:\\G", L"-SDK=C:\\s.kvsdk", L"-korvaneselectedmod=mod.x", L"-korvaneemptyhost",
             L"-korvanemodfile=C:\\m.umod", L"-KORVANELAUNCHERCHECK"},
            L"game=C:\\G;sdk=C:\\s.kvsdk;mod=mod.x;pass=-korvaneemptyhost;pass=-korvanemodfile=C:\\m.umod;"
            L"pass=-KORVANELAUNCHERCHECK;"},
        {{L"-KorvaneGameDir=", L"-sdk=", L"-KorvaneSelectedMod=", L"-KorvaneModFile="},
            L"pass=-KorvaneGameDir=;pass=-sdk=;pass=-KorvaneSelectedMod=;"},
        // The word after -sdk is taken untested; a trailing -sdk passes through.
        {{L"-Sdk", L"-KorvaneLauncherCheck", L"Game.KVSDK"}, L"sdk=Game.KVSDK;"},
        {{L"-sdk"}, L"pass=-sdk;"},
        {{L"-KorvaneModFile=C:\\x.kvsdk"}, L"sdk=-KorvaneModFile=C:\\x.kvsdk;"},
        // A project file ends the reading at once.
        {{L"-KorvaneLauncherCheck", L"C:\\Game\\Game.UPROJECT", L"-KorvaneStartupPreview"}, L"stop;headless;"},
        {{L"-KorvanePickerPreviewLanguage=zh_Hans"}, L"language=zh-Hans;chineseUi;"},
        {{L"-KorvaneStartupPreviewLanguage=ZH-HANS"}, L"startupChinese;"},
        {{L"-KorvaneStartupPreviewLanguage=zh_Hans"}, L""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Describe(row.arguments), row.expected) << TextToUtf8(row.arguments.front());
    }
}

// Headless runs end without a box; other runs tell the same failures in a box.
TEST(EntryProcess, InstallChecksAndProjectFileGiveTheirExitCodes)
{
    const struct {
        bool editorIsFolder;
        const wchar_t* rootName;
        std::vector<Text> arguments;
        DWORD exitCode;
        const wchar_t* box;
    } rows[] = {
        {false, L"Korvane \x7F16\x8F91\x5668", {L"-KorvaneLauncherCheck", L"-KorvaneEmptyHost"}, 8, L""},
        // -KorvaneEmptyHost clears the SDK wherever it stood.
        {false, L"install", {L"-KorvaneLauncherCheck", L"-sdk=C:\\x.kvsdk", L"-KorvaneEmptyHost"}, 0, L""},
        {false, L"install", {L"-KorvaneLauncherCheck", L"Game.uproject"}, 3, L""},
        {false, L"install", {L"-KorvaneLauncherCheck"}, 3, L""},  // neither SDK nor game to check
        // A folder is no editor, and the editor is checked before the root's characters.
        {true, L"\x00C9" L"diteur", {L"-KorvaneEmptyHost"}, 2,
            L"The official Unreal Editor was not found in this Korvane package."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(TextToUtf8(row.rootName));
        const testing::LauncherInstall install(L"entry", row.rootName);
        if (row.editorIsFolder) {
            DeleteFileW(install.Editor().c_str());
            testing::MakeDirectories(install.Editor());
        }
        const testing::RunEnd end = testing::WaitAnsweringBox(install.Start(row.arguments));
        EXPECT_EQ(end.box ? end.box->text : Text(), row.box);
        EXPECT_EQ(end.exitCode, row.exitCode);
    }
}

// The report's wording is the host tests'; here, the last environment word and a run without an
// editor, which this mode does not need. Without a path, or one that cannot be written, it gives 3.
TEST(EntryProcess, HostContextReportNeedsNoEditorAndFailsWithThree)
{
    const testing::LauncherInstall install(L"report");
    DeleteFileW(install.Editor().c_str());
    const Text report = install / L"report.json";
    EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + report, L"-sdk=C:\\T.kvsdk",
                  L"-KorvaneHostEnvironment=developer", L"-KorvaneHostEnvironment=packaged"}),
        0u);
    EXPECT_EQ(testing::ReadFileBytes(report), R"({"game":"","sdk":"C:\\T.kvsdk","environment":"packaged"})");
    EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext", L"-KorvaneHostContextReport=" + install.Root()}), 3u);
    EXPECT_EQ(install.Run({L"-KorvaneResolveHostContext"}), 3u);
}

// An event of this test alone, for talking to the stand-in parent editor.
struct SignalEvent {
    static inline int counter = 0;
    Text name = L"Local\\KorvaneGateTest." + std::to_wstring(GetCurrentProcessId()) + L"." + std::to_wstring(++counter);
    UniqueHandle event{CreateEventW(nullptr, TRUE, FALSE, name.c_str())};
};

const Text kParentEditorProgram = JoinPath(testing::BinaryDirectory(), L"ParentEditor.exe");

// Waits for the launcher's box, checks and answers it; the run then ends with 9. (The boxes'
// wording is checked with every other text; here, which box a run shows.)
void ExpectBoxThenNine(DWORD launcherId, HANDLE launcher, const LocalizedText& text)
{
    const auto box = testing::WaitForMessageBox(launcherId, launcher);
    ASSERT_TRUE(box.has_value()) << "the launcher ended without a box";
    EXPECT_EQ(box->text, text.In(false));
    testing::PressMessageBoxButton(box->window, IDOK);
    ASSERT_EQ(WaitForSingleObject(launcher, 30000), WAIT_OBJECT_0);
    DWORD code = 0;
    GetExitCodeProcess(launcher, &code);
    EXPECT_EQ(code, 9u);
}

// The stand-in editor started from `program`. It starts the launcher words as its own child and
// writes the child's id to `pidFile`. It stays until released.
class ParentEditor {
public:
    ParentEditor(TextView program, const Text& pidFile, const std::vector<Text>& launcher)
    {
        DeleteFileW(pidFile.c_str());
        std::vector<Text> arguments{ready_.name, release_.name, pidFile};
        arguments.insert(arguments.end(), launcher.begin(), launcher.end());
        editor_ = testing::ChildProcess::Start(program, arguments);
        EXPECT_EQ(WaitForSingleObject(ready_.event.Get(), 30000), WAIT_OBJECT_0) << "the parent editor did not start";
        launcherId_ = static_cast<DWORD>(std::stoul("0" + testing::ReadFileBytes(pidFile)));
        launcher_.Reset(
            OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION | PROCESS_TERMINATE, FALSE, launcherId_));
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
    testing::ChildProcess child = testing::ChildProcess::Start(kParentEditorProgram, {});
    EXPECT_TRUE(child.Wait(30000));
    return child.Id();
}

// An earlier launcher that stays. The instance check, which never reads the host configuration
// (so a broken one is no exit 3), is refused at the gate at once. Given the id of an editor that
// has gone, a launcher waits the shipped 15 s for the earlier one, the one check that runs them:
// headless it ends with 9 alone, an ordinary start in a box.
TEST(SessionGate, AnEarlierLauncherThatStaysIsRefusedAtOnceOrAfterFifteenSeconds)
{
    const testing::LauncherInstall install(L"earlier-launcher");
    testing::WriteFileBytes(JoinPath(install.Root(), L"KorvaneUpdate.config.json"), R"({"schemaVersion":2})");
    EXPECT_EQ(install.Run({L"-KorvaneInstanceCheck"}), 0u);
    // Another launcher, for as long as the handle is held.
    const UniqueHandle earlier(CreateEventW(nullptr, TRUE, FALSE, kLauncherSessionEventName));
    EXPECT_EQ(install.Run({L"-KorvaneInstanceCheck"}), 9u);

    const Text pidOption = L"-KorvaneWaitForEditorPid=" + std::to_wstring(EndedProcessId());
    const ULONGLONG start = GetTickCount64();
    testing::ChildProcess headless = install.Start({L"-KorvaneInstanceCheck", pidOption});
    testing::ChildProcess interactive = install.Start({L"-KorvaneEmptyHost", pidOption});
    ASSERT_TRUE(headless.Wait(60000));
    EXPECT_EQ(headless.ExitCode(), 9u);
    EXPECT_GE(GetTickCount64() - start, 15000u) << "gave up before the earlier launcher's time was out";
    ExpectBoxThenNine(interactive.Id(), interactive.Handle(), kSessionClosingMessage);
}

TEST(ClosingEditorWait, OnlyThisInstallsEditorIsWaitedForAndOnlyWithinTheLimit)
{
    const testing::LauncherInstall install(L"parent-editor");
    testing::CopyFileTo(kParentEditorProgram, install.Editor());
    const Text otherEditor = install / L"other\\Engine\\Binaries\\Win64\\UnrealEditor.exe";
    testing::CopyFileTo(kParentEditorProgram, otherEditor);
    const Text pidFile = install / L"launcher.pid";
    {
        // A running editor, so that the gate blocks after the wait.
        const UniqueHandle openEditor(CreateEventW(nullptr, TRUE, FALSE, kEditorSessionEventName));
        // The same file name elsewhere is no editor of this install: the gate blocks at once.
        ParentEditor other(otherEditor, pidFile, {install.Launcher(), L"-KorvaneEmptyHost"});
        ExpectBoxThenNine(other.LauncherId(), other.Launcher(), kSessionInUseMessage);
        EXPECT_TRUE(other.Runs()) << "the box came while the parent still ran";

        // In this process, with short limits: an editor that does not end in time, and one that
        // has gone. One that can never end while it is waited for is refused without a wait.
        const ClosingEditorLimits quick{300, 300, kEarlierLauncherPollMs};
        EXPECT_FALSE(WaitForClosingEditor(install.Root(), {other.Id(), true, false}, quick));
        EXPECT_TRUE(WaitForClosingEditor(install.Root(), {EndedProcessId(), true, false}, quick));
        const ULONGLONG start = GetTickCount64();
        const ClosingEditorLimits patient{60000, 300, kEarlierLauncherPollMs};
        EXPECT_FALSE(WaitForClosingEditor(install.Root(), {GetCurrentProcessId(), true, false}, patient));
        EXPECT_LT(GetTickCount64() - start, 30000u) << "waited for itself";
    }
    {
        // Started through a path in other letter case and with forward slashes, while another
        // launcher holds the gate. Found, the editor is waited for and then, the shipped 15 s, the
        // other launcher, and the session is closing; missed, the gate would say one is in use.
        const UniqueHandle otherLauncher(CreateEventW(nullptr, TRUE, FALSE, kLauncherSessionEventName));
        ParentEditor parent(install.Root() + L"/engine/BINARIES/win64/unrealeditor.EXE", pidFile,
            {install.Launcher(), L"-KorvaneEmptyHost"});
        EXPECT_FALSE(testing::WaitForMessageBox(parent.LauncherId(), parent.Launcher(), 2000).has_value())
            << "the launcher went on while its editor was still running";
        parent.Release();
        ExpectBoxThenNine(parent.LauncherId(), parent.Launcher(), kSessionClosingMessage);
    }
    // Headless modes do not look for a parent editor.
    ParentEditor parent(install.Editor(), pidFile, {install.Launcher(), L"-KorvaneInstanceCheck"});
    EXPECT_EQ(WaitForSingleObject(parent.Launcher(), 30000), WAIT_OBJECT_0) << "it waited for its parent";
    EXPECT_TRUE(parent.Runs());
}

}  // namespace
}  // namespace korvane
