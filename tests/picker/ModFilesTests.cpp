// The Mod file commands through a real launcher's window: New Mod and its form, the cover
// choice, Import and Delete, with the shell's choosers answered as a user answers them and the
// stand-in tool doing the work.
#include "ImageFiles.h"
#include "ModFormDriver.h"
#include "SampleInstall.h"
#include "ToolCalls.h"
#include "common/Png.h"

#include "foundation/GdiplusSession.h"
#include "foundation/Paths.h"
#include "picker/PickerIds.h"
#include "picker/PickerTexts.h"
#include "tool/ToolMessages.h"

#include <gtest/gtest.h>

#include <optional>
#include <set>

namespace korvane {
namespace {

using testing::ModForm;
using testing::WaitUntil;

constexpr int kFormCreate = 1;
constexpr int kFormName = 2101;
constexpr int kFormAuthor = 2102;
constexpr int kFormTarget = 2104;
constexpr int kFormChooseImage = 2203;
constexpr int kFormChooseTarget = 2204;
constexpr int kFormType = 2300;
constexpr int kFormRemoveCover = 2301;

// A launcher on a sample install of its own, started with its first list loaded.
class Launcher {
public:
    explicit Launcher(TextView label) : install_(label), reports_(Text(label) + L"-report") {}

    bool Start()
    {
        picker_.emplace(install_.Launcher(), std::vector<Text>{}, reports_.Path());
        return picker_->WaitForWindow() && WaitUntil(Process(), [&] { return Rows() == install_.ModCount(); }) &&
               picker_->Settle();
    }

    bool WaitForStatus(TextView status) { return picker_->WaitForStatus(status); }

    const testing::SampleInstall& Install() const { return install_; }
    testing::PickerProcess& Picker() { return *picker_; }
    testing::ChildProcess& Process() { return picker_->Process(); }
    Text Status() const { return picker_->TextOf(kStatusLineId); }
    std::size_t Rows() const { return static_cast<std::size_t>(SendMessageW(picker_->Control(kModListId), LB_GETCOUNT, 0, 0)); }
    std::size_t ToolRuns() const { return install_.ToolCalls().size(); }
    Text Report(TextView key) const { return FindJsonMember(picker_->Report(), key).text; }
    Text ModsFolder() const { return ParentPath(install_.ModPackage(0)); }

    // The arguments, without the program, of the tool's last run that was no list load.
    std::vector<Text> LastModCommand() const
    {
        const auto calls = install_.ToolCalls();
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
        command.insert(command.end(), {L"--sdk", install_.SdkPath(), L"--game-root", install_.GameDirectory(),
            L"--editor-root", install_.EditorRoot()});
        command.insert(command.end(), options.begin(), options.end());
        return command;
    }

    // Selects a row by a click and gives the package it stands for: the install's Mods are listed
    // in their order. (The report is not written on a click, so it cannot tell.)
    Text Select(int row)
    {
        picker_->ClickRow(row);
        return WaitUntil(Process(), [&] {
            return SendMessageW(picker_->Control(kModListId), LB_GETCURSEL, 0, 0) == row &&
                   IsWindowEnabled(picker_->Control(kDeleteModId));
        }) ? install_.ModPackage(static_cast<std::size_t>(row)) : Text();
    }

private:
    testing::SampleInstall install_;
    testing::ScratchDirectory reports_;
    std::optional<testing::PickerProcess> picker_;
};

Text ModCountStatus(std::size_t count)
{
    return DecimalText(count) + kModCountSuffix.Now();
}

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
    ASSERT_TRUE(launcher.Start());
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
            launcher.Picker().Click(kImportModId);
            ASSERT_TRUE(testing::AnswerFileChooser(launcher.Process(), kImportTitle.Now(), source));
        } else {
            ModForm form(launcher.Picker());
            ASSERT_TRUE(form.IsOpen());
            EXPECT_FALSE(IsWindowEnabled(launcher.Picker().Window())) << "the picker waits for its form";
            SendMessageW(form.Control(kFormType), CB_SETCURSEL, static_cast<WPARAM>(entry.typeRow), 0);
            SendMessageW(form.Window(), WM_COMMAND, MAKEWPARAM(kFormType, CBN_SELCHANGE),
                reinterpret_cast<LPARAM>(form.Control(kFormType)));
            form.Type(kFormName, entry.name);
            form.Type(kFormAuthor, entry.author);
            if (entry.chooseTarget) {
                form.Press(kFormChooseTarget);
                ASSERT_TRUE(testing::AnswerFileChooser(launcher.Process(), kSaveModTitle.Now(), target));
                ASSERT_TRUE(WaitUntil(launcher.Process(), [&] { return form.TextOf(kFormTarget) == target; }));
                testing::PressKey(form.Control(kFormName), VK_RETURN);
            } else {
                form.Press(kFormCreate);
            }
            ASSERT_TRUE(form.WaitClosed());
        }
        ASSERT_TRUE(launcher.WaitForStatus(ModCountStatus(rows + 1))) << TextToUtf8(launcher.Status());
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
    ASSERT_TRUE(launcher.Start());
    const Text status = launcher.Status();
    for (const bool escape : {true, false}) {  // Escape in an edit, then the close box: nothing made
        ModForm form(launcher.Picker());
        ASSERT_TRUE(form.IsOpen());
        form.Type(kFormName, L"Unwanted");
        form.Type(kFormAuthor, L"Ann");
        escape ? testing::PressKey(form.Control(kFormAuthor), VK_ESCAPE)
               : (void)PostMessageW(form.Window(), WM_CLOSE, 0, 0);
        ASSERT_TRUE(form.WaitClosed());
        ASSERT_TRUE(WaitUntil(launcher.Process(), [&] { return IsWindowEnabled(launcher.Picker().Window()) != FALSE; }));
        EXPECT_EQ(launcher.Status(), status);
    }

    ModForm form(launcher.Picker());
    ASSERT_TRUE(form.IsOpen());
    EXPECT_FALSE(form.IsEnabled(kFormCreate));
    EXPECT_EQ(testing::FocusOf(form.Window()), form.Control(kFormName));
    form.Type(kFormName, L" \t ");
    form.Type(kFormAuthor, L"Ann");
    EXPECT_FALSE(form.IsEnabled(kFormCreate)) << "a name of blanks is no name";
    form.Key(VK_RETURN);  // on the name edit: Create Mod, which does nothing yet
    form.Type(kFormName, L"");
    ASSERT_TRUE(form.TypeKeys(kFormName, Text(101, L'n'))) << "the Return before these keys was taken too";
    EXPECT_TRUE(form.IsOpen());
    EXPECT_EQ(form.TextOf(kFormName), Text(100, L'n')) << "the edit takes 100 characters";
    EXPECT_TRUE(form.IsEnabled(kFormCreate));
    form.Type(kFormAuthor, L"");
    EXPECT_FALSE(form.IsEnabled(kFormCreate));
    form.Type(kFormName, L"");
    ASSERT_TRUE(form.TypeKeys(kFormAuthor, Text(120, L'a')));
    EXPECT_EQ(form.TextOf(kFormAuthor), Text(100, L'a'));
    EXPECT_FALSE(form.IsEnabled(kFormCreate));
    EXPECT_EQ(launcher.ToolRuns(), 1u) << "only the first load ran the tool";

    // A cover taken off again.
    const testing::ScratchDirectory files(L"covers");
    testing::WriteFileBytes(files / L"taken-off.png", Png(32, 32, RGB(210, 30, 200)));
    ASSERT_TRUE(form.ChooseCover(files / L"taken-off.png"));
    ASSERT_TRUE(WaitUntil(launcher.Process(), [&] { return form.TileCentre() == RGB(210, 30, 200); }));
    form.Press(kFormRemoveCover);
    EXPECT_TRUE(WaitUntil(launcher.Process(), [&] { return !form.IsEnabled(kFormRemoveCover) && form.HintPixels() > 0; }));
    EXPECT_EQ(form.ErrorPixels(), 0u);
    EXPECT_NE(form.TileCentre(), RGB(210, 30, 200));
    EXPECT_EQ(form.TextOf(kFormChooseImage), kChooseImageButton.Now());

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
        {"2049 pixels wide", Png(2049, 64, red), 0},
        {"a small PNG", Png(64, 48, RGB(20, 90, 230)), RGB(20, 90, 230)},
        {"a JPEG named .png", testing::ReadFileBytes(files / L"photo.png"), 0},
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
        EXPECT_EQ(form.TextOf(kFormChooseImage), kChangeImageButton.Now());
        EXPECT_TRUE(form.IsEnabled(kFormRemoveCover));
    }

    // The last good cover, and values at the limit, reach the tool whole.
    ASSERT_TRUE(form.TypeKeys(kFormName, Text(100, L'n')));
    form.Press(kFormCreate);
    ASSERT_TRUE(form.WaitClosed());
    ASSERT_TRUE(launcher.WaitForStatus(ModCountStatus(launcher.Install().ModCount() + 1)));
    EXPECT_EQ(launcher.LastModCommand(), launcher.Expected({L"create"},
        {L"--cover", good, L"--name", Text(100, L'n'), L"--author-name", Text(100, L'a')}));
}

TEST(ModFiles, DeleteModAsksWithNoAsDefaultAndKeepsAPackageItCannotOrMayNotRemove)
{
    Launcher launcher(L"delete");
    ASSERT_TRUE(launcher.Start());
    const Text package = launcher.Select(1);
    ASSERT_FALSE(package.empty());
    const Text status = launcher.Status();
    const std::size_t toolRuns = launcher.ToolRuns();

    // Wine's shell has no file operation to recycle with, so a plain package stays where it was.
    const struct {
        const char* label;
        void (*change)(const Text& package);
        const LocalizedText* message;  // null: Return on the question, whose default is No
    } cases[] = {
        {"Return on the question", [](const Text&) {}, nullptr},
        {"Yes for the package as listed", [](const Text&) {}, &kRemoveFailedMessage},
        {"Yes once the package went", [](const Text& file) { DeleteFileW(file.c_str()); }, &kRemoveRefusedMessage},
        {"Yes once a folder took its name", [](const Text& file) { CreateDirectoryW(file.c_str(), nullptr); },
            &kRemoveRefusedMessage},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.label);
        entry.change(package);
        const DWORD attributes = GetFileAttributesW(package.c_str());
        launcher.Picker().Click(kDeleteModId);
        const auto box = testing::WaitForMessageBox(launcher.Process().Id(), launcher.Process().Handle());
        ASSERT_TRUE(box) << "the question comes whatever the file has become";
        EXPECT_EQ(box->title, kRemoveCaption.Now());
        EXPECT_EQ(box->text,
            kRemoveQuestionStart.Now() + launcher.Install().ModName(1) + L"\n" + package + kRemoveQuestionEnd.Now());
        EXPECT_EQ(GetWindowLongW(GetDlgItem(box->window, IDNO), GWL_STYLE) & BS_TYPEMASK, BS_DEFPUSHBUTTON);
        entry.message == nullptr ? testing::PressKey(testing::FocusOf(box->window), VK_RETURN)
                                 : testing::PressMessageBoxButton(box->window, IDYES);
        ASSERT_TRUE(WaitUntil(launcher.Process(), [&] { return IsWindow(box->window) == FALSE; }));
        if (entry.message != nullptr) {
            const auto told = launcher.Picker().AnswerBox();
            EXPECT_EQ(told.text, entry.message->Now());
            EXPECT_EQ(told.title, kOperationFailedCaption.Now());
        }
        EXPECT_TRUE(launcher.WaitForStatus(entry.message != nullptr ? entry.message->Now() : status));
        if (entry.message != nullptr) {
            EXPECT_EQ(launcher.Report(L"selectedSource"), package);
        }
        EXPECT_EQ(GetFileAttributesW(package.c_str()), attributes) << "left as it was";
        EXPECT_EQ(launcher.Report(L"modCount"), DecimalText(launcher.Install().ModCount()));
    }
    EXPECT_EQ(launcher.ToolRuns(), toolRuns) << "the list was never read again";
    EXPECT_TRUE(IsWindowEnabled(launcher.Picker().Control(kDeleteModId)));
}

TEST(ModFiles, ACommandThatMakesNoPackageLeavesTheListAndAUsablePicker)
{
    Launcher launcher(L"no-package");
    ASSERT_TRUE(launcher.Start());
    ASSERT_FALSE(launcher.Select(1).empty());
    const auto before = PackagesIn(launcher.ModsFolder());
    const Text status = launcher.Status();
    const testing::ScratchDirectory files(L"no-package");
    const Text existing = files / L"Existing.umod";
    testing::WriteFileText(existing, L"kept");
    const struct {
        const char* label;
        const wchar_t* scenario;
        bool import;  // else a create of "Lanterns" by Ann
        Text path;    // the import's choice (empty: the chooser is cancelled), or the create's target
        bool cancel;  // Cancel pressed while the tool runs
        Text words;   // the status: the tool's words whole, or the path they must name
        bool toolRan;
    } cases[] = {
        {"a cancelled import chooser", L"", true, {}, false, status, false},
        {"an import the tool refuses", LR"({"import-source":{"exitCode":1,"stderr":"KorvaneTool: the package is damaged"}})",
            true, launcher.Install().ModPackage(0), false, L"KorvaneTool: the package is damaged", true},
        {"a create target that exists", L"", false, existing, false, existing, true},
        {"a create the tool fails", LR"({"create":{"exitCode":3,"stderr":"KorvaneTool: disk full"}})", false, {}, false,
            L"KorvaneTool: disk full", true},
        {"a create cancelled while the tool hangs", LR"({"create":{"hang":true}})", false, {}, true,
            kToolCancelledMessage.Now(), true},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.label);
        launcher.Install().SetToolScenario(entry.scenario);
        const std::size_t toolRuns = launcher.ToolRuns();
        if (entry.import) {
            launcher.Picker().Click(kImportModId);
            ASSERT_TRUE(testing::AnswerFileChooser(launcher.Process(), kImportTitle.Now(), entry.path));
        } else {
            ModForm form(launcher.Picker());
            ASSERT_TRUE(form.IsOpen());
            form.Type(kFormName, L"Lanterns");
            form.Type(kFormAuthor, L"Ann");
            if (!entry.path.empty()) {
                form.Type(kFormTarget, entry.path);
            }
            form.Press(kFormCreate);
            ASSERT_TRUE(form.WaitClosed());
        }
        Text shown = entry.words;
        if (entry.cancel) {
            ASSERT_TRUE(WaitUntil(launcher.Process(), [&] { return launcher.ToolRuns() == toolRuns + 1; }));
            EXPECT_EQ(launcher.Picker().TextOf(kCloseId), kCancelButton.Now());
            launcher.Picker().Click(kCloseId);
        } else if (entry.words != status) {
            const auto box = launcher.Picker().AnswerBox();
            EXPECT_EQ(box.title, kOperationFailedCaption.Now());
            EXPECT_TRUE(entry.words == entry.path ? box.text.find(entry.words) != Text::npos : box.text == entry.words)
                << TextToUtf8(box.text);
            shown = box.text;
        }
        EXPECT_TRUE(launcher.WaitForStatus(shown)) << TextToUtf8(launcher.Status());
        EXPECT_EQ(launcher.Report(L"status"), shown) << "written once the command's end is dealt with, after any box";
        EXPECT_EQ(launcher.ToolRuns() > toolRuns, entry.toolRan);
        EXPECT_EQ(PackagesIn(launcher.ModsFolder()), before) << "no package in the library";
        EXPECT_EQ(testing::ReadFileBytes(existing), "kept");
        EXPECT_EQ(SendMessageW(launcher.Picker().Control(kModListId), LB_GETCURSEL, 0, 0), 1);
        EXPECT_EQ(launcher.Report(L"modCount"), DecimalText(launcher.Install().ModCount()));
        EXPECT_TRUE(IsWindowEnabled(launcher.Picker().Control(kNewModId))) << "the picker takes commands again";
        testing::ExpectNoToolRunning(launcher.Install().ToolCalls());
    }
}

}  // namespace
}  // namespace korvane
