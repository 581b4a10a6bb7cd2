// The sample install is fit for the launcher's tests: it lays out a whole install with the built
// launcher and the stand-ins, an SDK that matches its editor build, and its Mods.
#include "SampleInstall.h"
#include "TestSupport.h"

#include "foundation/Json.h"
#include "foundation/Paths.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(SampleInstall, LaysOutAWholeInstallThatGoesWithItsObject)
{
    Text removedRoot;
    {
        testing::SampleInstall install(L"layout");
        removedRoot = install.Root();
        const Text& root = install.EditorRoot();
        EXPECT_EQ(ParentPath(root), install.GameDirectory()) << "the game holds the editor install";
        EXPECT_EQ(install.SdkPath(), install.GameDirectory() + L"\\Skyhaven.kvsdk");
        EXPECT_EQ(testing::ReadFileBytes(install.Launcher()), testing::ReadFileBytes(testing::BuiltLauncherPath()));
        EXPECT_EQ(testing::ReadFileBytes(install.ToolPath()), testing::ReadFileBytes(testing::StandinPath(L"KorvaneTool.exe")));
        EXPECT_EQ(testing::ReadFileBytes(install.EditorExe()), testing::ReadFileBytes(testing::StandinPath(L"UnrealEditor.exe")));
        const JsonValue modules = ParseJson(testing::ReadFileBytes(root + L"\\Engine\\Binaries\\Win64\\UnrealEditor.modules"));
        EXPECT_EQ(FindJsonMember(modules, L"BuildId").text, install.BuildId());
        EXPECT_TRUE(IsRegularFile(root + L"\\Engine\\Korvane\\AuthoringLayout.json"));
        EXPECT_NE(testing::ReadFileBytes(root + L"\\Engine\\Build\\Build.version").find("\"MinorVersion\": 6,"), Bytes::npos);
        ASSERT_GT(install.ModCount(), 1u);
        for (size_t index = 0; index < install.ModCount(); ++index) {
            EXPECT_EQ(install.ModId(index).size(), 36u);
            EXPECT_TRUE(IsRegularFile(install.ModPackage(index))) << TextToUtf8(install.ModPackage(index));
        }
        EXPECT_TRUE(install.ToolCalls().empty());
        EXPECT_TRUE(install.EditorRecords().empty());
    }
    EXPECT_FALSE(testing::FileExists(removedRoot)) << "the install goes with its object";
}

}  // namespace
}  // namespace korvane
