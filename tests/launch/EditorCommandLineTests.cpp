// The editor's command line word for word, the log path, the cache arguments, and the
// environment the editor inherits.
#include "TestSupport.h"

#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"
#include "launch/EditorCommandLine.h"
#include "launch/EditorEnvironment.h"
#include "launch/EditorLanguage.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <optional>
#include <vector>

namespace korvane {
namespace {

TEST(EditorCommandLine, OrdinaryLaunchStandsWordForWord)
{
    const std::vector<Text> passThrough{L"-KorvaneHostEnvironment=packaged", L"-culture=fr", L"-Log",
        L"C:\\Path With Blanks\\"};
    const EditorCommandInputs inputs{L"C:\\Korvane Editor\\Engine\\Binaries\\Win64\\UnrealEditor.exe",
        L"C:\\Work Space\\Mod One\\KorvaneSDK.uproject", L"D:\\Games\\Title\\", L"mod \"one\"",
        L"C:\\Work Space\\Mod One\\Mod.kmodproject", L"zh-Hans", passThrough};
    EXPECT_EQ(AssembleEditorCommandLine(inputs, L"C:\\Work Space\\Mod One\\Saved\\Logs\\KorvaneLauncher-12-34.log"),
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

    // No game directory and no made log: both words are left out, nothing else moves.
    const EditorCommandInputs bare{
        L"C:\\K\\UnrealEditor.exe", L"C:\\W\\KorvaneSDK.uproject", L"", L"m", L"C:\\W\\Mod.kmodproject", L"en", {}};
    EXPECT_EQ(AssembleEditorCommandLine(bare, {}),
        L"\"C:\\K\\UnrealEditor.exe\" \"C:\\W\\KorvaneSDK.uproject\" -KorvaneSDKOffline \"-KorvaneSelectedMod=m\""
        L" \"-KorvaneProject=C:\\W\\Mod.kmodproject\" -NoSplash \"-culture=en\" -KorvaneLauncherSession");
}

TEST(EditorCommandLine, CacheArgumentsFollowTheEngineBuild)
{
    // A build with one dot is its own version; the start tests read builds with more dots and none.
    EXPECT_EQ(MajorMinor(L"5.8-preview"), L"5.8-preview");
    const Text cache = L"C:\\Users\\A B\\AppData\\Local\\Korvane\\DerivedDataCache\\5.8";
    const Text cacheWord = L" \"-LocalDataCachePath=" + cache + L"\"";
    // The user's words anywhere on the line stop the launcher's own; the test is case-sensitive.
    const struct {
        Text userWords;
        const wchar_t* majorMinor;
        Text added;
    } rows[] = {
        {L"", L"5.80", cacheWord},
        {L" \"-LocalDataCachePath=E:\\DDC\"", L"5.8", L" -DDC=(Local)"},
        {L" \"-DDC=Shared\"", L"5.8", cacheWord},
        {L" \"-ddc=Shared\" \"-localdatacachepath=E:\\DDC\"", L"5.8", cacheWord + L" -DDC=(Local)"},
    };
    for (const auto& row : rows) {
        const Text before = L"\"C:\\K\\UnrealEditor.exe\" -KorvaneLauncherSession" + row.userWords;
        Text commandLine = before;
        AppendCacheArguments(commandLine, cache, row.majorMinor);
        EXPECT_EQ(commandLine, before + row.added) << TextToUtf8(row.userWords) << " " << TextToUtf8(row.majorMinor);
    }
}

TEST(EditorLanguage, TheLastCultureOrLanguageWordWinsOverTheRunsAndTheSavedLanguage)
{
    const struct {
        const wchar_t *run, *saved;
        std::vector<Text> passThrough;
        const wchar_t* requested;
    } rows[] = {
        {L"", L"", {}, L"en"},
        {L"", L"ko", {}, L"ko"},
        {L"ja", L"ko", {L"-cultureX=fr", L"-lang=fr"}, L"ja"},
        {L"en", L"", {L"-culture=ja", L"-language=zh_CN"}, L"zh_CN"},  // whichever option comes last
        {L"en", L"", {L"-LANGUAGE=zh_CN", L"-Culture=ja"}, L"ja"},
        {L"en", L"", {L"-culture=ja", L"-culture="}, L""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(RequestedEditorLanguage(row.run, row.saved, row.passThrough), row.requested) << row.run;
    }
}

// Starts in a scratch install whose receipt names engine 71.3, a version no real engine has: its
// cache folder belongs to these tests and is removed before and after. The cache variable is put
// back, and the SDK root variable, which the launcher never lets an editor see, removed.
class EditorStart : public ::testing::Test {
protected:
    EditorStart() { RemoveDirectoryW(cacheFolder.c_str()); }
    ~EditorStart() override
    {
        RemoveDirectoryW(cacheFolder.c_str());
        SetEnvironmentVariableW(kLocalDataCacheVariable, savedCache ? savedCache->c_str() : nullptr);
        SetEnvironmentVariableW(kSdksRootVariable, nullptr);
    }
    EditorCommandInputs Inputs() const
    {
        return {L"C:\\K\\UnrealEditor.exe", project, L"C:\\Game", L"mod.one", L"C:\\W\\Mod.kmodproject", L"zh-Hans",
            passThrough};
    }
    EditorCommand Build(BytesView receipt) const
    {
        testing::WriteFileBytes(scratch / L"KorvaneEditor.receipt.json", receipt);
        SetEnvironmentVariableW(kSdksRootVariable, L"C:\\Elsewhere\\SDKs");
        return BuildEditorCommandLine(Inputs(), scratch.Path());
    }

    testing::ScratchDirectory scratch{L"editor-command"};
    Text project = scratch / L"work space\\Mod\\KorvaneSDK.uproject";
    std::vector<Text> passThrough;
    Text cacheFolder = JoinPath(LocalAppDataFolder(), L"Korvane\\DerivedDataCache\\71.3");
    std::optional<Text> savedCache = testing::EnvironmentValue(kLocalDataCacheVariable);
};

TEST_F(EditorStart, PreparesLogFolderCacheAndEnvironment)
{
    const char* const receipt = R"({"schemaVersion":1,"engineBuild":"71.3.0-42"})";
    const ULONGLONG before = GetTickCount64();
    const EditorCommand command = Build(receipt);
    const ULONGLONG after = GetTickCount64();

    // The made log lies beside the project, named after this process and the moment.
    const Text prefix = scratch / (L"work space\\Mod\\Saved\\Logs\\KorvaneLauncher-" + DecimalText(GetCurrentProcessId()));
    ASSERT_EQ(command.logPath.rfind(prefix + L"-", 0), 0u) << TextToUtf8(command.logPath);
    const std::uint64_t tick = std::stoull(command.logPath.substr(prefix.size() + 1));
    EXPECT_EQ(command.logPath, prefix + L"-" + DecimalText(tick) + L".log");
    EXPECT_TRUE(tick >= before && tick <= after) << tick;

    // The editor inherits the short form of the per-version cache folder, and so does the
    // command line. Wine, like NTFS, gives the long folder name a short one.
    wchar_t shortForm[MAX_PATH] = {};
    ASSERT_NE(GetShortPathNameW(cacheFolder.c_str(), shortForm, MAX_PATH), 0u);
    const Text shortCache = shortForm;
    EXPECT_EQ(testing::EnvironmentValue(kLocalDataCacheVariable), shortCache);
    EXPECT_EQ(command.commandLine, AssembleEditorCommandLine(Inputs(), command.logPath) + L" " +
        QuoteCommandArgument(L"-LocalDataCachePath=" + shortCache));

    // The user's last -ABSLOG= in any letter case is the log, and the user's cache word stops the
    // launcher's; the variable is set all the same.
    SetEnvironmentVariableW(kLocalDataCacheVariable, L"before");
    passThrough = {L"-ABSLOG=C:\\first.log", L"-abslog=" + scratch / L"logs\\..\\logs\\mine.log",
        L"-LocalDataCachePath=E:\\Cache"};
    const EditorCommand user = Build(receipt);
    EXPECT_EQ(user.logPath, scratch / L"logs\\mine.log");
    EXPECT_EQ(user.commandLine, AssembleEditorCommandLine(Inputs(), {})) << "no -ABSLOG= or -LocalDataCachePath= added";
    EXPECT_EQ(testing::EnvironmentValue(kLocalDataCacheVariable), shortCache);
}

TEST_F(EditorStart, MissingPiecesDropTheirArgumentsOnly)
{
    // A file where the workspace folder should be: no log folder can be made.
    testing::WriteFileBytes(scratch / L"work space\\Mod", "not a folder");
    SetEnvironmentVariableW(kLocalDataCacheVariable, L"before");
    // A receipt that cannot be read, and one whose build has no minor version.
    for (const char* receipt : {"{\"engineBuild\":", "{\"engineBuild\":\"71\"}"}) {
        const EditorCommand command = Build(receipt);
        EXPECT_EQ(command.logPath, L"") << receipt;
        EXPECT_EQ(command.commandLine, AssembleEditorCommandLine(Inputs(), {})) << receipt;
        EXPECT_EQ(testing::EnvironmentValue(kSdksRootVariable), std::nullopt) << receipt;
        EXPECT_EQ(testing::EnvironmentValue(kLocalDataCacheVariable), Text(L"before")) << receipt;
    }
}

}  // namespace
}  // namespace korvane
