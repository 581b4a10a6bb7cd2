// The stand-in editor run for real inside a sample install: its record, its log, its windows,
// the session event and its modes.
#include "CapturedRun.h"
#include "SampleInstall.h"
#include "TestSupport.h"

#include "foundation/Json.h"
#include "foundation/Paths.h"

#include <gtest/gtest.h>

#include <tlhelp32.h>

namespace korvane {
namespace {

using testing::ChildProcess;
using testing::SampleInstall;

constexpr wchar_t kEditorEvent[] = L"Local\\Korvane.AuthorEditor.Interactive";

struct SeenWindow {
    HWND handle = nullptr;
    Text className;
    Text title;
    bool visible = false;
    bool owned = false;
    LONG width = 0;
    LONG height = 0;
};

std::vector<SeenWindow> TopLevelWindowsOf(DWORD processId)
{
    struct Search {
        DWORD processId;
        std::vector<SeenWindow> found;
    } search{processId, {}};
    EnumWindows(
        [](HWND window, LPARAM context) -> BOOL {
            auto& state = *reinterpret_cast<Search*>(context);
            DWORD owner = 0;
            GetWindowThreadProcessId(window, &owner);
            if (owner != state.processId) {
                return TRUE;
            }
            SeenWindow seen;
            seen.handle = window;
            wchar_t text[256] = {};
            seen.className.assign(text, static_cast<size_t>(GetClassNameW(window, text, 256)));
            seen.title.assign(text, static_cast<size_t>(GetWindowTextW(window, text, 256)));
            seen.visible = IsWindowVisible(window) != FALSE;
            seen.owned = GetWindow(window, GW_OWNER) != nullptr;
            RECT rect{};
            GetWindowRect(window, &rect);
            seen.width = rect.right - rect.left;
            seen.height = rect.bottom - rect.top;
            state.found.push_back(seen);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

bool IsSplash(const SeenWindow& window)
{
    return window.visible && FoldAsciiCase(window.className).find(L"splash") != Text::npos;
}

// What the launcher waits for: visible, unowned, over 300 x 150, no "splash" in the class.
bool IsMainWindow(const SeenWindow& window)
{
    return window.visible && !window.owned && window.width > 300 && window.height > 150 && !IsSplash(window);
}

bool EditorEventExists()
{
    UniqueHandle event(OpenEventW(SYNCHRONIZE, FALSE, kEditorEvent));
    return event.IsValid();
}

Bytes ReadLog(TextView path)
{
    return testing::ReadFileBytes(path);
}

class EditorBench {
public:
    explicit EditorBench(TextView label) : install(label), scratch(Text(label) + L"-files") {}

    Text Project() const { return install.Workspace(0) + L"\\KorvaneSDK.uproject"; }
    Text Log() const { return scratch / L"Logs\\Editor.log"; }

    std::vector<Text> Arguments(std::vector<Text> extra = {}) const
    {
        std::vector<Text> arguments = {Project(), L"-KorvaneSelectedMod=" + install.ModId(0),
            L"-KorvaneProject=" + install.Workspace(0) + L"\\Mod.kmodproject", L"-NoSplash", L"-ABSLOG=" + Log()};
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        return arguments;
    }

    ChildProcess Start(std::vector<Text> extra = {}, testing::ProcessOptions options = {}) const
    {
        if (options.currentDirectory.empty()) {
            options.currentDirectory = install.EditorRoot();
        }
        options.hidden = false;
        return ChildProcess::Start(install.EditorExe(), Arguments(std::move(extra)), options);
    }

    SampleInstall install;
    testing::ScratchDirectory scratch;
};

TEST(EditorStandin, RecordsItsCommandLineDirectoryAndVariables)
{
    EditorBench bench(L"editor-record");
    bench.install.SetEditorScenario(L"{\"runMs\":50,\"splashMs\":0,\"logPaceMs\":0}");
    testing::ProcessOptions options;
    options.environment[L"UE-LocalDataCachePath"] = L"C:\\Cache\\\x7F13\x5B58\\5.6";
    options.environment[L"UE_SDKS_ROOT"] = std::nullopt;
    ChildProcess first = bench.Start({L"-culture=zh-Hans"}, options);
    ASSERT_TRUE(first.Wait(60000));
    EXPECT_EQ(first.ExitCode(), 0u);

    bench.install.SetEditorScenario(L"{\"runMs\":50,\"splashMs\":0,\"logPaceMs\":0,\"exitCode\":7}");
    testing::ProcessOptions second;
    second.environment[L"UE-LocalDataCachePath"] = std::nullopt;
    second.environment[L"UE_SDKS_ROOT"] = L"";
    second.currentDirectory = bench.install.GameDirectory();
    ChildProcess other = bench.Start({}, second);
    ASSERT_TRUE(other.Wait(60000));
    EXPECT_EQ(other.ExitCode(), 7u);

    const std::vector<JsonValue> records = bench.install.EditorRecords();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(FindJsonMember(records[0], L"commandLine").text,
        testing::BuildCommandLine(bench.install.EditorExe(), bench.Arguments({L"-culture=zh-Hans"})));
    EXPECT_TRUE(EqualsIgnoringCase(FindJsonMember(records[0], L"cwd").text, bench.install.EditorRoot()));
    EXPECT_EQ(FindJsonMember(records[0], L"UE-LocalDataCachePath").text, L"C:\\Cache\\\x7F13\x5B58\\5.6");
    EXPECT_EQ(FindJsonMember(records[0], L"UE_SDKS_ROOT").kind, JsonKind::Null);
    EXPECT_EQ(FindJsonMember(records[0], L"pid").text, DecimalText(first.Id()));
    EXPECT_TRUE(EqualsIgnoringCase(FindJsonMember(records[1], L"cwd").text, bench.install.GameDirectory()));
    EXPECT_EQ(FindJsonMember(records[1], L"UE-LocalDataCachePath").kind, JsonKind::Null);
    EXPECT_EQ(FindJsonMember(records[1], L"UE_SDKS_ROOT").kind, JsonKind::String) << "set, though empty";
}

TEST(EditorStandin, WritesItsLogWithTheMarkersInOrder)
{
    EditorBench bench(L"editor-log");
    bench.install.SetEditorScenario(L"{\"runMs\":50,\"splashMs\":0,\"logPaceMs\":1,\"shaderLines\":3000}");
    ChildProcess editor = bench.Start();
    ASSERT_TRUE(editor.Wait(60000));
    const Bytes log = ReadLog(bench.Log());
    ASSERT_FALSE(log.empty());
    EXPECT_FALSE(Utf8ToText(log).empty()) << "valid UTF-8";
    EXPECT_EQ(log.back(), '\n');
    EXPECT_EQ(log.find('\r'), Bytes::npos) << "lines end with LF alone";

    const std::vector<Bytes> lines = testing::SplitLines(log);
    size_t shaderLines = 0;
    for (const Bytes& line : lines) {
        shaderLines += line.find("LogShaderCompilers: Display: Compiling shader") != Bytes::npos ? 1 : 0;
    }
    EXPECT_EQ(shaderLines, 3000u);
    // The marker texts, each on a line of its own, in the order an engine start writes them.
    const std::vector<Bytes> markers = {"LogShaderCompilers: Display: Compiling shader", "LogEngine: Initializing Engine",
        "automatic read-only policies without loading assets", "mounted from", "Mod authoring policy active",
        "Engine is initialized. Leaving FEngineLoop::Init", "(Engine Initialization) Total time"};
    size_t position = 0;
    for (const Bytes& marker : markers) {
        const size_t found = log.find(marker, position);
        ASSERT_NE(found, Bytes::npos) << marker;
        position = found;
    }
    const size_t mounted = log.find("mounted from");
    const size_t lineStart = log.rfind('\n', mounted) + 1;
    EXPECT_NE(log.substr(lineStart, mounted - lineStart).find("Standalone Mod project"), Bytes::npos)
        << "both texts of the mount marker stand in one line";
    EXPECT_NE(log.find(TextToUtf8(bench.install.ModId(0))), Bytes::npos);
    EXPECT_NE(lines.back().find("Log file closed"), Bytes::npos);

    // Without -ABSLOG= the log goes to Saved\Logs beside the project.
    bench.install.SetEditorScenario(L"{\"runMs\":10,\"splashMs\":0,\"logPaceMs\":0}");
    ChildProcess plain = ChildProcess::Start(bench.install.EditorExe(), {bench.Project()});
    ASSERT_TRUE(plain.Wait(60000));
    EXPECT_NE(ReadLog(bench.install.Workspace(0) + L"\\Saved\\Logs\\KorvaneSDK.log").find("Total time"), Bytes::npos);
}

TEST(EditorStandin, SplitLineReachesTheLogInTwoWrites)
{
    EditorBench bench(L"editor-split");
    bench.install.SetEditorScenario(L"{\"runMs\":10,\"splashMs\":0,\"logPaceMs\":0,\"splitLine\":true}");
    ChildProcess editor = bench.Start();
    bool sawHalf = false;
    while (!editor.Wait(5)) {
        const Bytes log = ReadLog(bench.Log());
        sawHalf = sawHalf || (log.find("LogEngine: Init") != Bytes::npos &&
                                 log.find("LogEngine: Initializing Engine...\n") == Bytes::npos);
    }
    EXPECT_TRUE(sawHalf) << "the first part of the line stood alone for a while";
    const Bytes log = ReadLog(bench.Log());
    const size_t line = log.find("LogEngine: Initializing Engine...\n");
    ASSERT_NE(line, Bytes::npos);
    EXPECT_EQ(log.find("LogEngine: Init", line + 1), Bytes::npos) << "the line is there once";
}

TEST(EditorStandin, ShowsSplashThenMainWindowAndHoldsTheSessionEvent)
{
    EditorBench bench(L"editor-windows");
    bench.install.SetEditorScenario(L"{\"splashMs\":700,\"logPaceMs\":0,\"exitCode\":5}");
    ASSERT_FALSE(EditorEventExists()) << "another editor runs";
    ChildProcess editor = bench.Start();
    bool splashSeen = false;
    std::optional<SeenWindow> main;
    while (!main && !editor.Wait(10)) {
        for (const SeenWindow& window : TopLevelWindowsOf(editor.Id())) {
            splashSeen = splashSeen || IsSplash(window);
            if (IsMainWindow(window)) {
                main = window;
            }
        }
    }
    ASSERT_TRUE(main.has_value()) << "the editor ended without a main window";
    EXPECT_TRUE(splashSeen) << "the splash stands first";
    EXPECT_EQ(main->className, L"UnrealWindow");
    EXPECT_NE(main->title.find(L"KorvaneSDK"), Text::npos);
    EXPECT_TRUE(EditorEventExists());
    EXPECT_FALSE(editor.Wait(300)) << "runs until its window is closed";

    PostMessageW(main->handle, WM_CLOSE, 0, 0);
    ASSERT_TRUE(editor.Wait(30000));
    EXPECT_EQ(editor.ExitCode(), 5u);
    EXPECT_FALSE(EditorEventExists());

    // An unattended editor holds no event; a given run time ends it without a close.
    bench.install.SetEditorScenario(L"{\"splashMs\":0,\"logPaceMs\":0,\"runMs\":1500}");
    ChildProcess unattended = bench.Start({L"-unattended"});
    bool windowSeen = false;
    while (!windowSeen && !unattended.Wait(10)) {
        for (const SeenWindow& window : TopLevelWindowsOf(unattended.Id())) {
            windowSeen = windowSeen || IsMainWindow(window);
        }
    }
    EXPECT_TRUE(windowSeen);
    EXPECT_FALSE(EditorEventExists());
    ASSERT_TRUE(unattended.Wait(30000));
    EXPECT_EQ(unattended.ExitCode(), 0u);
}

TEST(EditorStandin, ModesThatNeverShowAMainWindow)
{
    EditorBench bench(L"editor-modes");
    bench.install.SetEditorScenario(L"{\"mode\":\"crashBeforeWindow\",\"logPaceMs\":0}");
    ChildProcess crash = bench.Start();
    ASSERT_TRUE(crash.Wait(60000));
    EXPECT_EQ(crash.ExitCode(), 0xC0000005u);
    Bytes log = ReadLog(bench.Log());
    EXPECT_NE(log.find("LogEngine: Initializing Engine"), Bytes::npos);
    EXPECT_EQ(log.find("Engine is initialized"), Bytes::npos);

    bench.install.SetEditorScenario(L"{\"mode\":\"exitBeforeWindow\",\"logPaceMs\":0}");
    ChildProcess quiet = bench.Start();
    ASSERT_TRUE(quiet.Wait(60000));
    EXPECT_EQ(quiet.ExitCode(), 0u);
    EXPECT_NE(ReadLog(bench.Log()).find("Log file closed"), Bytes::npos);

    bench.install.SetEditorScenario(L"{\"mode\":\"noWindow\",\"logPaceMs\":0,\"runMs\":1500,\"exitCode\":3}");
    ChildProcess waiting = bench.Start();
    bool splashSeen = false;
    bool mainSeen = false;
    while (!waiting.Wait(20)) {
        for (const SeenWindow& window : TopLevelWindowsOf(waiting.Id())) {
            splashSeen = splashSeen || IsSplash(window);
            mainSeen = mainSeen || IsMainWindow(window);
        }
    }
    EXPECT_TRUE(splashSeen);
    EXPECT_FALSE(mainSeen);
    EXPECT_EQ(waiting.ExitCode(), 3u);
    EXPECT_NE(ReadLog(bench.Log()).find("(Engine Initialization) Total time"), Bytes::npos) << "the whole log";
}

DWORD ParentOf(DWORD processId)
{
    UniqueSnapshotHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more; more = Process32NextW(snapshot.Get(), &entry)) {
        if (entry.th32ProcessID == processId) {
            return entry.th32ParentProcessID;
        }
    }
    return 0;
}

TEST(EditorStandin, StartsTheLauncherOfItsInstall)
{
    // The install's launcher is replaced by a second stand-in editor, which records how it was started.
    EditorBench bench(L"editor-launcher");
    const Text launcher = bench.install.Launcher();
    testing::CopyFileTo(bench.install.EditorExe(), launcher);
    testing::WriteFileText(bench.install.EditorRoot() + L"\\UnrealEditor.scenario.json",
        L"{\"mode\":\"noWindow\",\"splashMs\":0,\"logPaceMs\":0,\"runMs\":3000}");
    const Text records = bench.scratch / L"records.jsonl";
    testing::ProcessOptions options;
    options.environment[L"KORVANE_STANDIN_EDITOR_RECORD"] = records;

    bench.install.SetEditorScenario(
        L"{\"mode\":\"startLauncher\",\"splashMs\":0,\"logPaceMs\":0,\"runMs\":1000,\"launcherArguments\":[\"-KorvaneInstanceCheck\"]}");
    ChildProcess editor = bench.Start({}, options);
    std::optional<DWORD> started;
    while (!started && !editor.Wait(20)) {
        for (const DWORD id : testing::ProcessesNamed(L"KorvaneEditor.exe")) {
            if (ParentOf(id) == editor.Id()) {
                started = id;
            }
        }
    }
    ASSERT_TRUE(started.has_value()) << "no launcher started by the editor";
    ASSERT_TRUE(editor.Wait(30000));
    UniqueHandle child(OpenProcess(SYNCHRONIZE, FALSE, *started));
    ASSERT_TRUE(child.IsValid());
    EXPECT_EQ(WaitForSingleObject(child.Get(), 30000), static_cast<DWORD>(WAIT_OBJECT_0));

    bench.install.SetEditorScenario(L"{\"mode\":\"waitForSelf\",\"splashMs\":0,\"logPaceMs\":0,\"runMs\":500}");
    testing::WriteFileText(bench.install.EditorRoot() + L"\\UnrealEditor.scenario.json",
        L"{\"mode\":\"exitBeforeWindow\",\"logPaceMs\":0}");
    ChildProcess naming = bench.Start({}, options);
    ASSERT_TRUE(naming.Wait(30000));
    // The editor ran on for half a second after it started the launcher, which records first thing.
    const std::vector<JsonValue> lines = testing::ReadJsonLines(records);
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(FindJsonMember(lines[1], L"commandLine").text,
        testing::BuildCommandLine(launcher, {L"-KorvaneInstanceCheck"}));
    EXPECT_TRUE(EqualsIgnoringCase(FindJsonMember(lines[1], L"cwd").text, bench.install.EditorRoot()));
    EXPECT_EQ(FindJsonMember(lines[3], L"commandLine").text,
        testing::BuildCommandLine(launcher, {L"-KorvaneWaitForEditorPid=" + DecimalText(naming.Id())}));
    // Let the second copy go before the install is removed.
    for (const DWORD id : testing::ProcessesNamed(L"KorvaneEditor.exe")) {
        UniqueHandle process(OpenProcess(SYNCHRONIZE, FALSE, id));
        if (process && ParentOf(id) == naming.Id()) {
            WaitForSingleObject(process.Get(), 30000);
        }
    }
}

}  // namespace
}  // namespace korvane
