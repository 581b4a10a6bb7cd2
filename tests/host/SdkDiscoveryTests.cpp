// Found on real trees: game folders told from other folders, the one SDK of a folder, and
// where the tool is, with every way a built-in layout counts as damaged.
#include "HostFixtures.h"

#include "context/UiLanguage.h"
#include "foundation/Paths.h"
#include "host/AuthoringLayout.h"
#include "host/SdkDiscovery.h"

#include <gtest/gtest.h>

namespace korvane::hosttest {
namespace {

TEST(GameDirectoryTests, InstallAndProjectFolders)
{
    testing::ScratchDirectory scratch(L"game-dirs");
    const Text ini = L"Config\\DefaultGame.ini", contract = L"Content\\Korvane\\DA_KorvaneContract.uasset";
    const struct {
        const wchar_t* name;
        std::vector<Text> entries;
        bool install, project;
    } rows[] = {
        {L"OnlyLauncher", {L"korvaneeditor.exe"}, false, false},
        {L"WithSetup", {L"KorvaneEditor.exe", L"Setup.exe"}, true, false},
        {L"ExeFolder", {L"Tools.exe\\"}, false, false},
        {L"Title", {L"Binaries\\Win64\\Title-Win64-Shipping.exe"}, true, false},
        {L"Renamed", {L"Binaries\\Win64\\Title-Win64-Shipping.exe"}, false, false},
        {L"TemplateOnly", {ini, contract, L"KorvaneSDK.uproject", L"Folder.uproject\\"}, false, false},
        {L"Project", {ini, contract, L"KorvaneSDK.uproject", L"Game.uproject"}, false, true},
        {L"NoContract", {ini, contract + L"\\", L"Game.uproject"}, false, false},
        {L"NoConfig", {contract, L"Game.uproject"}, false, false},
    };
    for (const auto& row : rows) {
        MakeTree(scratch / row.name, row.entries);
        EXPECT_EQ(IsGameInstallDirectory(scratch / row.name), row.install) << TextToUtf8(row.name);
        EXPECT_EQ(IsGameProjectDirectory(scratch / row.name), row.project) << TextToUtf8(row.name);
    }
    EXPECT_FALSE(IsGameInstallDirectory(L""));
    EXPECT_FALSE(IsGameProjectDirectory(L""));
}

TEST(FindSdk, InAFolderOneLevelBelowItOrByAnExplicitPath)
{
    testing::ScratchDirectory scratch(L"sdk-find");
    // Each row is a fresh folder holding `entries`: the answers in it, and one level below it.
    const struct {
        const wchar_t* name;
        std::vector<Text> entries;
        const wchar_t *inFolder, *below;  // relative to the folder; "" for no answer
    } rows[] = {
        // The case of the built name, not the one on disk; the fixed names end the search.
        {L"Title", {L"TITLE.KVSDK", L"KorvaneSDK.kvsdk", L"Other.kvsdk"}, L"Title.kvsdk", L"Title.kvsdk"},
        {L"Fixed", {L"KorvaneSDK.kvsdk", L"Other.kvsdk"}, L"KorvaneSDK.kvsdk", L"KorvaneSDK.kvsdk"},
        {L"Two", {L"A.kvsdk", L"B.kvsdk"}, L"", L""},
        {L"Folders", {L"a.kvsdk\\", L"b.kvsdk"}, L"b.kvsdk", L"b.kvsdk"},  // folders never count
        // An ambiguous subfolder gives nothing and does not count; nor do dot-folders and the second level.
        {L"B1", {L"Sub1\\One.kvsdk", L"Sub2\\A.kvsdk", L"Sub2\\B.kvsdk"}, L"", L"Sub1\\One.kvsdk"},
        {L"B2", {L"Sub1\\One.kvsdk", L".cache\\C.kvsdk", L"Deep\\Deeper\\D.kvsdk"}, L"", L"Sub1\\One.kvsdk"},
        {L"B3", {L"Sub1\\One.kvsdk", L"Sub3\\Sub3.kvsdk"}, L"", L""},
        {L"B4", {L"Sub1\\One.kvsdk", L"Sub3\\Sub3.kvsdk", L"Own.kvsdk"}, L"Own.kvsdk", L"Own.kvsdk"},
    };
    const auto answer = [&](const wchar_t* name, const wchar_t* relative) {
        return *relative == 0 ? Text() : JoinPath(scratch / name, relative);
    };
    for (const auto& row : rows) {
        MakeTree(scratch / row.name, row.entries);
        EXPECT_EQ(FindSdkFile(scratch / row.name + L"\\", L""), answer(row.name, row.inFolder)) << TextToUtf8(row.name);
        EXPECT_EQ(FindSdkBelowDirectory(scratch / row.name), answer(row.name, row.below)) << TextToUtf8(row.name);
    }
    EXPECT_EQ(FindSdkFile(L"", L""), L"");
    EXPECT_EQ(FindSdkBelowDirectory(L""), L"");
    // A folder link below is not searched (one beside is a folder, as the Folders row shows).
    if (FolderLink link(scratch / L"Two\\Linked", scratch / L"Fixed"); link.IsMade()) {
        EXPECT_EQ(FindSdkBelowDirectory(scratch / L"Two"), L"");
    }

    // An explicit path is taken or refused without a search; the game plays no part.
    MakeTree(scratch / L"x", {L"y.KVSDK", L"y.kvsdk.bak", L"kvsdk", L"folder.kvsdk\\"});
    EXPECT_EQ(FindSdkFile(scratch / L"Fixed", scratch / L"x/sub/../y.KVSDK"), scratch / L"x\\y.KVSDK");
    for (const wchar_t* refused : {L"x\\y.kvsdk.bak", L"x\\kvsdk", L"x\\folder.kvsdk"}) {
        EXPECT_EQ(FindSdkFile(scratch / L"Fixed", scratch / refused), L"") << "no fall-back on the game's own SDK";
    }
}

TEST(ResolveSdkSelection, SettlesThePairOrGivesKV4300InTheUiLanguage)
{
    testing::ScratchDirectory scratch(L"sdk-selection");
    const Text game = scratch / L"Game";
    Touch(JoinPath(game, L"Game.kvsdk"));
    Text gameDirectory = L"old", sdk = L"old", message = L"untouched";
    EXPECT_TRUE(ResolveSdkSelection(game + L"\\", L"", gameDirectory, sdk, message));
    EXPECT_EQ(std::tie(gameDirectory, sdk, message),
        std::make_tuple(game, JoinPath(game, L"Game.kvsdk"), Text(L"untouched")));
    // The message comes in the language of the moment.
    const testing::ScopedUiLanguage chinese(L"zh-Hans");
    EXPECT_FALSE(ResolveSdkSelection(L"", L"", gameDirectory, sdk, message));
    EXPECT_EQ(std::tie(gameDirectory, sdk, message), std::make_tuple(Text(), Text(), kNoSdkSelectedMessage.In(true)));
}

constexpr wchar_t kLayoutFile[] = L"Engine\\Korvane\\AuthoringLayout.json";
constexpr wchar_t kModuleList[] = L"Engine\\Binaries\\Win64\\UnrealEditor.modules";
constexpr wchar_t kTemplate[] = L"Engine\\Korvane\\Resources\\AuthoringTemplate\\KorvaneSDK.uproject";
constexpr wchar_t kBuiltinTool[] = L"Engine\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe";
constexpr wchar_t kPluginTool[] = L"Plugins\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe";
constexpr wchar_t kRuntimeModule[] = L"Engine\\Binaries\\Win64\\UnrealEditor-KorvaneRuntime.dll";

constexpr char kLayout[] =
    "{\"schemaVersion\":1,\"layout\":\"builtin\",\"resourceRoot\":\"Engine/Korvane\","
    "\"modules\":[\"KorvaneRuntime\",\"KorvaneUI\",\"KorvaneBridge\",\"KorvaneAuthoring\"]}";
constexpr char kModules[] =
    "{\"BuildId\":\"27405482\",\"Modules\":{\"Core\":\"UnrealEditor-Core.dll\","
    "\"KorvaneRuntime\":\"UnrealEditor-KorvaneRuntime.dll\",\"KorvaneUI\":\"UnrealEditor-KorvaneUI.dll\","
    "\"KorvaneBridge\":\"UnrealEditor-KorvaneBridge.dll\",\"KorvaneAuthoring\":\"UnrealEditor-KorvaneAuthoring.dll\"}}";

// An install with the built-in layout whose every test passes; the tool itself is absent. Beside
// it lie stray files that the damaged module entries below point at.
void MakeWholeBuiltinLayout(TextView root)
{
    testing::WriteFileBytes(JoinPath(root, kLayoutFile), kLayout);
    testing::WriteFileBytes(JoinPath(root, kModuleList), kModules);
    testing::WriteFileBytes(JoinPath(root, kTemplate), "{}");
    MakeTree(JoinPath(root, L"Engine\\Binaries"), {L"x.dll", L"Win64\\sub\\x.dll", L"UnrealEditor-KorvaneRuntime.dll"});
    for (const wchar_t* module : {L"Runtime", L"UI", L"Bridge", L"Authoring"}) {
        Touch(JoinPath(root, Text(L"Engine\\Binaries\\Win64\\UnrealEditor-Korvane") + module + L".dll"));
    }
}

// The plug-in's tool without a layout file, the engine's with a whole built-in layout, and none
// with a damaged one.
TEST(ResolveToolPath, FollowsTheLayoutFile)
{
    const testing::ScratchDirectory scratch(L"layout");
    const Text root = scratch / L"Install";
    // A folder of the layout file's name is no layout file.
    testing::MakeDirectories(JoinPath(root, kLayoutFile));
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kPluginTool));
    RemoveDirectoryW(JoinPath(root, kLayoutFile).c_str());
    MakeWholeBuiltinLayout(root);
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kBuiltinTool)) << "whether or not the tool exists";

    // Both files exactly at their limits still pass, and modules of others are not judged.
    testing::WriteFileBytes(JoinPath(root, kLayoutFile), PaddedTo(kLayout, 65536));
    testing::WriteFileBytes(JoinPath(root, kModuleList), PaddedTo(
        Replace(kModules, "\"Core\":\"UnrealEditor-Core.dll\"", "\"Core\":\"..\\\\..\\\\C:/x\",\"Other\":7"), 8388608));
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kBuiltinTool));

    constexpr char kRemoved[] = "<removed>";
    const std::pair<const wchar_t*, Bytes> damages[] = {
        {kLayoutFile, PaddedTo(kLayout, 65537)},
        {kLayoutFile, Replace(kLayout, "\"schemaVersion\":1", "\"schemaVersion\":1.0")},
        {kLayoutFile, Replace(kLayout, "\"builtin\"", "\"Builtin\"")},
        {kLayoutFile, Replace(kLayout, "Engine/Korvane", "Engine\\\\Korvane")},
        {kLayoutFile, Replace(kLayout, "\"KorvaneUI\",\"KorvaneBridge\"", "\"KorvaneBridge\",\"KorvaneUI\"")},
        {kLayoutFile, Replace(kLayout, "\"KorvaneAuthoring\"", "\"KorvaneAuthoring\",\"X\"")},
        {kModuleList, kRemoved},
        {kModuleList, PaddedTo(kModules, 8388609)},
        {kModuleList, Replace(kModules, "\"BuildId\":\"27405482\",", "")},
        // Module entries that lead out of Engine\Binaries\Win64\ to files that exist, or name nothing.
        {kModuleList, Replace(kModules, "UnrealEditor-KorvaneBridge.dll", "..\\\\x.dll")},
        {kModuleList, Replace(kModules, "UnrealEditor-KorvaneBridge.dll", "C:x.dll")},
        {kModuleList, Replace(kModules, "UnrealEditor-KorvaneBridge.dll", "sub/x.dll")},
        {kModuleList, Replace(kModules, "\"KorvaneAuthoring\":", "\"KorvaneAuthoringX\":")},
        // A module file only in another engine folder; the template gone while the tool is in place.
        {kRuntimeModule, kRemoved},
        {kTemplate, kRemoved},
    };
    for (const auto& [file, bytes] : damages) {
        SCOPED_TRACE(TextToUtf8(file) + ": " + bytes.substr(0, 200));
        const testing::ScratchDirectory fresh(L"layout-damage");
        const Text damaged = fresh / L"Install";
        MakeWholeBuiltinLayout(damaged);
        Touch(JoinPath(damaged, kBuiltinTool));
        if (bytes == kRemoved) {
            DeleteFileW(JoinPath(damaged, file).c_str());
        } else {
            testing::WriteFileBytes(JoinPath(damaged, file), bytes);
        }
        EXPECT_EQ(ResolveToolPath(damaged), L"");
    }
}

}  // namespace
}  // namespace korvane::hosttest
