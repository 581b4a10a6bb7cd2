// The picker's rules as plain logic: which Mods a document keeps, how the search filters them and
// which row stays selected, which commands are open in each state, where each control stands, and
// which packages a removal takes to the shell.
#include "ImageFiles.h"
#include "TestSupport.h"

#include "foundation/GdiplusImage.h"
#include "foundation/GdiplusSession.h"
#include "foundation/Json.h"
#include "picker/Catalogue.h"
#include "picker/CommandStates.h"
#include "picker/ModRemoval.h"
#include "picker/PickerIds.h"
#include "picker/PickerLayout.h"
#include "picker/PickerTexts.h"

#include <gtest/gtest.h>

#include <map>

namespace korvane {
namespace {

ModEntry Mod(const wchar_t* name, const wchar_t* author, const wchar_t* id, const wchar_t* package)
{
    ModEntry mod;
    mod.name = name;
    mod.authorName = author;
    mod.id = id;
    mod.modProject = package;
    return mod;
}

TEST(Catalogue, ADocumentKeepsItsWholeModsInOrderAndEachPackagesFirstCover)
{
    const JsonValue preview = ParseJson(R"({"gameInfo":{"displayName":""},"gameId":"skyhaven","mods":[
        {"id":"a","name":"A","authorName":"Ann","modProject":"C:\\M\\A.UMOD","supportedGameVersions":["","1.3","1.4"]},
        {"id":"","name":"No id","modProject":"C:\\M\\N.umod"},
        {"id":"n","name":"","modProject":"C:\\M\\N.umod"},
        {"id":"x","name":"Backup","modProject":"C:\\M\\X.umod.bak"},
        {"id":"b","name":"B","modProject":"C:\\M\\A.UMOD"},
        {"id":"c","name":"C","modProject":"C:\\M\\C.umod","supportedGameVersions":[]}]})");
    const GdiplusSession gdiplus;
    const testing::ScratchDirectory files(L"catalogue-cover");
    testing::WriteImageFile(files / L"a.png", 8, 8, testing::ImageFormat::Png, 0x3080C0);
    std::map<Text, UniqueGdiplusBitmap, std::less<>> covers;
    covers.try_emplace(L"C:\\M\\A.UMOD", LoadThumbnail(files / L"a.png"));
    std::vector<ModEntry> mods = ReadModEntries(preview, covers);
    ASSERT_EQ(mods.size(), 3u);
    EXPECT_EQ(mods[0].id, L"a");
    EXPECT_EQ(mods[0].supportedGameVersions, L"1.3, 1.4") << "no separator ahead of what follows an empty text";
    EXPECT_TRUE(mods[0].cover) << "the package's cover";
    EXPECT_EQ(mods[1].id, L"b") << "a second Mod of one package is kept";
    EXPECT_FALSE(mods[1].cover) << "but the cover went to the package's first Mod";
    EXPECT_EQ(GameTitleOf(preview), L"skyhaven") << "the game's id when its name is empty";
    EXPECT_EQ(GameTitleOf(ParseJson(R"({"gameInfo":{"displayName":"Skyhaven"},"gameId":"s"})")), L"Skyhaven");
    EXPECT_EQ(JoinGameVersions(ParseJson(R"(["1.0","","2.0"])")), L"1.0, , 2.0");
}

TEST(Catalogue, SearchFoldsAToZOnlyAndSelectionFollowsThePreferredPackage)
{
    std::vector<ModEntry> mods;  // rows own their covers, so they are moved in
    mods.push_back(Mod(L"Lantern Festival", L"Mei Lin", L"mod.aa", L"C:\\L.umod"));
    mods.push_back(Mod(L"\x00C9t\x00E9 Lights", L"Tom", L"mod.bb", L"C:\\E.umod"));
    mods.push_back(Mod(L"\x4E91\x6D77", L"\x82CF\x6674", L"mod.cc", L"C:\\Y.umod"));
    mods.push_back(Mod(L"Harbor", L"Ann", L"mod.dd", L"C:\\L.umod"));  // the same package as the first
    const struct {
        const wchar_t* query;
        const wchar_t* preferred;
        std::vector<std::size_t> visible;
        std::optional<std::size_t> selected;
    } rows[] = {
        {L"", L"", {0, 1, 2, 3}, 0},
        {L"LANTERN", L"", {0}, 0},
        {L"festival mei", L"", {0}, 0},        // a match runs across the blank between name and author
        {L"lin mod.a", L"", {0}, 0},           // and between author and id
        {L"\x00E9t\x00E9", L"", {}, std::nullopt},  // a capital outside A to Z is not its small letter
        {L"\x00C9t\x00E9", L"", {1}, 0},
        {L"", L"C:\\L.umod", {0, 1, 2, 3}, 3},  // the last equal row wins
        {L"", L"c:\\e.umod", {0, 1, 2, 3}, 0},  // compared exactly
        {L"lights", L"C:\\L.umod", {1}, 0},     // the preferred row filtered out: the first row
    };
    for (const auto& row : rows) {
        const ModFilter filter = FilterMods(mods, row.query, row.preferred);
        EXPECT_EQ(filter.visibleRows, row.visible) << TextToUtf8(row.query);
        EXPECT_EQ(filter.selectedRow, row.selected) << TextToUtf8(row.query) << " " << TextToUtf8(row.preferred);
    }
    const testing::ScopedUiLanguage english(L"en");
    EXPECT_EQ(ModCountText(1), L"1 Mods") << "no singular";
}

TEST(CommandStates, EachStateOpensItsCommands)
{
    // taskRunning, sdkLoaded, rowSelected, editorBuildMatches -> folder, sdk, refresh, new, import,
    // delete, start, paths and language, Close reads Cancel.
    const struct {
        const char* state;
        bool task, loaded, row, fits;
        CommandStates open;
    } rows[] = {
        {"no SDK or stale", false, false, false, true, {true, true, true, false, false, false, false, true, false}},
        {"loaded, row selected", false, true, true, true, {true, true, true, true, true, true, true, true, false}},
        {"loaded, no row", false, true, false, true, {true, true, true, true, true, false, false, true, false}},
        {"mismatch, row selected", false, true, true, false, {true, true, true, false, true, true, false, true, false}},
        {"any task", true, true, true, true, {false, false, false, false, false, false, false, false, true}},
    };
    for (const auto& row : rows) {
        const CommandStates states = CommandStatesFor(row.task, row.loaded, row.row, row.fits);
        const auto flags = [](const CommandStates& s) {
            return std::vector<bool>{s.chooseGameFolder, s.chooseSdk, s.refresh, s.newMod, s.importMod, s.deleteMod,
                s.startEditing, s.pathsAndLanguage, s.closeCancels};
        };
        EXPECT_EQ(flags(states), flags(row.open)) << row.state;
    }
}

// Where each control stands at each DPI is seen on the preview's picture and its real windows; here,
// what no preview window is small enough to show.
TEST(PickerLayout, EveryEdgeIsItsValueScaledOnItsOwnAndSmallWindowsKeepTheLeastSizes)
{
    struct Placement {
        int x, y, width, height;
        bool operator==(const Placement&) const = default;
    };
    // The table at 96 DPI for a client of W by H, in 96 DPI units.
    const auto table = [](int w, int h) {
        return std::map<int, Placement>{
            {kLanguageComboId, {w - 192, 24, 168, 240}},
            {kSearchEditId, {320, 96, std::max(w - 448, 10), 36}},
            {kRefreshId, {w - 116, 96, 92, 36}},
            {kModListId, {320, 148, std::max(w - 344, 10), std::max(h - 278, 150)}},
            {kNewModId, {320, h - 112, 120, 36}},
            {kImportModId, {452, h - 112, 120, 36}},
            {kDeleteModId, {584, h - 112, 120, 36}},
            {kSdkEditId, {40, 398, 240, 36}},
            {kChooseSdkId, {40, 446, 240, 36}},
            {kGameFolderEditId, {40, h - 82, 150, 34}},
            {kChooseGameFolderId, {200, h - 82, 80, 34}},
            {kStatusLineId, {320, h - 53, std::max(w - 580, 10), 36}},
            {kCloseId, {w - 260, h - 60, 96, 36}},
            {kStartEditingId, {w - 152, h - 60, 128, 36}},
        };
    };
    for (const std::uint32_t dpi : {96u, 144u, 192u}) {
        for (const auto& [clientWidth, clientHeight] : {std::pair(1024, 640), std::pair(1537, 961), std::pair(20, 30)}) {
            const int scale = static_cast<int>(dpi);
            const int width = MulDiv(clientWidth, scale, 96);
            const int height = MulDiv(clientHeight, scale, 96);
            const auto expected = table(MulDiv(width, 96, scale), MulDiv(height, 96, scale));
            const auto placements = PickerLayout(width, height, dpi);
            ASSERT_EQ(placements.size(), expected.size());
            for (const ControlPlacement& place : placements) {
                const Placement at96 = expected.at(place.id);
                const Placement scaled{MulDiv(at96.x, scale, 96), MulDiv(at96.y, scale, 96),
                    MulDiv(at96.width, scale, 96), MulDiv(at96.height, scale, 96)};
                EXPECT_EQ((Placement{place.x, place.y, place.width, place.height}), scaled)
                    << "control " << place.id << " at " << dpi << " DPI, client " << clientWidth;
            }
        }
    }
}

// Removal on the real file system: only a plain ".umod" file goes to the shell. Wine's shell
// cannot recycle (IFileOperation is not implemented), so there a plain package ends in the failure
// message and stays; the look at the file after a shell that reports success is not reached here.
TEST(MoveModToRecycleBin, RefusesAllButAPlainPackageAndKeepsOneTheShellCannotRecycle)
{
    const testing::ScopedUiLanguage english(L"en");
    testing::ScratchDirectory scratch(L"mod-removal");
    testing::WriteFileText(scratch / L"Plain.umod", L"package");
    testing::WriteFileText(scratch / L"Loud.UMOD", L"package");
    testing::WriteFileText(scratch / L"Backup.umod.bak", L"package");
    testing::MakeDirectories(scratch / L"Folder.umod");
    const struct {
        const wchar_t* name;
        const LocalizedText& message;
    } rows[] = {
        {L"Backup.umod.bak", kRemoveRefusedMessage},
        {L"Missing.umod", kRemoveRefusedMessage},
        {L"Folder.umod", kRemoveRefusedMessage},
        {L"Plain.umod", kRemoveFailedMessage},  // to the shell, which fails under Wine
        {L"Loud.UMOD", kRemoveFailedMessage},   // the extension in any case
    };
    for (const auto& row : rows) {
        Text error;
        EXPECT_FALSE(MoveModToRecycleBin(nullptr, scratch / row.name, error)) << TextToUtf8(row.name);
        EXPECT_EQ(error, row.message.In(false)) << TextToUtf8(row.name);
    }
    for (const wchar_t* kept : {L"Plain.umod", L"Loud.UMOD", L"Backup.umod.bak", L"Folder.umod"}) {
        EXPECT_TRUE(testing::FileExists(scratch / kept)) << TextToUtf8(kept);
    }
}

}  // namespace
}  // namespace korvane
