// The editor's command line word for word, the log path, the cache arguments, and the
// environment the editor inherits.
#include "TestSupport.h"

#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"
#include "launch/EditorCommandLine.h"
#include "launch/EditorEnvironment.h"
#include "launch/LaunchContext.h"

#include <gtest/gtest.h>

#include <windows.h>
#include <shellapi.h>

#include <optional>
#include <vector>

namespace korvane {
namespace {

using testing::ScratchDirectory;

// The platform's own split of a whole command line.
std::vector<Text> SplitCommandLine(const Text& commandLine)
{
    int count = 0;
    UniqueLocalMemory list(reinterpret_cast<HLOCAL>(CommandLineToArgvW(commandLine.c_str(), &count)));
    std::vector<Text> words;
    if (list) {
        const auto* argv = static_cast<const LPWSTR*>(list.Get());
        words.assign(argv, argv + count);
    }
    return words;
}

std::optional<Text> EnvironmentValue(const wchar_t* name)
{
    std::vector<wchar_t> buffer(32768, L'\0');
    const DWORD length = GetEnvironmentVariableW(name, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length == 0 && GetLastError() == ERROR_ENVVAR_NOT_FOUND) {
        return std::nullopt;
    }
    return Text(buffer.data(), length);
}

Text ShortForm(const Text& path)
{
    std::vector<wchar_t> buffer(32768, L'\0');
    const DWORD length = GetShortPathNameW(path.c_str(), buffer.data(), static_cast<DWORD>(buffer.size()));
    return length == 0 ? Text() : Text(buffer.data(), length);
}

TEST(EditorCommandLine, OrdinaryLaunchStandsWordForWord)
{
    const std::vector<Text> passThrough{L"-KorvaneHostEnvironment=packaged", L"-culture=fr", L"-Log",
        L"C:\\Path With Blanks\\"};
    EditorCommandInputs inputs;
    inputs.editorPath = L"C:\\Korvane Editor\\Engine\\Binaries\\Win64\\UnrealEditor.exe";
    inputs.launchTarget = L"C:\\Work Space\\Mod One\\KorvaneSDK.uproject";
    inputs.gameDirectory = L"D:\\Games\\Title\\";
    inputs.selectedMod = L"mod \"one\"";
    inputs.modProjectFile = L"C:\\Work Space\\Mod One\\Mod.kmodproject";
    inputs.editorCulture = L"zh-Hans";
    inputs.passThroughArguments = passThrough;
    const Text log = L"C:\\Work Space\\Mod One\\Saved\\Logs\\KorvaneLauncher-12-34.log";

    const Text commandLine = AssembleEditorCommandLine(inputs, log);
    EXPECT_EQ(commandLine,
        L"\"C:\\Korvane Editor\\Engine\\Binaries\\Win64\\UnrealEditor.exe\""
        L" \"C:\\Work Space\\Mod One\\KorvaneSDK.uproject\""
        L" \"-KorvaneGameDir=D:\\Games\\Title\\\\\""
        L" -KorvaneSDKOffline"
        L" \"-KorvaneSelectedMod=mod \\\"one\\\"\""
        L" \"-KorvaneProject=C:\\Work Space\\Mod One\\Mod.kmodproject\""
        L" -NoSplash \"-culture=zh-Hans\""
        L" \"-KorvaneHostEnvironment=packaged\" \"-culture=fr\" \"-Log\" \"C:\\Path With Blanks\\\\\""
        L" \"-ABSLOG=C:\\Work Space\\Mod One\\Saved\\Logs\\KorvaneLauncher-12-34.log\""
        L" -KorvaneLauncherSession");

    // The editor gets back exactly the words that were meant, trailing backslashes included.
    EXPECT_EQ(SplitCommandLine(commandLine),
        (std::vector<Text>{L"C:\\Korvane Editor\\Engine\\Binaries\\Win64\\UnrealEditor.exe",
            L"C:\\Work Space\\Mod One\\KorvaneSDK.uproject", L"-KorvaneGameDir=D:\\Games\\Title\\",
            L"-KorvaneSDKOffline", L"-KorvaneSelectedMod=mod \"one\"",
            L"-KorvaneProject=C:\\Work Space\\Mod One\\Mod.kmodproject", L"-NoSplash", L"-culture=zh-Hans",
            L"-KorvaneHostEnvironment=packaged", L"-culture=fr", L"-Log", L"C:\\Path With Blanks\\",
            L"-ABSLOG=" + log, L"-KorvaneLauncherSession"}));

    // No game directory and no made log: both words are left out, nothing else moves.
    EditorCommandInputs bare;
    bare.editorPath = L"C:\\K\\UnrealEditor.exe";
    bare.launchTarget = L"C:\\W\\KorvaneSDK.uproject";
    bare.selectedMod = L"m";
    bare.modProjectFile = L"C:\\W\\Mod.kmodproject";
    bare.editorCulture = L"en";
    EXPECT_EQ(AssembleEditorCommandLine(bare, {}),
        L"\"C:\\K\\UnrealEditor.exe\" \"C:\\W\\KorvaneSDK.uproject\" -KorvaneSDKOffline \"-KorvaneSelectedMod=m\""
        L" \"-KorvaneProject=C:\\W\\Mod.kmodproject\" -NoSplash \"-culture=en\" -KorvaneLauncherSession");
}

TEST(EditorCommandLine, UserLogPathIsTheLastAbsLogInAnyCase)
{
    EXPECT_EQ(UserLogPath(std::vector<Text>{L"-Log", L"-ABSLOGX"}), std::nullopt);
    EXPECT_EQ(UserLogPath(std::vector<Text>{}), std::nullopt);
    EXPECT_EQ(UserLogPath(std::vector<Text>{L"-abslog=C:\\first.log", L"-Log", L"-AbsLog=D:/logs/../run/editor.log"}),
        Text(L"D:\\run\\editor.log"));
    // Given but empty: the user's word still stops the made path, and no path is known.
    EXPECT_EQ(UserLogPath(std::vector<Text>{L"-ABSLOG="}), Text());

    EXPECT_EQ(LauncherLogFileName(4242, 123456789012ULL), L"KorvaneLauncher-4242-123456789012.log");
}

TEST(EditorCommandLine, CacheArgumentsFollowTheEngineBuild)
{
    EXPECT_EQ(EngineMajorMinor(L"5.8.1"), L"5.8");
    EXPECT_EQ(EngineMajorMinor(L"5.8.1.42-release"), L"5.8");
    EXPECT_EQ(EngineMajorMinor(L"5.7"), L"5.7");
    EXPECT_EQ(EngineMajorMinor(L"5.8-preview"), L"5.8-preview");
    EXPECT_EQ(EngineMajorMinor(L"5"), L"");
    EXPECT_EQ(EngineMajorMinor(L""), L"");

    const Text base = L"\"C:\\K\\UnrealEditor.exe\" -KorvaneLauncherSession";
    const Text cache = L"C:\\Users\\A B\\AppData\\Local\\Korvane\\DerivedDataCache\\5.8";

    Text forFiveEight = base;
    AppendCacheArguments(forFiveEight, cache, L"5.8");
    EXPECT_EQ(forFiveEight, base + L" \"-LocalDataCachePath=" + cache + L"\" -DDC=(Local)");

    for (const wchar_t* other : {L"5.7", L"5.80", L"5.8-preview"}) {
        Text commandLine = base;
        AppendCacheArguments(commandLine, cache, other);
        EXPECT_EQ(commandLine, base + L" \"-LocalDataCachePath=" + cache + L"\"") << other;
    }

    // The user's own words anywhere on the line stop the launcher's; the check is case-sensitive.
    const Text withUserCache = base + L" \"-LocalDataCachePath=E:\\DDC\"";
    Text commandLine = withUserCache;
    AppendCacheArguments(commandLine, cache, L"5.8");
    EXPECT_EQ(commandLine, withUserCache + L" -DDC=(Local)");

    const Text withUserDdc = base + L" \"-DDC=Shared\"";
    commandLine = withUserDdc;
    AppendCacheArguments(commandLine, cache, L"5.8");
    EXPECT_EQ(commandLine, withUserDdc + L" \"-LocalDataCachePath=" + cache + L"\"");

    const Text lowerCase = base + L" \"-ddc=Shared\" \"-localdatacachepath=E:\\DDC\"";
    commandLine = lowerCase;
    AppendCacheArguments(commandLine, cache, L"5.8");
    EXPECT_EQ(commandLine, lowerCase + L" \"-LocalDataCachePath=" + cache + L"\" -DDC=(Local)");
}

// A context for one start, with a scratch install and workspace.
struct LaunchFixture {
    ScratchDirectory scratch{L"editor-command"};
    LaunchContext context;
    Text editorPath;

    LaunchFixture()
    {
        context.editorRoot = scratch / L"install";
        testing::MakeDirectories(context.editorRoot);
        editorPath = JoinPath(context.editorRoot, L"Engine\\Binaries\\Win64\\UnrealEditor.exe");
        context.launchTarget = scratch / L"work space\\Mod\\KorvaneSDK.uproject";
        context.gameDirectory = scratch / L"game";
        context.selectedMod = L"mod.one";
        context.modProjectFile = scratch / L"work space\\Mod\\Mod.kmodproject";
    }

    void WriteReceipt(BytesView bytes) const
    {
        testing::WriteFileBytes(JoinPath(context.editorRoot, L"KorvaneEditor.receipt.json"), bytes);
    }

    Text ExpectedBase(TextView logPath) const
    {
        EditorCommandInputs inputs{editorPath, context.launchTarget, context.gameDirectory, context.selectedMod,
            context.modProjectFile, L"zh-Hans", context.passThroughArguments};
        return AssembleEditorCommandLine(inputs, logPath);
    }
};

// The cache folder below the user's local application data belongs to this test alone: the
// version exists in no real engine, and the folder is removed again.
class PrivateCacheFolder {
public:
    explicit PrivateCacheFolder(TextView majorMinor)
        : path_(JoinPath(LocalAppDataFolder(), Text(L"Korvane\\DerivedDataCache\\").append(majorMinor)))
    {
        RemoveDirectoryW(path_.c_str());
    }
    ~PrivateCacheFolder() { RemoveDirectoryW(path_.c_str()); }
    const Text& Path() const { return path_; }

private:
    Text path_;
};

class EnvironmentRestorer {
public:
    EnvironmentRestorer() : cache_(EnvironmentValue(kLocalDataCacheVariable)) {}
    ~EnvironmentRestorer()
    {
        SetEnvironmentVariableW(kLocalDataCacheVariable, cache_ ? cache_->c_str() : nullptr);
    }

private:
    std::optional<Text> cache_;
};

TEST(EditorCommandLine, StartPreparesLogFolderCacheAndEnvironment)
{
    const EnvironmentRestorer restorer;
    const PrivateCacheFolder cache(L"71.3");
    LaunchFixture fixture;
    fixture.WriteReceipt(R"({"schemaVersion":1,"engineBuild":"71.3.0-42"})");
    SetEnvironmentVariableW(kSdksRootVariable, L"C:\\Elsewhere\\SDKs");

    const ULONGLONG before = GetTickCount64();
    const EditorCommand command = BuildEditorCommandLine(fixture.context, fixture.editorPath, L"zh-Hans");
    const ULONGLONG after = GetTickCount64();

    // The made log lies beside the project, named after this process and the moment.
    const Text logFolder = fixture.scratch / L"work space\\Mod\\Saved\\Logs";
    EXPECT_TRUE(IsDirectory(logFolder));
    const Text prefix = JoinPath(logFolder, L"KorvaneLauncher-" + DecimalText(GetCurrentProcessId()) + L"-");
    ASSERT_EQ(command.logPath.rfind(prefix, 0), 0u) << command.logPath;
    ASSERT_TRUE(EndsWithIgnoringCase(command.logPath, L".log"));
    const Text tick = command.logPath.substr(prefix.size(), command.logPath.size() - prefix.size() - 4);
    EXPECT_GE(std::stoull(tick), before);
    EXPECT_LE(std::stoull(tick), after);

    // The editor inherits the short form of the per-version cache folder; the same goes on
    // the command line. Wine, like NTFS, gives the long folder name a short one.
    ASSERT_TRUE(IsDirectory(cache.Path()));
    const Text shortCache = ShortForm(cache.Path());
    ASSERT_FALSE(shortCache.empty());
    EXPECT_NE(shortCache, cache.Path());
    EXPECT_EQ(EnvironmentValue(kLocalDataCacheVariable), shortCache);
    EXPECT_EQ(EnvironmentValue(kSdksRootVariable), std::nullopt);
    EXPECT_EQ(command.commandLine,
        fixture.ExpectedBase(command.logPath) + L" " + QuoteCommandArgument(L"-LocalDataCachePath=" + shortCache));
}

TEST(EditorCommandLine, UserWordsWinOverTheLaunchersOwn)
{
    const EnvironmentRestorer restorer;
    const PrivateCacheFolder cache(L"71.4");
    LaunchFixture fixture;
    fixture.WriteReceipt(R"({"engineBuild":"71.4"})");
    const Text userLog = fixture.scratch / L"logs\\mine.log";
    fixture.context.passThroughArguments = {L"-abslog=" + fixture.scratch / L"logs\\..\\logs\\mine.log",
        L"-LocalDataCachePath=E:\\Cache"};

    const EditorCommand command = BuildEditorCommandLine(fixture.context, fixture.editorPath, L"zh-Hans");
    EXPECT_EQ(command.logPath, userLog);
    EXPECT_FALSE(IsDirectory(fixture.scratch / L"work space\\Mod\\Saved\\Logs")) << "no log of the launcher's own";
    EXPECT_EQ(command.commandLine, fixture.ExpectedBase({})) << "no -ABSLOG= or -LocalDataCachePath= added";
    EXPECT_EQ(EnvironmentValue(kLocalDataCacheVariable), ShortForm(cache.Path())) << "the variable is set all the same";
}

TEST(EditorCommandLine, MissingPiecesDropTheirArgumentsOnly)
{
    const EnvironmentRestorer restorer;
    LaunchFixture fixture;
    // A file where the workspace folder should be: no log folder can be made.
    testing::WriteFileBytes(fixture.scratch / L"work space\\Mod", "not a folder");
    SetEnvironmentVariableW(kLocalDataCacheVariable, L"before");

    for (const char* receipt : {"", "{\"engineBuild\":", "{\"engineBuild\":\"71\"}", "{\"other\":\"5.8.1\"}", "[]"}) {
        if (*receipt != '\0') {
            fixture.WriteReceipt(receipt);
        }
        SetEnvironmentVariableW(kSdksRootVariable, L"C:\\Elsewhere\\SDKs");
        const EditorCommand command = BuildEditorCommandLine(fixture.context, fixture.editorPath, L"zh-Hans");
        EXPECT_EQ(command.logPath, L"") << receipt;
        EXPECT_EQ(command.commandLine, fixture.ExpectedBase({})) << receipt;
        EXPECT_EQ(EnvironmentValue(kSdksRootVariable), std::nullopt) << receipt;
        EXPECT_EQ(EnvironmentValue(kLocalDataCacheVariable), Text(L"before")) << receipt;
    }
}

}  // namespace
}  // namespace korvane
