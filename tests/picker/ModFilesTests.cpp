// The Mod file commands through a real launcher's window: New Mod and its form, the cover
// choice, Import and Delete, with the shell's choosers answered as a user answers them and the
// stand-in tool doing the work. The form is reached from outside as the picker is: by window
// class, caption and control ids, by messages and keystrokes, and by the pixels it shows.
#include "ImageFiles.h"
#include "PickerDriver.h"
#include "SampleInstall.h"
#include "ScreenPicture.h"
#include "ToolCalls.h"
#include "common/Png.h"

#include "foundation/GdiplusSession.h"
#include "foundation/Paths.h"
#include "picker/Catalogue.h"
#include "picker/CreateModDialog.h"
#include "picker/PickerIds.h"
#include "picker/PickerTexts.h"
#include "tool/ToolMessages.h"

#include <gtest/gtest.h>

#include <set>

namespace korvane {
namespace {

using testing::WaitUntil;

constexpr int kFileNameEditId = 1152;  // the file-name box of the shell's choosers

// A key pressed and released, posted to `window` as the keyboard would deliver it.
void PressKey(HWND window, WPARAM key)
{
    const LPARAM scan = static_cast<LPARAM>(MapVirtualKeyW(static_cast<UINT>(key), MAPVK_VK_TO_VSC)) << 16;
    PostMessageW(window, WM_KEYDOWN, key, scan | 1);
    PostMessageW(window, WM_KEYUP, key, scan | 1 | (1LL << 30) | (1LL << 31));
}

// The control that has the keyboard focus on the thread of `window`, or null.
HWND FocusOf(HWND window)
{
    GUITHREADINFO info{};
    info.cbSize = sizeof(info);
    return GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info) ? info.hwndFocus : nullptr;
}

// Answers the chooser captioned `title` as a user does: types `path` into its file-name box and
// presses Return, or presses Cancel when `path` is empty. True when the chooser came and went.
bool AnswerFileChooser(const testing::ChildProcess& process, TextView title, TextView path)
{
    HWND chooser = nullptr;
    WaitUntil(process, [&] { return (chooser = testing::FindVisibleWindow(process.Id(), L"#32770", title)) != nullptr; });
    if (chooser == nullptr) {
        return false;
    }
    if (path.empty()) {
        PostMessageW(GetDlgItem(chooser, IDCANCEL), BM_CLICK, 0, 0);
    } else {
        const HWND name = GetDlgItem(chooser, kFileNameEditId);
        SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(Text(path).c_str()));
        PressKey(name, VK_RETURN);
    }
    return WaitUntil(process, [&] { return IsWindow(chooser) == FALSE; });
}

// The Create Mod form of a picker, opened by New Mod.
class ModForm {
public:
    explicit ModForm(testing::PickerProcess& picker) : picker_(picker)
    {
        picker.Click(kNewModId);
        WaitUntil(picker.Process(),
            [this] { return (form_ = testing::FindVisibleWindow(picker_.Process().Id(), kFormWindowClass)) != nullptr; });
    }

    bool IsOpen() const { return form_ != nullptr && IsWindow(form_) != FALSE; }
    HWND Window() const noexcept { return form_; }
    HWND Control(int id) const { return GetDlgItem(form_, id); }
    bool IsEnabled(int id) const { return IsWindowEnabled(Control(id)) != FALSE; }
    void Press(int id) const { PostMessageW(Control(id), BM_CLICK, 0, 0); }
    bool WaitClosed() const { return WaitUntil(picker_.Process(), [this] { return !IsOpen(); }); }

    Text TextOf(int id) const { return testing::TextOf(Control(id)); }
    void Type(int id, TextView text) const { testing::Type(Control(id), text); }

    // Types one character message per code unit, as the keyboard does, and waits until the edit
    // has taken them all: posted messages arrive in order, so once the whole text is selected,
    // every key before that selection has been taken (while typing, the selection is an empty caret).
    bool TypeKeys(int id, TextView text) const
    {
        const HWND edit = Control(id);
        for (const wchar_t unit : text) {
            PostMessageW(edit, WM_CHAR, unit, 1);
        }
        PostMessageW(edit, EM_SETSEL, 0, -1);
        return WaitUntil(picker_.Process(), [&] {
            const auto selection = static_cast<DWORD>(SendMessageW(edit, EM_GETSEL, 0, 0));
            return LOWORD(selection) == 0 && HIWORD(selection) > 0;
        });
    }

    // Chooses a cover through the form's chooser; true once the form has dealt with the answer.
    // The chooser returns inside the command; a message sent then is taken once the command is done.
    bool ChooseCover(TextView path) const
    {
        Press(kFormChooseImageId);
        return AnswerFileChooser(picker_.Process(), kCoverChooserTitle.Now(), path) && picker_.Settle();
    }

    // How many pixels of the cover hint's place show the error's colour, and the hint's colour.
    std::size_t ErrorPixels() const { return HintPlacePixels(RGB(244, 137, 129)); }
    std::size_t HintPixels() const { return HintPlacePixels(RGB(148, 177, 193)); }

    // The colour at the middle of the cover tile.
    COLORREF TileCentre() const { return Pixels(456 + 116, 108 + 102, 1, 1).At(0, 0); }

private:
    // The screen's pixels in a rectangle of the form's client area, given at 96 DPI.
    testing::ScreenPicture Pixels(int x, int y, int width, int height) const
    {
        RECT client{};
        GetClientRect(form_, &client);
        const int dpi = MulDiv(client.right, 96, kFormClientWidth);
        POINT origin{MulDiv(x, dpi, 96), MulDiv(y, dpi, 96)};
        ClientToScreen(form_, &origin);
        return testing::ScreenPicture::OfScreen(
            {origin.x, origin.y, origin.x + MulDiv(width, dpi, 96), origin.y + MulDiv(height, dpi, 96)});
    }

    std::size_t HintPlacePixels(COLORREF colour) const
    {
        const testing::ScreenPicture place = Pixels(456, 370, 232, 40);
        return static_cast<std::size_t>(
            place.Count({0, 0, place.width, place.height}, [colour](COLORREF pixel) { return pixel == colour; }));
    }

    testing::PickerProcess& picker_;
    HWND form_ = nullptr;
};

// A launcher on a sample install of its own, its picker shown.
struct Launcher {
    explicit Launcher(TextView label)
        : install(label), reports(Text(label) + L"-report"), picker(install.Launcher(), {}, reports.Path())
    {
    }

    // Waits until the first list is loaded.
    bool Started()
    {
        return picker.WaitForWindow() && WaitUntil(Process(), [&] { return Rows() == install.ModCount(); }) &&
               picker.Settle();
    }

    testing::ChildProcess& Process() { return picker.Process(); }
    Text Status() const { return picker.TextOf(kStatusLineId); }
    std::size_t Rows() const { return static_cast<std::size_t>(SendMessageW(picker.Control(kModListId), LB_GETCOUNT, 0, 0)); }
    std::size_t ToolRuns() const { return install.ToolCalls().size(); }
    Text Report(TextView key) const { return FindJsonMember(picker.Report(), key).text; }
    Text ModsFolder() const { return ParentPath(install.ModPackage(0)); }

    // The arguments, without the program, of the tool's last run that was no list load.
    std::vector<Text> LastModCommand() const
    {
        const auto calls = install.ToolCalls();
        for (auto call = calls.rbegin(); call != calls.rend(); ++call) {
            if (const std::vector<Text> argv = testing::Argv(*call); argv.size() > 1 && argv[1] != L"sdk-preview") {
                return std::vector<Text>(argv.begin() + 1, argv.end());
            }
        }
        return {};
    }

    // A Mod command as the launcher gives it: the command, the install's places, its options.
    std::vector<Text> Expected(std::vector<Text> command, const std::vector<Text>& options) const
    {
        command.insert(command.end(), {L"--sdk", install.SdkPath(), L"--game-root", install.GameDirectory(),
            L"--editor-root", install.EditorRoot()});
        command.insert(command.end(), options.begin(), options.end());
        return command;
    }

    // Selects a row by a click and gives the package it stands for: the install's Mods are listed
    // in their order. (The report is not written on a click, so it cannot tell.)
    Text Select(int row)
    {
        picker.ClickRow(row);
        return WaitUntil(Process(), [&] {
            return SendMessageW(picker.Control(kModListId), LB_GETCURSEL, 0, 0) == row &&
                   IsWindowEnabled(picker.Control(kDeleteModId));
        }) ? install.ModPackage(static_cast<std::size_t>(row)) : Text();
    }

    testing::SampleInstall install;
    testing::ScratchDirectory reports;
    testing::PickerProcess picker;
};

// The ".umod" files of a folder.
std::set<Text> PackagesIn(TextView folder)
{
    const std::vector<Text> packages = testing::FilesMatching(folder, L"*.umod");
    return {packages.begin(), packages.end()};
}

Bytes Png(std::uint32_t width, std::uint32_t height, COLORREF colour, std::size_t fileSize = 0)
{
    return standins::EncodeSolidPng(width, height, {GetRValue(colour), GetGValue(colour), GetBValue(colour)}, fileSize);
}

TEST(ModFiles, CreateAndImportReachTheToolWithEachValueQuotedOnceAndTheListSelectsTheNewMod)
{
    Launcher launcher(L"create");
    ASSERT_TRUE(launcher.Started());
    const testing::ScratchDirectory elsewhere(L"create-elsewhere");
    const Text target = elsewhere / L"Chosen Lanterns.umod";
    const Text source = elsewhere / L"Imported Isles.umod";
    testing::WriteFileText(source,
        LR"({"format":"KorvaneModSource","id":"mod.0123456789abcdef0123456789abcdef","name":"Imported Isles",)"
        LR"("authorName":"Ann","version":"1.0.0","supportedGameVersions":["1.4"],"kind":"standard"})");
    const struct {
        const char* label;
        int typeRow;  // of the form's type combo; -1: an import of `source` instead
        const wchar_t* name;
        const wchar_t* author;
        bool chooseTarget;  // through the save chooser, and accepted with Return in the name edit
        std::vector<Text> command;
        std::vector<Text> options;
    } cases[] = {
        {"a standard Mod in the library, trimmed and quoted once", 0, L"  Sky \"Lantern\" Isles  ", L" Ann Lee\t",
            false, {L"create"}, {L"--name", L"Sky \"Lantern\" Isles", L"--author-name", L"Ann Lee"}},
        {"a translation saved where chosen, outside the BMP", 1, L"Lanterns 灯笼 \U0001F3EE", L"林 \U0001F600", true,
            {L"translations", L"create"},
            {L"--name", L"Lanterns 灯笼 \U0001F3EE", L"--author-name", L"林 \U0001F600", L"--output-file", target}},
        {"an import into the library", -1, L"", L"", false, {L"import-source"}, {L"--mod-file", source}},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.label);
        const auto before = PackagesIn(launcher.ModsFolder());
        const std::size_t rows = launcher.Rows();
        if (entry.typeRow < 0) {
            launcher.picker.Click(kImportModId);
            ASSERT_TRUE(AnswerFileChooser(launcher.Process(), kImportTitle.Now(), source));
        } else {
            ModForm form(launcher.picker);
            ASSERT_TRUE(form.IsOpen());
            EXPECT_FALSE(IsWindowEnabled(launcher.picker.Window())) << "the picker waits for its form";
            SendMessageW(form.Control(kFormTypeComboId), CB_SETCURSEL, static_cast<WPARAM>(entry.typeRow), 0);
            SendMessageW(form.Window(), WM_COMMAND, MAKEWPARAM(kFormTypeComboId, CBN_SELCHANGE),
                reinterpret_cast<LPARAM>(form.Control(kFormTypeComboId)));
            form.Type(kFormNameEditId, entry.name);
            form.Type(kFormAuthorEditId, entry.author);
            if (entry.chooseTarget) {
                form.Press(kFormChooseTargetId);
                ASSERT_TRUE(AnswerFileChooser(launcher.Process(), kSaveModTitle.Now(), target));
                ASSERT_TRUE(WaitUntil(launcher.Process(), [&] { return form.TextOf(kFormTargetEditId) == target; }));
                PressKey(form.Control(kFormNameEditId), VK_RETURN);
            } else {
                form.Press(kFormCreateId);
            }
            ASSERT_TRUE(form.WaitClosed());
        }
        ASSERT_TRUE(launcher.picker.WaitForStatus(ModCountText(rows + 1))) << TextToUtf8(launcher.Status());
        EXPECT_EQ(launcher.LastModCommand(), launcher.Expected(entry.command, entry.options));
        const auto after = PackagesIn(launcher.ModsFolder());
        EXPECT_EQ(after.size(), before.size() + (entry.chooseTarget ? 0 : 1)) << "in the library unless saved elsewhere";
        const Text made = launcher.Report(L"selectedSource");
        EXPECT_TRUE(entry.chooseTarget ? made == target : after.count(made) == 1 && before.count(made) == 0)
            << TextToUtf8(made);
        EXPECT_TRUE(testing::FileExists(made));
    }
}

TEST(ModFiles, TheFormWantsANameAndAnAuthorOfAtMostAHundredCharactersAndJudgesCoversByContent)
{
    Launcher launcher(L"form");
    ASSERT_TRUE(launcher.Started());
    const Text status = launcher.Status();
    for (const bool escape : {true, false}) {  // Escape in an edit, then the close box: nothing made
        ModForm form(launcher.picker);
        ASSERT_TRUE(form.IsOpen());
        form.Type(kFormNameEditId, L"Unwanted");
        form.Type(kFormAuthorEditId, L"Ann");
        escape ? PressKey(form.Control(kFormAuthorEditId), VK_ESCAPE)
               : (void)PostMessageW(form.Window(), WM_CLOSE, 0, 0);
        ASSERT_TRUE(form.WaitClosed());
        ASSERT_TRUE(WaitUntil(launcher.Process(), [&] { return IsWindowEnabled(launcher.picker.Window()) != FALSE; }));
        EXPECT_EQ(launcher.Status(), status);
    }

    ModForm form(launcher.picker);
    ASSERT_TRUE(form.IsOpen());
    EXPECT_FALSE(form.IsEnabled(kFormCreateId));
    EXPECT_EQ(FocusOf(form.Window()), form.Control(kFormNameEditId));
    form.Type(kFormNameEditId, L" \t ");
    form.Type(kFormAuthorEditId, L"Ann");
    EXPECT_FALSE(form.IsEnabled(kFormCreateId)) << "a name of blanks is no name";
    PressKey(FocusOf(form.Window()), VK_RETURN);  // on the name edit: Create Mod, which does nothing yet
    form.Type(kFormNameEditId, L"");
    ASSERT_TRUE(form.TypeKeys(kFormNameEditId, Text(101, L'n'))) << "the Return before these keys was taken too";
    EXPECT_TRUE(form.IsOpen());
    EXPECT_EQ(form.TextOf(kFormNameEditId), Text(100, L'n')) << "the edit takes 100 characters";
    EXPECT_TRUE(form.IsEnabled(kFormCreateId));
    form.Type(kFormAuthorEditId, L"");
    EXPECT_FALSE(form.IsEnabled(kFormCreateId));
    form.Type(kFormNameEditId, L"");
    ASSERT_TRUE(form.TypeKeys(kFormAuthorEditId, Text(120, L'a')));
    EXPECT_EQ(form.TextOf(kFormAuthorEditId), Text(100, L'a'));
    EXPECT_EQ(launcher.ToolRuns(), 1u) << "only the first load ran the tool";

    // A cover taken off again.
    const testing::ScratchDirectory files(L"covers");
    testing::WriteFileBytes(files / L"taken-off.png", Png(32, 32, RGB(210, 30, 200)));
    ASSERT_TRUE(form.ChooseCover(files / L"taken-off.png"));
    ASSERT_TRUE(WaitUntil(launcher.Process(), [&] { return form.TileCentre() == RGB(210, 30, 200); }));
    form.Press(kFormRemoveCoverId);
    EXPECT_TRUE(WaitUntil(launcher.Process(), [&] { return !form.IsEnabled(kFormRemoveCoverId) && form.HintPixels() > 0; }));
    EXPECT_EQ(form.ErrorPixels(), 0u);
    EXPECT_NE(form.TileCentre(), RGB(210, 30, 200));
    EXPECT_EQ(form.TextOf(kFormChooseImageId), kChooseImageButton.Now());

    {
        const GdiplusSession session;
        testing::WriteImageFile(files / L"photo.png", 64, 48, testing::ImageFormat::Jpeg, 0xC80000);
    }
    constexpr std::size_t kTwoMiB = 2097152;
    const COLORREF red = RGB(200, 0, 0);
    // Each refusal follows an accepted cover, whose picture must stay.
    const struct {
        const char* label;
        Bytes bytes;
        COLORREF shown;  // what the tile shows of an accepted one; 0 for a refused one
    } covers[] = {
        {"2048 x 2048 of exactly 2 MiB", Png(2048, 2048, RGB(30, 200, 60), kTwoMiB), RGB(30, 200, 60)},
        {"one byte over 2 MiB", Png(2048, 2048, red, kTwoMiB + 1), 0},
        {"a small PNG", Png(64, 48, RGB(20, 90, 230)), RGB(20, 90, 230)},
        {"2049 pixels wide", Png(2049, 64, red), 0},
        {"a small PNG of another colour", Png(64, 48, RGB(230, 200, 20)), RGB(230, 200, 20)},
        {"2049 pixels tall", Png(64, 2049, red), 0},
        {"a PNG of a third colour", Png(48, 64, RGB(20, 200, 200)), RGB(20, 200, 200)},
        {"a JPEG named .png", testing::ReadFileBytes(files / L"photo.png"), 0},
        {"a PNG of a fourth colour", Png(64, 64, RGB(120, 60, 220)), RGB(120, 60, 220)},
        {"not an image", Bytes("This is no picture.\r\n"), 0},
    };
    COLORREF shown = 0;
    Text good;
    unsigned index = 0;
    for (const auto& cover : covers) {
        SCOPED_TRACE(cover.label);
        const Text path = files / (L"cover" + DecimalText(index++) + L".png");
        testing::WriteFileBytes(path, cover.bytes);
        ASSERT_TRUE(form.ChooseCover(path));
        if (cover.shown != 0) {
            EXPECT_TRUE(WaitUntil(launcher.Process(), [&] { return form.TileCentre() == cover.shown && form.HintPixels() > 0; }))
                << "the tile shows the cover, and the hint is back";
            EXPECT_EQ(form.ErrorPixels(), 0u);
            shown = cover.shown;
            good = path;
        } else {
            EXPECT_TRUE(WaitUntil(launcher.Process(), [&] { return form.ErrorPixels() > 0; })) << "the error replaces the hint";
            EXPECT_EQ(form.HintPixels(), 0u);
            EXPECT_EQ(form.TileCentre(), shown) << "the last good cover stays";
        }
        EXPECT_EQ(form.TextOf(kFormChooseImageId), kChangeImageButton.Now());
        EXPECT_TRUE(form.IsEnabled(kFormRemoveCoverId));
    }

    // The last good cover, and values at the limit, reach the tool whole.
    ASSERT_TRUE(form.TypeKeys(kFormNameEditId, Text(100, L'n')));
    form.Press(kFormCreateId);
    ASSERT_TRUE(form.WaitClosed());
    ASSERT_TRUE(launcher.picker.WaitForStatus(ModCountText(launcher.install.ModCount() + 1)));
    EXPECT_EQ(launcher.LastModCommand(), launcher.Expected({L"create"},
        {L"--cover", good, L"--name", Text(100, L'n'), L"--author-name", Text(100, L'a')}));
}

TEST(ModFiles, DeleteModAsksWithNoAsDefaultAndKeepsAPackageItCannotRemove)
{
    Launcher launcher(L"delete");
    ASSERT_TRUE(launcher.Started());
    const Text package = launcher.Select(1);
    ASSERT_FALSE(package.empty());
    const Text status = launcher.Status();
    // Return takes the question's default, No. Yes goes to the shell, which under Wine has no file
    // operation to recycle with, so the package stays where it was.
    for (const bool yes : {false, true}) {
        SCOPED_TRACE(yes ? "Yes" : "Return");
        launcher.picker.Click(kDeleteModId);
        const auto box = testing::WaitForMessageBox(launcher.Process().Id(), launcher.Process().Handle());
        ASSERT_TRUE(box);
        EXPECT_EQ(box->title, kRemoveCaption.Now());
        EXPECT_EQ(box->text,
            kRemoveQuestionStart.Now() + launcher.install.ModName(1) + L"\n" + package + kRemoveQuestionEnd.Now());
        EXPECT_EQ(GetWindowLongW(GetDlgItem(box->window, IDNO), GWL_STYLE) & BS_TYPEMASK, BS_DEFPUSHBUTTON);
        yes ? testing::PressMessageBoxButton(box->window, IDYES) : PressKey(FocusOf(box->window), VK_RETURN);
        ASSERT_TRUE(WaitUntil(launcher.Process(), [&] { return IsWindow(box->window) == FALSE; }));
        if (yes) {
            const auto told = launcher.picker.AnswerBox();
            EXPECT_EQ(told.text, kRemoveFailedMessage.Now());
            EXPECT_EQ(told.title, kOperationFailedCaption.Now());
        }
        EXPECT_TRUE(launcher.picker.WaitForStatus(yes ? kRemoveFailedMessage.Now() : status));
        EXPECT_TRUE(testing::FileExists(package));
    }
    EXPECT_EQ(launcher.Report(L"selectedSource"), package);

    // A package gone behind the picker's back: the question is still asked, then refused, and the
    // list stays as it was. Starting it says it is gone and starts nothing.
    ASSERT_TRUE(DeleteFileW(package.c_str()));
    launcher.picker.Click(kDeleteModId);
    const auto question = testing::WaitForMessageBox(launcher.Process().Id(), launcher.Process().Handle());
    ASSERT_TRUE(question);
    testing::PressMessageBoxButton(question->window, IDYES);
    ASSERT_TRUE(WaitUntil(launcher.Process(), [&] { return IsWindow(question->window) == FALSE; }));
    EXPECT_EQ(launcher.picker.AnswerBox().text, kRemoveRefusedMessage.Now());
    EXPECT_TRUE(launcher.picker.WaitForStatus(kRemoveRefusedMessage.Now()));
    EXPECT_EQ(launcher.Rows(), launcher.install.ModCount());
    EXPECT_EQ(launcher.Report(L"selectedSource"), package);
    const std::size_t toolRuns = launcher.ToolRuns();
    launcher.picker.ClickRow(1, true);
    EXPECT_TRUE(launcher.picker.WaitForStatus(kSelectionGoneStatus.Now()));
    EXPECT_TRUE(IsWindowVisible(launcher.picker.Window()));
    EXPECT_EQ(launcher.ToolRuns(), toolRuns);
}

// An SDK exported by another build of the editor can be looked at, and its Mods imported or
// removed, but nothing is started or created against it, not even by a double-click.
TEST(ModFiles, AnSdkOfAnotherEditorBuildStartsAndCreatesNothing)
{
    Launcher launcher(L"mismatch");
    ASSERT_TRUE(launcher.Started());
    // The installed editor becomes another build; the next load finds the SDK does not fit it.
    const Text modules = JoinPath(ParentPath(launcher.install.EditorExe()), L"UnrealEditor.modules");
    Bytes text = testing::ReadFileBytes(modules);
    const Bytes buildId = TextToUtf8(launcher.install.BuildId());
    ASSERT_NE(text.find(buildId), Bytes::npos);
    text.replace(text.find(buildId), buildId.size(), "another-build");
    testing::WriteFileBytes(modules, text);
    launcher.picker.Click(kRefreshId);
    ASSERT_TRUE(launcher.picker.WaitForStatus(kBuildMismatchMessage.Now()));
    EXPECT_EQ(launcher.Rows(), launcher.install.ModCount()) << "its Mods are shown";
    ASSERT_FALSE(launcher.Select(0).empty());
    for (const auto& [id, enabled] : {std::pair(kStartEditingId, false), std::pair(kNewModId, false),
             std::pair(kImportModId, true), std::pair(kDeleteModId, true)}) {
        EXPECT_EQ(IsWindowEnabled(launcher.picker.Control(id)) != FALSE, enabled) << id;
    }
    const std::size_t toolRuns = launcher.ToolRuns();
    launcher.picker.ClickRow(0, true);
    PostMessageW(launcher.picker.Window(), WM_COMMAND, MAKEWPARAM(kNewModId, BN_CLICKED), 0);
    ASSERT_TRUE(launcher.picker.Drain());
    EXPECT_TRUE(IsWindowVisible(launcher.picker.Window()));
    EXPECT_EQ(testing::FindVisibleWindow(launcher.Process().Id(), L"KorvaneLauncherForm"), nullptr);
    EXPECT_EQ(launcher.ToolRuns(), toolRuns);
    EXPECT_EQ(launcher.Status(), kBuildMismatchMessage.Now());
}

// A chosen game folder empties the SDK field, so that its own SDK is found anew and loaded; a
// cancelled chooser changes nothing.
TEST(GameFolderChooser, AChosenFolderLoadsItsOwnSdkAndACancelledOneChangesNothing)
{
    Launcher launcher(L"game-folder");
    ASSERT_TRUE(launcher.Started());
    constexpr const wchar_t* kTitle = L"Korvane - Select Packaged Game Directory";
    launcher.picker.Type(kSdkEditId, L"C:\\Elsewhere\\Other.kvsdk");
    launcher.picker.Click(kChooseGameFolderId);
    ASSERT_TRUE(AnswerFileChooser(launcher.Process(), kTitle, L""));
    ASSERT_TRUE(launcher.picker.Drain());
    EXPECT_EQ(launcher.picker.TextOf(kSdkEditId), L"C:\\Elsewhere\\Other.kvsdk");
    EXPECT_EQ(launcher.Status(), kApplySelectionStatus.Now());

    launcher.picker.Click(kChooseGameFolderId);
    ASSERT_TRUE(AnswerFileChooser(launcher.Process(), kTitle, launcher.install.GameDirectory()));
    ASSERT_TRUE(launcher.picker.WaitForStatus(ModCountText(launcher.install.ModCount())));
    EXPECT_EQ(launcher.picker.TextOf(kSdkEditId), launcher.install.SdkPath());
    EXPECT_EQ(launcher.picker.TextOf(kGameFolderEditId), launcher.install.GameDirectory());
    EXPECT_EQ(launcher.ToolRuns(), 2u) << "the first load, then the chosen folder's";
}

TEST(ModFiles, ACommandThatMakesNoPackageLeavesTheListAndAUsablePicker)
{
    Launcher launcher(L"no-package");
    ASSERT_TRUE(launcher.Started());
    ASSERT_FALSE(launcher.Select(1).empty());
    const auto before = PackagesIn(launcher.ModsFolder());
    const Text status = launcher.Status();
    // A refusal of the tool comes back the same way whichever Mod command it ends.
    const struct {
        const char* label;
        const wchar_t* scenario;
        bool import;  // else a create of "Lanterns" by Ann, cancelled while the tool runs
        Text choice;  // the import's choice; empty: the chooser is cancelled
        Text shown;   // the status line afterwards: the tool's words whole when it refused
    } cases[] = {
        {"a cancelled import chooser", L"", true, {}, status},
        {"an import the tool refuses", LR"({"import-source":{"exitCode":1,"stderr":"KorvaneTool: the package is damaged"}})",
            true, launcher.install.ModPackage(0), L"KorvaneTool: the package is damaged"},
        {"a create cancelled while the tool hangs", LR"({"create":{"hang":true}})", false, {}, kToolCancelledMessage.Now()},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.label);
        launcher.install.SetToolScenario(entry.scenario);
        const std::size_t toolRuns = launcher.ToolRuns();
        if (entry.import) {
            launcher.picker.Click(kImportModId);
            ASSERT_TRUE(AnswerFileChooser(launcher.Process(), kImportTitle.Now(), entry.choice));
        } else {
            ModForm form(launcher.picker);
            ASSERT_TRUE(form.IsOpen());
            form.Type(kFormNameEditId, L"Lanterns");
            form.Type(kFormAuthorEditId, L"Ann");
            form.Press(kFormCreateId);
            ASSERT_TRUE(form.WaitClosed());
            ASSERT_TRUE(WaitUntil(launcher.Process(), [&] { return launcher.ToolRuns() == toolRuns + 1; }));
            EXPECT_EQ(launcher.picker.TextOf(kCloseId), kCancelButton.Now());
            launcher.picker.Click(kCloseId);
        }
        if (entry.import && !entry.choice.empty()) {
            const auto box = launcher.picker.AnswerBox();
            EXPECT_EQ(box.title, kOperationFailedCaption.Now());
            EXPECT_EQ(box.text, entry.shown);
        }
        EXPECT_TRUE(launcher.picker.WaitForStatus(entry.shown)) << TextToUtf8(launcher.Status());
        EXPECT_EQ(launcher.Report(L"status"), entry.shown) << "written once the command's end is dealt with, after any box";
        EXPECT_EQ(PackagesIn(launcher.ModsFolder()), before) << "no package in the library";
        EXPECT_EQ(SendMessageW(launcher.picker.Control(kModListId), LB_GETCURSEL, 0, 0), 1);
        EXPECT_EQ(launcher.Report(L"modCount"), DecimalText(launcher.install.ModCount()));
        EXPECT_TRUE(IsWindowEnabled(launcher.picker.Control(kNewModId))) << "the picker takes commands again";
    }
}

}  // namespace
}  // namespace korvane
