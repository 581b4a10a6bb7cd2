// Reading the engine version and finding the editor install from where the launcher stands.
#include "InstallTree.h"
#include "TestSupport.h"

#include "foundation/Paths.h"
#include "language/EngineVersion.h"
#include "language/EngineVersionText.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using testing::MakeEditorInstall;
using testing::ScratchDirectory;
using testing::WriteFileBytes;

constexpr wchar_t kEditorVersionFile[] = L"Engine\\Binaries\\Win64\\UnrealEditor.version";
constexpr wchar_t kBuildVersionFile[] = L"Engine\\Build\\Build.version";

TEST(EngineVersionText, SearchesBehaveAsTheirPatterns)
{
    EXPECT_EQ(FindMajorVersion("{\"MajorVersion\"\t \r\n\v\f:\n  05,"), "05") << "all six blanks, digits as written";
    EXPECT_EQ(FindMajorVersion("\"MajorVersion\": \"5\", \"MajorVersion\":12x"), "12") << "first place that matches";
    EXPECT_EQ(FindMajorVersion("MajorVersion: 5"), "");
    EXPECT_EQ(FindMajorVersion("\"majorversion\": 5"), "") << "case counts";
    EXPECT_EQ(FindMajorVersion("\"MajorVersion\" - 5"), "");
    EXPECT_EQ(FindMajorVersion("\"MajorVersion\":\xC2\xA0" "5"), "") << "no blank outside ASCII";
    EXPECT_EQ(FindMinorVersion("\"MinorVersion\":3,\"MajorVersion\":5"), "3");
    EXPECT_EQ(FindMinorVersion("\"MinorVersion\":"), "");

    // A run of blanks or digits as long as the largest version file must not exhaust the stack.
    const Bytes blanks(1048000, ' ');
    EXPECT_EQ(FindMajorVersion("\"MajorVersion\"" + blanks + ":" + blanks + Bytes(500, '7')), Bytes(500, '7'));

    EXPECT_EQ(FindProjectEngineVersion("{\"EngineAssociation\" :\t\"5.3\"}"), "5.3");
    EXPECT_EQ(FindProjectEngineVersion("\"EngineAssociation\": \"5.9\", \"EngineAssociation\": \"5.0\""), "5.0");
    for (const char* outside : {"\"EngineAssociation\": \"4.27\"", "\"EngineAssociation\": \"5.10\"",
             "\"EngineAssociation\": \"5.3 \"", "\"EngineAssociation\": 5.3", "\"EngineAssociation\": \"5,3\"",
             "\"EngineAssociation\": \"{6A1C0F7E-4A4B-4F2B-9C4E-000000000000}\""}) {
        EXPECT_EQ(FindProjectEngineVersion(outside), "") << outside;
    }

    for (const wchar_t* inRange : {L"5.0", L"5.4", L"5.8"}) {
        EXPECT_TRUE(IsSupportedEngineVersion(inRange));
    }
    for (const wchar_t* outside : {L"5.9", L"4.27", L"5.10", L"5.", L"5,3", L"6.0", L"", L" 5.3", L"05.3"}) {
        EXPECT_FALSE(IsSupportedEngineVersion(outside));
    }
}

TEST(EngineVersion, ReadsRealVersionFiles)
{
    ScratchDirectory scratch(L"engine-version-real");
    const struct {
        const wchar_t* sample;
        const wchar_t* file;
        const wchar_t* version;
    } cases[] = {
        {L"binaries_version\\ue5.2_engine_gyakkul__SideProject\\UnrealEditor.version", kEditorVersionFile, L"5.2"},
        {L"binaries_version\\ue4.27_engine_caobin2019__UnrealEngine\\UE4Editor.version", kEditorVersionFile, L"4.27"},
        {L"build_version\\ue4.16.3_sphills__LootTheRoom\\Build.version", kBuildVersionFile, L"4.16"},
        {L"build_version\\ue4.27.2_truefranco__UE4.27.2-Oculus-Nvidia-AMD\\Build.version", kBuildVersionFile, L"4.27"},
        {L"build_version\\ue5.0.3_elmachotroso__unreal_devtoolbox\\Build.version", kBuildVersionFile, L"5.0"},
        {L"build_version\\ue5.3.2_Mccrae123__Unreal-Engine-5.3.2\\Build.version", kBuildVersionFile, L"5.3"},
        {L"build_version\\ue5.5.1_lakeone__UE5.51MagicM\\Build.version", kBuildVersionFile, L"5.5"},
        {L"build_version\\ue5.7.3_strangezakary__Crane\\Build.version", kBuildVersionFile, L"5.7"},
    };
    int index = 0;
    for (const auto& sample : cases) {
        const Text install = scratch / DecimalText(static_cast<std::uint64_t>(index++));
        WriteFileBytes(JoinPath(install, sample.file), testing::ReadRealData(sample.sample));
        EXPECT_EQ(ReadEngineVersion(install), sample.version) << TextToUtf8(sample.sample);
    }
}

TEST(EngineVersion, FirstFileThatHoldsBothNumbersWins)
{
    ScratchDirectory scratch(L"engine-version-files");
    const Text install = scratch / L"install";
    EXPECT_EQ(ReadEngineVersion(install), L"");
    EXPECT_EQ(ReadEngineVersion(L""), L"");

    WriteFileBytes(JoinPath(install, kBuildVersionFile), "{\"MajorVersion\": 5, \"MinorVersion\": 4}");
    EXPECT_EQ(ReadEngineVersion(install), L"5.4");
    WriteFileBytes(JoinPath(install, kEditorVersionFile), "{\"MajorVersion\": 5, \"PatchVersion\": 1}");
    EXPECT_EQ(ReadEngineVersion(install), L"5.4") << "the major number alone passes on to the second file";
    WriteFileBytes(JoinPath(install, kEditorVersionFile), "{\"MinorVersion\": 1, \"MajorVersion\": 5}");
    EXPECT_EQ(ReadEngineVersion(install), L"5.1");
    WriteFileBytes(JoinPath(install, kEditorVersionFile), "{\"MajorVersion\": 5, \"MinorVersion\": 9}");
    EXPECT_EQ(ReadEngineVersion(install), L"5.9") << "the range is the caller's business";

    // 1 MiB is read, one byte more is passed over.
    Bytes largest = "{\"MajorVersion\": 5, \"MinorVersion\": 2, \"Pad\": \"";
    largest.append(1048576 - largest.size() - 2, 'x');
    largest += "\"}";
    WriteFileBytes(JoinPath(install, kEditorVersionFile), largest);
    EXPECT_EQ(ReadEngineVersion(install), L"5.2");
    WriteFileBytes(JoinPath(install, kEditorVersionFile), largest + " ");
    EXPECT_EQ(ReadEngineVersion(install), L"5.4");

    testing::MakeDirectories(scratch / L"folder\\Engine\\Binaries\\Win64\\UnrealEditor.version");
    WriteFileBytes(scratch / L"folder\\Engine\\Build\\Build.version", "\"MajorVersion\":5,\"MinorVersion\":0");
    EXPECT_EQ(ReadEngineVersion(scratch / L"folder"), L"5.0") << "a folder is no version file";
}

TEST(EditorInstall, NearestInstallWinsInItsOrder)
{
    ScratchDirectory scratch(L"install-order");
    Text version;
    EXPECT_EQ(FindEditorInstall(L"", version), L"");

    // The start itself, without any version.
    const Text beside = scratch / L"beside";
    MakeEditorInstall(beside, L"");
    MakeEditorInstall(JoinPath(beside, L"KorvaneEditor"), L"5.3");
    EXPECT_EQ(FindEditorInstall(beside, version), beside);
    EXPECT_EQ(version, L"");

    // Its KorvaneEditor folder, then a version folder of that.
    const Text game = scratch / L"game";
    MakeEditorInstall(JoinPath(game, L"KorvaneEditor"), L"5.1");
    MakeEditorInstall(JoinPath(game, L"KorvaneEditor\\5.2"), L"5.2");
    EXPECT_EQ(FindEditorInstall(game, version), JoinPath(game, L"KorvaneEditor"));

    const Text versioned = scratch / L"versioned";
    MakeEditorInstall(JoinPath(versioned, L"KorvaneEditor\\5.2"), L"5.2");
    testing::MakeDirectories(JoinPath(versioned, L"KorvaneEditor\\5.3"));  // no culture folder
    testing::MakeDirectories(JoinPath(versioned, L"KorvaneEditor\\5.9\\Engine\\Content\\Localization\\Editor"));
    EXPECT_EQ(FindEditorInstall(versioned, version), JoinPath(versioned, L"KorvaneEditor\\5.2"));
    EXPECT_EQ(version, L"") << "a version folder does not pin the version";

    // Nearer beats farther: from a folder deep inside, up to the first install.
    const Text deep = JoinPath(versioned, L"Mods\\One\\Content");
    testing::MakeDirectories(deep);
    EXPECT_EQ(FindEditorInstall(deep, version), JoinPath(versioned, L"KorvaneEditor\\5.2"));

    // A required version passes over installs of other versions.
    Text required = L"5.2";
    EXPECT_EQ(FindEditorInstall(game, required), JoinPath(game, L"KorvaneEditor\\5.2"));
    EXPECT_EQ(required, L"5.2");
    required = L"5.7";
    EXPECT_EQ(FindEditorInstall(game, required), game) << "nothing found: the start comes back";
}

TEST(EditorInstall, VersionFoldersCountOnlyWhenOneIsWhole)
{
    ScratchDirectory scratch(L"install-versions");
    Text version;
    // Two version folders: neither is taken here, and the walk goes on upwards.
    const Text upper = scratch / L"upper";
    MakeEditorInstall(JoinPath(upper, L"KorvaneEditor\\5.5"), L"5.5");
    const Text two = JoinPath(upper, L"two");
    MakeEditorInstall(JoinPath(two, L"KorvaneEditor\\5.3"), L"5.3");
    MakeEditorInstall(JoinPath(two, L"KorvaneEditor\\5.4"), L"5.4");
    EXPECT_EQ(FindEditorInstall(two, version), JoinPath(upper, L"KorvaneEditor\\5.5"));

    // A folder whose files name another version than the folder does not count.
    const Text mislabelled = scratch / L"mislabelled";
    MakeEditorInstall(JoinPath(mislabelled, L"KorvaneEditor\\5.3"), L"5.4");
    EXPECT_EQ(FindEditorInstall(mislabelled, version), mislabelled);
    const Text unversioned = scratch / L"unversioned";
    MakeEditorInstall(JoinPath(unversioned, L"KorvaneEditor\\5.3"), L"");
    EXPECT_EQ(FindEditorInstall(unversioned, version), unversioned);
    EXPECT_EQ(version, L"");
}

TEST(EditorInstall, ProjectFilePinsTheVersionForTheRestOfTheWalk)
{
    ScratchDirectory scratch(L"install-project");
    const Text root = scratch / L"root";
    MakeEditorInstall(JoinPath(root, L"KorvaneEditor"), L"5.4");
    MakeEditorInstall(JoinPath(root, L"KorvaneEditor\\5.3"), L"5.3");
    const Text game = JoinPath(root, L"Game");
    // Only C names a version in range; the others are passed over whatever the listing order.
    WriteFileBytes(JoinPath(game, L"A.uproject"), "{\"EngineAssociation\": \"5.9\"}");
    WriteFileBytes(JoinPath(game, L"B.uproject"), testing::ReadRealData(L"uproject\\ue4.27_21cu0315__Rockman\\Rockman.uproject"));
    WriteFileBytes(JoinPath(game, L"C.uproject"),
        testing::ReadRealData(L"uproject\\ue5.3_02020fan__FirstGame\\FPS.uproject"));
    WriteFileBytes(JoinPath(game, L"D.UPROJECT"), "{\"EngineAssociation\": \"5.4\"}");
    const Text inside = JoinPath(game, L"Source\\Game");
    testing::MakeDirectories(inside);

    Text version;
    EXPECT_EQ(FindEditorInstall(inside, version), JoinPath(root, L"KorvaneEditor\\5.3"))
        << "the pinned 5.3 passes over the 5.4 install that stands nearer";
    EXPECT_EQ(version, L"5.3");

    // Without a readable project file the nearer install is taken.
    const Text other = JoinPath(root, L"Other");
    WriteFileBytes(JoinPath(other, L"Upper.UPROJECT"), "{\"EngineAssociation\": \"5.3\"}");
    Bytes oversized = "{\"EngineAssociation\": \"5.3\", \"Pad\": \"";
    oversized.append(1048576 - oversized.size() - 2, 'x');
    oversized += "\"}";
    WriteFileBytes(JoinPath(other, L"Big.uproject"), oversized);
    version.clear();
    EXPECT_EQ(FindEditorInstall(other, version), JoinPath(root, L"KorvaneEditor"))
        << "a project file of 1 MiB is too large and one in capitals is no project file";
    EXPECT_EQ(version, L"");

    oversized.pop_back();
    oversized.back() = '}';
    WriteFileBytes(JoinPath(other, L"Big.uproject"), oversized);
    EXPECT_EQ(FindEditorInstall(other, version), JoinPath(root, L"KorvaneEditor\\5.3")) << "one byte less is read";
    EXPECT_EQ(version, L"5.3");

    // A version that came in is never replaced by a project's.
    Text required = L"5.4";
    EXPECT_EQ(FindEditorInstall(inside, required), JoinPath(root, L"KorvaneEditor"));
    EXPECT_EQ(required, L"5.4");
}

}  // namespace
}  // namespace korvane
