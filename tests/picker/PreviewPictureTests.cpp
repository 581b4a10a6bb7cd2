// The picker preview from outside: a real launcher in a sample install, fed the stand-in tool's
// own preview document, leaves a picture and a report; shown, its controls stand where the layout
// puts them and every command that would touch a Mod or start the editor is refused.
#include "CapturedRun.h"
#include "PickerDriver.h"
#include "SampleInstall.h"

#include "foundation/GdiplusSession.h"
#include "foundation/Paths.h"
#include "picker/PickerIds.h"
#include "picker/PickerLayout.h"

#include <objidl.h>
#include <gdiplus.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

namespace korvane {
namespace {

using testing::PickerProcess;
using testing::SampleInstall;
using testing::ScratchDirectory;

constexpr COLORREF kSurface = RGB(11, 21, 36);
constexpr COLORREF kSdkPanel = RGB(17, 29, 43);
constexpr COLORREF kSelectedCardBorder = RGB(54, 177, 196);
constexpr COLORREF kPrimaryFill = RGB(93, 224, 204);
constexpr COLORREF kLetterTile = RGB(34, 48, 65);

constexpr int kCoverlessRow = 1;

int Scaled(int value, std::uint32_t dpi)
{
    return MulDiv(value, static_cast<int>(dpi), 96);
}

// The window is the frame for a client of 1024 by 640 at the preview's DPI, cut to the work area.
// The system draws that frame at its own DPI, so the client is what its frame leaves inside.
SIZE ExpectedClientSize(std::uint32_t dpi)
{
    const auto frameFor = [](int width, int height, UINT frameDpi) {
        RECT frame{0, 0, width, height};
        AdjustWindowRectExForDpi(&frame, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, FALSE, WS_EX_APPWINDOW, frameDpi);
        return SIZE{frame.right - frame.left, frame.bottom - frame.top};
    };
    const SIZE window = frameFor(Scaled(1024, dpi), Scaled(640, dpi), dpi);
    const SIZE border = frameFor(0, 0, GetDpiForSystem());
    RECT work{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    return {std::min(window.cx, work.right - work.left) - border.cx,
        std::min(window.cy, work.bottom - work.top) - border.cy};
}

const JsonValue& Member(const JsonValue& report, const wchar_t* key)
{
    return FindJsonMember(report, key);
}

// The colour GDI+ decodes at a pixel of a picture; CLR_INVALID outside it.
COLORREF PixelAt(Gdiplus::Bitmap& picture, int x, int y)
{
    Gdiplus::Color colour;
    return picture.GetPixel(x, y, &colour) == Gdiplus::Ok ? RGB(colour.GetR(), colour.GetG(), colour.GetB()) : CLR_INVALID;
}

// One sample install for every case here, with the stand-in tool's answer for its SDK as fixture.
// The second Mod's cover file is gone, so its row shows the letter tile.
class PickerPreview : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        install_ = std::make_unique<SampleInstall>(L"picker-preview");
        const testing::CapturedRun run =
            testing::RunCaptured(install_->ToolPath(), {L"sdk-preview", L"--sdk", install_->SdkPath()});
        ASSERT_EQ(run.exitCode, 0u) << run.err;
        preview_ = std::make_unique<JsonValue>(ParseJson(run.out));
        const JsonValue& coverless = Member(*preview_, L"mods").items.at(kCoverlessRow);
        ASSERT_TRUE(DeleteFileW(Member(coverless, L"coverPath").text.c_str()));
        testing::WriteFileBytes(Fixture(), run.out);
    }
    static void TearDownTestSuite()
    {
        preview_.reset();
        install_.reset();
    }

    static Text Fixture() { return JoinPath(install_->Root(), L"preview.json"); }
    static const Text& ModProject(size_t index)
    {
        return Member(Member(*preview_, L"mods").items.at(index), L"modProject").text;
    }

    // A preview of the fixture; `more` adds options, and a later option wins over an earlier one.
    static std::unique_ptr<PickerProcess> StartPreview(const ScratchDirectory& out, std::vector<Text> more)
    {
        std::vector<Text> arguments{L"-KorvanePickerPreview", L"-KorvanePickerFixture=" + Fixture(),
            L"-KorvanePickerSnapshot=" + out / L"picker.png"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return std::make_unique<PickerProcess>(install_->Launcher(), arguments, out.Path());
    }

    static inline std::unique_ptr<SampleInstall> install_;
    static inline std::unique_ptr<JsonValue> preview_;
};

TEST_F(PickerPreview, AHiddenPreviewLeavesAPictureAndReportForEachDpiAndLanguage)
{
    const struct {
        std::uint32_t dpi;
        const wchar_t* language;
        const wchar_t* sourceLabel;
        const wchar_t* deleteText;
        const wchar_t* countSuffix;
    } cases[] = {
        {96, L"en", L"Source: ", L"Delete Mod", L" Mods"},
        {144, L"zh-Hans", L"源码：", L"删除 Mod", L" 个 Mod"},
        {192, L"en", L"Source: ", L"Delete Mod", L" Mods"},
    };
    const GdiplusSession gdiplus;
    for (const auto& row : cases) {
        SCOPED_TRACE(::testing::Message() << row.dpi << " DPI, " << TextToUtf8(row.language));
        ScratchDirectory out(L"picker-preview-hidden");
        const auto picker = StartPreview(out, {L"-KorvanePickerPreviewHidden", L"-KorvanePickerPreviewMs=250",
            L"-KorvanePickerPreviewDpi=" + DecimalText(row.dpi), L"-KorvanePickerPreviewLanguage=" + Text(row.language)});
        ASSERT_EQ(picker->WaitForExit(), 0u) << "closed by its timer";

        // Every key once, in this order, with its value.
        const Text modCount = DecimalText(Member(*preview_, L"mods").items.size());
        const std::pair<const wchar_t*, Text> values[] = {
            {L"firstPaintMs", L"0"}, {L"paintCount", L"0"}, {L"dpi", DecimalText(row.dpi)},
            {L"language", row.language}, {L"modCount", modCount}, {L"visibleModCount", modCount},
            {L"selectedSource", ModProject(0)}, {L"search", L""}, {L"sdkFile", Member(*preview_, L"sdkFile").text},
            {L"deleteButtonVisible", L"true"}, {L"deleteButtonEnabled", L"true"}, {L"deleteButtonText", row.deleteText},
            {L"childStarted", L"false"}, {L"sourceRowLabel", row.sourceLabel},
            {L"sourceRowHeight", DecimalText(Scaled(116, row.dpi))}, {L"snapshotSaved", L"true"},
            {L"windowVisible", L"false"}, {L"status", modCount + row.countSuffix},
        };
        const Bytes text = testing::ReadFileBytes(out / L"picker-report.json");
        const JsonValue report = picker->Report();
        EXPECT_EQ(report.members.size(), std::size(values)) << text;
        size_t previous = 0;
        for (const auto& [key, value] : values) {
            const size_t at = text.find("\"" + TextToUtf8(key) + "\":");
            EXPECT_TRUE(at != Bytes::npos && at >= previous) << TextToUtf8(key) << " out of order in " << text;
            previous = at == Bytes::npos ? previous : at;
            EXPECT_EQ(Member(report, key).text, value) << TextToUtf8(key);
        }

        // The picture is the client area, drawn as the layout places things at this DPI.
        Gdiplus::Bitmap picture((out / L"picker.png").c_str());
        const SIZE client = ExpectedClientSize(row.dpi);
        ASSERT_EQ(static_cast<LONG>(picture.GetWidth()), client.cx);
        ASSERT_EQ(static_cast<LONG>(picture.GetHeight()), client.cy);
        const auto s = [&](int value) { return Scaled(value, row.dpi); };
        const int w = MulDiv(client.cx, 96, static_cast<int>(row.dpi));
        const int h = MulDiv(client.cy, 96, static_cast<int>(row.dpi));
        const int listLeft = s(320);
        const int listTop = s(148);
        const int coverlessTop = listTop + kCoverlessRow * s(116);
        const struct {
            const char* what;
            POINT at;
            COLORREF colour;
        } points[] = {
            {"window surface", {s(12), s(12)}, kSurface},
            {"SDK panel", {s(32), s(200)}, kSdkPanel},
            {"selected card's left border", {listLeft, listTop + s(54)}, kSelectedCardBorder},
            {"primary button", {s(w - 152) + s(8), s(h - 60) + s(18)}, kPrimaryFill},
            {"letter tile of a Mod without cover", {listLeft + s(14), coverlessTop + s(54)}, kLetterTile},
        };
        for (const auto& point : points) {
            EXPECT_EQ(PixelAt(picture, point.at.x, point.at.y), point.colour)
                << point.what << " at " << point.at.x << "," << point.at.y;
        }
        EXPECT_NE(PixelAt(picture, listLeft + s(46), listTop + s(54)), kLetterTile) << "the first Mod shows its cover";
    }
}

TEST_F(PickerPreview, AShownPreviewPlacesItsControlsAsTheLayoutDoesAndRefusesEveryChange)
{
    constexpr const wchar_t* kNoModify = L"Preview mode does not modify Mod files.";
    constexpr const wchar_t* kNoEditor = L"Preview mode does not start the Editor.";
    ScratchDirectory out(L"picker-preview-shown");
    const auto picker = StartPreview(out, {L"-KorvanePickerPreviewDpi=144"});
    ASSERT_TRUE(picker->WaitForWindow());
    const HWND window = picker->Window();
    RECT client{};
    GetClientRect(window, &client);
    EXPECT_EQ(client.right, ExpectedClientSize(144).cx);
    EXPECT_EQ(client.bottom, ExpectedClientSize(144).cy);
    for (const ControlPlacement& place : PickerLayout(client.right, client.bottom, 144)) {
        RECT bounds{};
        GetWindowRect(picker->Control(place.id), &bounds);
        MapWindowPoints(HWND_DESKTOP, window, reinterpret_cast<POINT*>(&bounds), 2);
        EXPECT_EQ(bounds.left, place.x) << "control " << place.id;
        EXPECT_EQ(bounds.top, place.y) << "control " << place.id;
        EXPECT_EQ(bounds.right - bounds.left, place.width) << "control " << place.id;
        if (place.id != kLanguageComboId) {  // the layout gives the open list's height, not the field's
            EXPECT_EQ(bounds.bottom - bounds.top, place.height) << "control " << place.id;
        }
    }
    ASSERT_TRUE(picker->WaitForStatus(DecimalText(Member(*preview_, L"mods").items.size()) + L" Mods"));
    // Each refusal follows one of the other kind, so every click shows in the status line.
    const std::pair<int, const wchar_t*> clicks[] = {{kNewModId, kNoModify}, {kStartEditingId, kNoEditor},
        {kImportModId, kNoModify}, {kStartEditingId, kNoEditor}, {kDeleteModId, kNoModify}};
    for (const auto& [id, status] : clicks) {
        picker->Click(id);
        EXPECT_TRUE(picker->WaitForStatus(status)) << "button " << id << " left " << TextToUtf8(picker->TextOf(kStatusLineId));
    }

    PostMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_EQ(picker->WaitForExit(), 0u);
    const JsonValue report = picker->Report();
    EXPECT_GT(std::stoi(Member(report, L"paintCount").text), 0);
    EXPECT_GT(std::stoi(Member(report, L"firstPaintMs").text), 0);
    EXPECT_EQ(Member(report, L"windowVisible").text, L"true");
}

TEST_F(PickerPreview, TheListScrollsThreeRowsANotchAndByItsGripWithoutSelecting)
{
    ScratchDirectory out(L"picker-preview-scroll");
    Text mods;
    for (int index = 0; index < 20; ++index) {
        mods += Text(index == 0 ? L"" : L",") + LR"({"id":"mod.)" + DecimalText(index) + LR"(","name":"Mod )" +
            DecimalText(index) + LR"(","modProject":"C:\\Mods\\)" + DecimalText(index) + LR"(.umod"})";
    }
    testing::WriteFileText(out / L"fixture.json", LR"({"gameId":"skyhaven","mods":[)" + mods + L"]}");
    const auto picker = StartPreview(out, {L"-KorvanePickerFixture=" + out / L"fixture.json"});
    ASSERT_TRUE(picker->WaitForWindow());
    ASSERT_TRUE(picker->WaitForStatus(L"20 Mods"));

    // The drag keeps the grip only while the button is down.
    const HWND list = picker->Control(kModListId);
    const auto top = [list] { return SendMessageW(list, LB_GETTOPINDEX, 0, 0); };
    const LRESULT selected = SendMessageW(list, LB_GETCURSEL, 0, 0);
    RECT listClient{};
    GetClientRect(list, &listClient);
    const LRESULT lastTop = 20 - listClient.bottom / SendMessageW(list, LB_GETITEMHEIGHT, 0, 0);
    ASSERT_GT(lastTop, 6);
    SendMessageW(list, WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<WORD>(-2 * WHEEL_DELTA)), 0);
    EXPECT_EQ(top(), 6);
    SendMessageW(list, WM_MOUSEWHEEL, MAKEWPARAM(0, 3 * WHEEL_DELTA), 0);
    EXPECT_EQ(top(), 0);
    const WORD grip = static_cast<WORD>(listClient.right - 2);
    SendMessageW(list, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(grip, 0));
    SendMessageW(list, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(grip, 3 * listClient.bottom));
    EXPECT_EQ(top(), lastTop);
    SendMessageW(list, WM_LBUTTONUP, 0, MAKELPARAM(grip, 3 * listClient.bottom));
    SendMessageW(list, WM_MOUSEMOVE, 0, MAKELPARAM(grip, 0));
    EXPECT_EQ(top(), lastTop);
    EXPECT_EQ(SendMessageW(list, LB_GETCURSEL, 0, 0), selected);
    PostMessageW(picker->Window(), WM_CLOSE, 0, 0);
    EXPECT_EQ(picker->WaitForExit(), 0u);
}

TEST_F(PickerPreview, AFixtureWithoutUsableModsGivesAnEmptyListAndAnUnreadableOneTheToolResultMessage)
{
    constexpr const wchar_t* kUnreadable = L"Could not read the tool JSON result.";
    const struct {
        const char* label;
        const wchar_t* content;
        const wchar_t* status;
        const wchar_t* snapshotSaved;  // a picture is taken once an SDK is loaded
    } fixtures[] = {
        {"no usable Mod", LR"({"gameId":"skyhaven","mods":[{"id":"","name":"No id","modProject":"C:\\M\\A.umod"},)"
            LR"({"id":"b","name":"B","modProject":"C:\\M\\B.zip"},{"id":"c","name":"","modProject":"C:\\M\\C.umod"}]})",
            L"0 Mods", L"true"},
        {"not JSON", L"{\"mods\":[}", kUnreadable, L"false"},
    };
    for (const auto& fixture : fixtures) {
        SCOPED_TRACE(fixture.label);
        ScratchDirectory out(L"picker-preview-fixture");
        testing::WriteFileText(out / L"fixture.json", fixture.content);
        const bool unreadable = fixture.status == kUnreadable;
        std::vector<Text> more{L"-KorvanePickerFixture=" + out / L"fixture.json"};
        if (!unreadable) {
            more.insert(more.end(), {L"-KorvanePickerPreviewHidden", L"-KorvanePickerPreviewMs=250"});
        }
        const auto picker = StartPreview(out, more);
        if (unreadable) {
            ASSERT_TRUE(picker->WaitForWindow());
            EXPECT_EQ(picker->AnswerBox().text, kUnreadable);
            EXPECT_TRUE(picker->WaitForStatus(kUnreadable));
            PostMessageW(picker->Window(), WM_CLOSE, 0, 0);
        }
        EXPECT_EQ(picker->WaitForExit(), 0u);
        const JsonValue report = picker->Report();
        const std::pair<const wchar_t*, const wchar_t*> values[] = {{L"status", fixture.status}, {L"modCount", L"0"},
            {L"visibleModCount", L"0"}, {L"selectedSource", L""}, {L"snapshotSaved", fixture.snapshotSaved}};
        for (const auto& [key, value] : values) {
            EXPECT_EQ(Member(report, key).text, value) << TextToUtf8(key);
        }
    }
}

}  // namespace
}  // namespace korvane
