// The sample install holds every file the launcher reads from an install, consistent with each other.
#include "CapturedRun.h"
#include "SampleInstall.h"
#include "TestSupport.h"

#include "foundation/GdiplusSession.h"
#include "foundation/Json.h"
#include "foundation/Paths.h"

#include <gtest/gtest.h>

#include <objidl.h>
#include <gdiplus.h>

#include <set>

namespace korvane {
namespace {

using testing::SampleInstall;

// Width and height as the image library decodes the file; zero when it cannot.
std::pair<UINT, UINT> DecodedSize(TextView path)
{
    Gdiplus::GpImage* image = nullptr;
    if (Gdiplus::DllExports::GdipLoadImageFromFile(Text(path).c_str(), &image) != Gdiplus::Ok) {
        return {0, 0};
    }
    UINT width = 0;
    UINT height = 0;
    Gdiplus::DllExports::GdipGetImageWidth(image, &width);
    Gdiplus::DllExports::GdipGetImageHeight(image, &height);
    Gdiplus::DllExports::GdipDisposeImage(image);
    return {width, height};
}

JsonValue ReadJson(TextView path)
{
    return ParseJson(testing::ReadFileBytes(path));
}

TEST(SampleInstall, HoldsAWholeInstallOfItsEngineVersion)
{
    Text removedRoot;
    {
        SampleInstall install(L"layout");
        removedRoot = install.Root();
        const Text& root = install.EditorRoot();
        EXPECT_EQ(ParentPath(root), install.GameDirectory()) << "the game holds the editor install";
        EXPECT_TRUE(IsRegularFile(install.GameDirectory() + L"\\Skyhaven.exe"));
        EXPECT_EQ(install.SdkPath(), install.GameDirectory() + L"\\Skyhaven.kvsdk");
        EXPECT_EQ(testing::ReadFileBytes(install.Launcher()), testing::ReadFileBytes(testing::BuiltLauncherPath()));
        EXPECT_EQ(testing::ReadFileBytes(install.ToolPath()), testing::ReadFileBytes(testing::StandinPath(L"KorvaneTool.exe")));
        EXPECT_EQ(testing::ReadFileBytes(install.EditorExe()), testing::ReadFileBytes(testing::StandinPath(L"UnrealEditor.exe")));

        const JsonValue layout = ReadJson(root + L"\\Engine\\Korvane\\AuthoringLayout.json");
        EXPECT_EQ(FindJsonMember(layout, L"schemaVersion").text, L"1");
        EXPECT_EQ(FindJsonMember(layout, L"layout").text, L"builtin");
        EXPECT_EQ(FindJsonMember(layout, L"resourceRoot").text, L"Engine/Korvane");
        const JsonValue modules = ReadJson(root + L"\\Engine\\Binaries\\Win64\\UnrealEditor.modules");
        EXPECT_EQ(FindJsonMember(modules, L"BuildId").text, install.BuildId());
        const std::vector<Text> authoring = {L"KorvaneRuntime", L"KorvaneUI", L"KorvaneBridge", L"KorvaneAuthoring"};
        ASSERT_EQ(FindJsonMember(layout, L"modules").items.size(), authoring.size());
        for (size_t index = 0; index < authoring.size(); ++index) {
            EXPECT_EQ(FindJsonMember(layout, L"modules").items[index].text, authoring[index]);
            const Text file = FindJsonMember(FindJsonMember(modules, L"Modules"), authoring[index]).text;
            EXPECT_EQ(file.find_first_of(L"/\\:"), Text::npos);
            EXPECT_TRUE(IsRegularFile(root + L"\\Engine\\Binaries\\Win64\\" + file)) << TextToUtf8(file);
        }
        EXPECT_TRUE(IsRegularFile(root + L"\\Engine\\Korvane\\Resources\\AuthoringTemplate\\KorvaneSDK.uproject"));
        for (const wchar_t* file : {L"\\Engine\\Binaries\\Win64\\UnrealEditor.version", L"\\Engine\\Build\\Build.version"}) {
            const Bytes version = testing::ReadFileBytes(root + file);
            EXPECT_NE(version.find("\"MajorVersion\": 5,"), Bytes::npos);
            EXPECT_NE(version.find("\"MinorVersion\": 6,"), Bytes::npos);
        }
        for (const wchar_t* culture : {L"en", L"es", L"ja", L"ko", L"pt-BR", L"zh-Hans"}) {
            EXPECT_TRUE(IsRegularFile(root + L"\\Engine\\Content\\Localization\\Editor\\" + culture + L"\\Editor.locres"));
        }
        EXPECT_EQ(FindJsonMember(ReadJson(root + L"\\KorvaneEditor.receipt.json"), L"engineBuild").text, L"5.6.1");

        ASSERT_EQ(install.ModCount(), 4u);
        std::set<Text> ids;
        for (size_t index = 0; index < install.ModCount(); ++index) {
            EXPECT_EQ(install.ModId(index).size(), 36u);
            EXPECT_EQ(install.ModId(index).substr(0, 4), L"mod.");
            EXPECT_TRUE(IsRegularFile(install.ModPackage(index)));
            ids.insert(install.ModId(index));
        }
        EXPECT_EQ(ids.size(), install.ModCount());
        GdiplusSession gdiplus;
        const Text cover = install.GameDirectory() + L"\\Mods\\Covers\\LanternFestival.png";
        EXPECT_EQ(DecodedSize(cover), std::make_pair(96u, 54u)) << "covers decode as the picker loads them";
        EXPECT_EQ(DecodedSize(install.GameDirectory() + L"\\SdkAssets\\Icon.png"), std::make_pair(64u, 64u));
        EXPECT_EQ(install.Workspace(2), install.GameDirectory() + L"\\Saved\\Korvane\\Workspaces\\" + install.ModId(2));
        EXPECT_TRUE(install.ToolCalls().empty());
        EXPECT_TRUE(install.EditorRecords().empty());
    }
    EXPECT_FALSE(testing::FileExists(removedRoot)) << "the install goes with its object";

    // Another engine version: every file says so, and the build id differs.
    SampleInstall older(L"layout-older", L"5.4");
    SampleInstall current(L"layout-current");
    EXPECT_NE(older.BuildId(), current.BuildId());
    EXPECT_NE(older.Root(), current.Root());
    EXPECT_NE(testing::ReadFileBytes(older.EditorRoot() + L"\\Engine\\Build\\Build.version").find("\"MinorVersion\": 4,"),
        Bytes::npos);
    EXPECT_EQ(FindJsonMember(ReadJson(older.EditorRoot() + L"\\KorvaneEditor.receipt.json"), L"engineBuild").text, L"5.4.1");
    const testing::CapturedRun preview = testing::RunCaptured(older.ToolPath(), {L"sdk-preview", L"--sdk", older.SdkPath()});
    ASSERT_EQ(preview.exitCode, 0u);
    EXPECT_EQ(FindJsonMember(ParseJson(preview.out), L"engineVersion").text.substr(0, 4), L"5.4.");
    EXPECT_EQ(testing::RunCaptured(older.ToolPath(), {L"sdk-info", L"--sdk", older.SdkPath(), L"--editor-root", older.EditorRoot()})
                  .exitCode,
        0u);
    EXPECT_EQ(testing::RunCaptured(older.ToolPath(), {L"sdk-info", L"--sdk", current.SdkPath(), L"--editor-root", older.EditorRoot()})
                  .exitCode,
        1u)
        << "an SDK of another editor build";
}

}  // namespace
}  // namespace korvane
