// The Mod file commands through a real launcher's window: New Mod and its form, the cover
// choice, Import and Delete, with the shell's choosers answered as a user answers them and the
// stand-in tool doing the work.
#include "ModFormDriver.h"
#include "PickerDriver.h"
#include "SampleInstall.h"
#include "ToolCalls.h"

#include "foundation/Paths.h"
#include "picker/PickerTexts.h"
#include "tool/ToolMessages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <set>

namespace korvane {
namespace {

using testing::ModForm;
using testing::PickerProcess;
using testing::SampleInstall;

constexpr int kStatusLine = 1005;
constexpr int kNewMod = 1010;
constexpr int kImportMod = 1011;
constexpr int kModList = 1009;
constexpr int kDeleteMod = 1012;
constexpr int kClose = 1004;
constexpr int kFormCreate = 1;
constexpr int kFormCancel = 2;
constexpr int kFormName = 2101;
constexpr int kFormAuthor = 2102;
constexpr int kFormTarget = 2104;
constexpr int kFormChooseImage = 2203;
constexpr int kFormChooseTarget = 2204;
constexpr int kFormRemoveCover = 2301;

// A launcher on a sample install of its own.
class Launcher {
public:
    explicit Launcher(TextView label) : install_(label), reports_(Text(label) + L"-report") {}

    // Starts the launcher with the tool's scenario and waits for its first list: the install's
    // own Mods, or `listed` rows.
    bool Start(TextView toolScenario = {}, std::size_t listed = SIZE_MAX)
    {
        install_.SetToolScenario(toolScenario);
        picker_.emplace(install_.Launcher(), std::vector<Text>{}, reports_.Path());
        const auto count = static_cast<LRESULT>(listed == SIZE_MAX ? install_.ModCount() : listed);
        return picker_->WaitForWindow() && testing::WaitUntil(Process(), [&] {
            return SendMessageW(picker_->Control(kModList), LB_GETCOUNT, 0, 0) == count;
        }) && Settle();
    }

    // Waits until the picker's window thread has finished what it was doing: a message sent now
    // is taken only between commands. The report is read only after this, never while the
    // launcher may be writing it, as it writes the report without sharing.
    bool Settle()
    {
        DWORD_PTR ignored = 0;
        return SendMessageTimeoutW(picker_->Window(), WM_NULL, 0, 0, SMTO_BLOCK, 60000, &ignored) != 0;
    }

    // Waits until the status line reads `status` and the command that wrote it is done.
    bool WaitForStatus(TextView status)
    {
        return testing::WaitUntil(Process(), [&] { return picker_->TextOf(kStatusLine) == status; }) && Settle();
    }

    const SampleInstall& Install() const { return install_; }
    PickerProcess& Picker() { return *picker_; }
    testing::ChildProcess& Process() { return picker_->Process(); }
    Text Report(TextView key) const { return FindJsonMember(picker_->Report(), key).text; }
    Text ModsFolder() const { return ParentPath(install_.ModPackage(0)); }

    // The arguments, without the program, of the tool's last run that was no list load.
    std::vector<Text> LastModCommand() const
    {
        const auto calls = install_.ToolCalls();
        for (auto call = calls.rbegin(); call != calls.rend(); ++call) {
            const std::vector<Text> argv = testing::Argv(*call);
            if (argv.size() > 1 && argv[1] != L"sdk-preview") {
                return std::vector<Text>(argv.begin() + 1, argv.end());
            }
        }
        return {};
    }

    // What the launcher passes to every Mod command before its own options.
    std::vector<Text> CommandStart(std::vector<Text> command) const
    {
        for (const Text& word : {Text(L"--sdk"), install_.SdkPath(), Text(L"--game-root"), install_.GameDirectory(),
                 Text(L"--editor-root"), install_.EditorRoot()}) {
            command.push_back(word);
        }
        return command;
    }

    // The text of the next box the launcher shows, answered with OK; empty when none came.
    Text AnswerBox(Text* caption = nullptr)
    {
        const auto box = testing::WaitForMessageBox(Process().Id(), Process().Handle(), 60000);
        if (!box) {
            return {};
        }
        if (caption != nullptr) {
            *caption = box->title;
        }
        testing::PressMessageBoxButton(box->window, IDOK);
        testing::WaitUntil(Process(), [&] { return IsWindow(box->window) == FALSE; });
        return box->text;
    }

private:
    SampleInstall install_;
    testing::ScratchDirectory reports_;
    std::optional<PickerProcess> picker_;
};

Text ModCountStatus(std::size_t count)
{
    return DecimalText(count) + kModCountSuffix.Now();
}

// The ".umod" files of a folder.
std::set<Text> PackagesIn(TextView folder)
{
    std::set<Text> packages;
    WIN32_FIND_DATAW found{};
    const UniqueFindHandle search(FindFirstFileW(JoinPath(folder, L"*.umod").c_str(), &found));
    while (search) {
        packages.insert(JoinPath(folder, found.cFileName));
        if (!FindNextFileW(search.Get(), &found)) {
            break;
        }
    }
    return packages;
}

std::vector<Text> Joined(std::vector<Text> first, const std::vector<Text>& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST(ModFiles, TheFormCreatesAModOfEitherTypeAndTheListSelectsIt)
{
    const struct {
        const char* label;
        int typeRow;
        const wchar_t* name;
        const wchar_t* author;
        bool chooseTarget;  // through the save chooser, and accepted with Return in the name edit
        std::vector<Text> command;
        const wchar_t* toolName;
        const wchar_t* toolAuthor;
    } cases[] = {
        {"a standard Mod in the library, trimmed and quoted once", 0, L"  Sky \"Lantern\" Isles  ", L" Ann Lee\t",
            false, {L"create"}, L"Sky \"Lantern\" Isles", L"Ann Lee"},
        {"a translation saved where chosen, outside the BMP", 1, L"Lanterns 灯笼 \U0001F3EE", L"林 \U0001F600", true,
            {L"translations", L"create"}, L"Lanterns 灯笼 \U0001F3EE", L"林 \U0001F600"},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.label);
        Launcher launcher(L"create");
        ASSERT_TRUE(launcher.Start());
        const auto before = PackagesIn(launcher.ModsFolder());
        const testing::ScratchDirectory elsewhere(L"create-target");
        const Text target = elsewhere / L"Chosen Lanterns.umod";

        ModForm form(launcher.Picker());
        ASSERT_TRUE(form.IsOpen());
        EXPECT_FALSE(IsWindowEnabled(launcher.Picker().Window())) << "the picker waits for its form";
        ASSERT_TRUE(form.ChooseType(entry.typeRow));
        form.Type(kFormName, entry.name);
        form.Type(kFormAuthor, entry.author);
        if (entry.chooseTarget) {
            form.Press(kFormChooseTarget);
            ASSERT_TRUE(testing::AnswerFileChooser(launcher.Process(), kSaveModTitle.Now(), target));
            ASSERT_TRUE(testing::WaitUntil(launcher.Process(), [&] { return form.TextOf(kFormTarget) == target; }));
            testing::PressKey(form.Control(kFormName), VK_RETURN);
        } else {
            form.Press(kFormCreate);
        }
        ASSERT_TRUE(form.WaitClosed());
        ASSERT_TRUE(launcher.WaitForStatus(ModCountStatus(launcher.Install().ModCount() + 1)))
            << TextToUtf8(launcher.Picker().TextOf(kStatusLine));

        std::vector<Text> options{L"--name", entry.toolName, L"--author-name", entry.toolAuthor};
        if (entry.chooseTarget) {
            options.insert(options.end(), {L"--output-file", target});
        }
        EXPECT_EQ(launcher.LastModCommand(), Joined(launcher.CommandStart(entry.command), options));
        const auto after = PackagesIn(launcher.ModsFolder());
        if (!entry.chooseTarget) {
            std::vector<Text> added;
            std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::back_inserter(added));
            ASSERT_EQ(added.size(), 1u) << "one new package in the library";
            EXPECT_EQ(launcher.Report(L"selectedSource"), added.front());
        } else {
            EXPECT_EQ(after, before) << "nothing in the library folder";
            EXPECT_TRUE(testing::FileExists(target));
            EXPECT_EQ(launcher.Report(L"selectedSource"), target);
        }
        EXPECT_TRUE(IsWindowEnabled(launcher.Picker().Window()));
    }
}

TEST(ModFiles, CreateModWaitsForANameAndAnAuthorOfAtMostAHundredCharacters)
{
    Launcher launcher(L"form-complete");
    ASSERT_TRUE(launcher.Start());
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
    EXPECT_EQ(launcher.Install().ToolCalls().size(), 1u) << "only the first load ran the tool";

    // Values at the limit reach the tool whole.
    ASSERT_TRUE(form.TypeKeys(kFormName, Text(100, L'n')));
    form.Press(kFormCreate);
    ASSERT_TRUE(form.WaitClosed());
    ASSERT_TRUE(launcher.WaitForStatus(ModCountStatus(launcher.Install().ModCount() + 1)));
    EXPECT_EQ(launcher.LastModCommand(),
        Joined(launcher.CommandStart({L"create"}), {L"--name", Text(100, L'n'), L"--author-name", Text(100, L'a')}));
}

TEST(ModFiles, EveryWayOutOfTheFormCreatesNothing)
{
    const struct {
        const char* label;
        void (*leave)(const ModForm&);
    } ways[] = {
        {"Escape in an edit", [](const ModForm& form) { testing::PressKey(form.Control(kFormAuthor), VK_ESCAPE); }},
        {"Return on Cancel",
            [](const ModForm& form) {
                ASSERT_TRUE(form.FocusOn(kFormCancel));
                form.Key(VK_RETURN);
            }},
        {"the Cancel button", [](const ModForm& form) { form.Press(kFormCancel); }},
        {"the close box", [](const ModForm& form) { PostMessageW(form.Window(), WM_CLOSE, 0, 0); }},
    };
    Launcher launcher(L"form-leave");
    ASSERT_TRUE(launcher.Start());
    const Text status = launcher.Picker().TextOf(kStatusLine);
    for (const auto& way : ways) {
        SCOPED_TRACE(way.label);
        ModForm form(launcher.Picker());
        ASSERT_TRUE(form.IsOpen());
        form.Type(kFormName, L"Unwanted");
        form.Type(kFormAuthor, L"Ann");
        way.leave(form);
        ASSERT_TRUE(form.WaitClosed());
        ASSERT_TRUE(testing::WaitUntil(
            launcher.Process(), [&] { return IsWindowEnabled(launcher.Picker().Window()) != FALSE; }));
        EXPECT_EQ(launcher.Picker().TextOf(kStatusLine), status);
        EXPECT_TRUE(IsWindowEnabled(launcher.Picker().Control(kNewMod)));
    }
    EXPECT_EQ(launcher.Install().ToolCalls().size(), 1u) << "only the first load ran the tool";
}

struct CoverFile {
    const char* label;
    Bytes bytes;
    bool accepted;
    COLORREF colour;  // what the tile shows of an accepted one
};

TEST(ModFiles, ACoverIsJudgedByItsContentAndABadChoiceKeepsTheLastGoodOne)
{
    constexpr std::size_t kTwoMiB = 2097152;
    const COLORREF blue = RGB(20, 90, 230);
    const COLORREF green = RGB(30, 200, 60);
    const COLORREF yellow = RGB(230, 210, 20);
    const COLORREF magenta = RGB(210, 30, 200);
    const COLORREF cyan = RGB(20, 220, 220);
    // Each refusal follows an accepted cover, whose picture must stay.
    const CoverFile covers[] = {
        {"a small PNG", testing::SolidPng(64, 48, blue), true, blue},
        {"a JPEG named .png", testing::SolidJpeg(64, 48, RGB(200, 0, 0)), false, 0},
        {"2048 x 2048 of exactly 2 MiB", testing::SolidPng(2048, 2048, green, kTwoMiB), true, green},
        {"one byte over 2 MiB", testing::SolidPng(2048, 2048, RGB(200, 0, 0), kTwoMiB + 1), false, 0},
        {"2048 x 1536", testing::SolidPng(2048, 1536, yellow), true, yellow},
        {"2049 pixels wide", testing::SolidPng(2049, 64, RGB(200, 0, 0)), false, 0},
        {"32 x 32", testing::SolidPng(32, 32, magenta), true, magenta},
        {"2049 pixels high", testing::SolidPng(64, 2049, RGB(200, 0, 0)), false, 0},
        {"not an image", Bytes("This is no picture.\r\n"), false, 0},
    };
    Launcher launcher(L"covers");
    ASSERT_TRUE(launcher.Start());
    const testing::ScratchDirectory files(L"covers-files");
    ModForm form(launcher.Picker());
    ASSERT_TRUE(form.IsOpen());
    ASSERT_TRUE(testing::WaitUntil(launcher.Process(), [&] { return form.HintPixels() > 0; }));
    EXPECT_EQ(form.ErrorPixels(), 0u);
    EXPECT_EQ(form.TextOf(kFormChooseImage), kChooseImageButton.Now());
    EXPECT_FALSE(form.IsEnabled(kFormRemoveCover));

    COLORREF shown = 0;
    int index = 0;
    for (const CoverFile& cover : covers) {
        SCOPED_TRACE(cover.label);
        ASSERT_FALSE(cover.bytes.empty());
        const Text path = files / (L"cover" + DecimalText(static_cast<unsigned>(index++)) + L".png");
        testing::WriteFileBytes(path, cover.bytes);
        ASSERT_TRUE(form.ChooseCover(path));
        if (cover.accepted) {
            EXPECT_TRUE(testing::WaitUntil(launcher.Process(),
                [&] { return form.TileCentre() == cover.colour && form.HintPixels() > 0; }))
                << "the tile shows the cover, and the hint is back";
            EXPECT_EQ(form.ErrorPixels(), 0u);
            shown = cover.colour;
        } else {
            EXPECT_TRUE(testing::WaitUntil(launcher.Process(), [&] { return form.ErrorPixels() > 0; }))
                << "the error replaces the hint";
            EXPECT_EQ(form.HintPixels(), 0u);
            EXPECT_EQ(form.TileCentre(), shown) << "the last good cover stays";
        }
        EXPECT_EQ(form.TextOf(kFormChooseImage), kChangeImageButton.Now());
        EXPECT_TRUE(form.IsEnabled(kFormRemoveCover));
    }

    // Remove, from the keyboard: Return presses the button that has the focus.
    ASSERT_TRUE(form.FocusOn(kFormRemoveCover));
    form.Key(VK_RETURN);
    EXPECT_TRUE(testing::WaitUntil(launcher.Process(), [&] { return !form.IsEnabled(kFormRemoveCover); }));
    EXPECT_TRUE(testing::WaitUntil(launcher.Process(), [&] { return form.HintPixels() > 0; }));
    EXPECT_EQ(form.ErrorPixels(), 0u);
    EXPECT_NE(form.TileCentre(), shown);
    EXPECT_EQ(form.TextOf(kFormChooseImage), kChooseImageButton.Now());

    // A good cover, a bad one after it: the good one goes to the tool.
    const Text good = files / L"final.png";
    testing::WriteFileBytes(good, testing::SolidPng(120, 90, cyan));
    ASSERT_TRUE(form.ChooseCover(good));
    ASSERT_TRUE(testing::WaitUntil(launcher.Process(), [&] { return form.TileCentre() == cyan; }));
    ASSERT_TRUE(form.ChooseCover(files / L"cover1.png"));
    ASSERT_TRUE(testing::WaitUntil(launcher.Process(), [&] { return form.ErrorPixels() > 0; }));
    form.Type(kFormName, L"Covered");
    form.Type(kFormAuthor, L"Ann");
    form.Press(kFormCreate);
    ASSERT_TRUE(form.WaitClosed());
    ASSERT_TRUE(launcher.WaitForStatus(ModCountStatus(launcher.Install().ModCount() + 1)));
    EXPECT_EQ(launcher.LastModCommand(),
        Joined(launcher.CommandStart({L"create"}),
            {L"--cover", good, L"--name", L"Covered", L"--author-name", L"Ann"}));
}

// A preview document that lists the given packages, for the stand-in tool to answer instead of
// its own catalogue.
Text ListingScenario(const SampleInstall& install, const std::vector<Text>& packages)
{
    Text mods;
    int number = 0;
    for (const Text& package : packages) {
        const Text digits = DecimalText(static_cast<unsigned>(++number));
        mods += (mods.empty() ? L"" : L",") + Text(L"{\"id\":\"mod.") + Text(32 - digits.size(), L'0') + digits +
            L"\",\"name\":\"Listed " + digits + L"\",\"modProject\":" + QuoteJsonText(package) + L"}";
    }
    const Text preview = L"{\"schemaVersion\":1,\"sdkFile\":" + QuoteJsonText(install.SdkPath()) +
        L",\"gameId\":\"skyhaven\",\"gameInfo\":{\"displayName\":\"Skyhaven\"},\"engineVersion\":\"5.6.0\"," +
        L"\"requiresEditorBuildBinding\":false,\"gameRoot\":" + QuoteJsonText(install.GameDirectory()) +
        L",\"mods\":[" + mods + L"]}";
    return L"{\"sdk-preview\":{\"stdout\":" + QuoteJsonText(preview) + L"}}";
}

// Selects a row by a click and gives the package the row stands for: the install's Mods are
// listed in their order. (The report is not written on a click, so it cannot tell.)
Text SelectRow(Launcher& launcher, int row)
{
    const HWND list = launcher.Picker().Control(kModList);
    launcher.Picker().ClickRow(row);
    const bool selected = testing::WaitUntil(launcher.Process(), [&] {
        return SendMessageW(list, LB_GETCURSEL, 0, 0) == row && IsWindowEnabled(launcher.Picker().Control(kDeleteMod));
    });
    return selected ? launcher.Install().ModPackage(static_cast<std::size_t>(row)) : Text();
}

TEST(ModFiles, DeleteModAsksWithNoAsDefaultAndUnderWineTheShellLeavesTheFile)
{
    Launcher launcher(L"delete-ask");
    ASSERT_TRUE(launcher.Start());
    const Text package = SelectRow(launcher, 1);
    ASSERT_FALSE(package.empty());
    const Text status = launcher.Picker().TextOf(kStatusLine);
    Text name;
    for (std::size_t index = 0; index < launcher.Install().ModCount(); ++index) {
        if (launcher.Install().ModPackage(index) == package) {
            name = launcher.Install().ModName(index);
        }
    }
    const std::size_t toolRuns = launcher.Install().ToolCalls().size();

    // Return on the question: No is the default, and nothing happens.
    launcher.Picker().Click(kDeleteMod);
    auto box = testing::WaitForMessageBox(launcher.Process().Id(), launcher.Process().Handle());
    ASSERT_TRUE(box);
    EXPECT_EQ(box->title, kRemoveCaption.Now());
    EXPECT_EQ(box->text, kRemoveQuestionStart.Now() + name + L"\n" + package + kRemoveQuestionEnd.Now());
    EXPECT_EQ(GetWindowLongW(GetDlgItem(box->window, IDNO), GWL_STYLE) & BS_TYPEMASK, BS_DEFPUSHBUTTON);
    EXPECT_EQ(GetWindowLongW(GetDlgItem(box->window, IDYES), GWL_STYLE) & BS_TYPEMASK, BS_PUSHBUTTON);
    HWND icon = nullptr;
    EnumChildWindows(
        box->window,
        [](HWND child, LPARAM found) -> BOOL {
            if ((GetWindowLongW(child, GWL_STYLE) & SS_TYPEMASK) == SS_ICON) {
                *reinterpret_cast<HWND*>(found) = child;
                return FALSE;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&icon));
    ASSERT_NE(icon, nullptr);
    EXPECT_TRUE(testing::WaitUntil(launcher.Process(), [&] { return testing::IconLikeness(icon, IDI_WARNING) == 1.0; }))
        << testing::IconLikeness(icon, IDI_WARNING);
    EXPECT_LT(testing::IconLikeness(icon, IDI_ERROR), 1.0);
    testing::PressKey(testing::FocusOf(box->window), VK_RETURN);
    ASSERT_TRUE(testing::WaitUntil(launcher.Process(), [&] { return IsWindow(box->window) == FALSE; }));
    launcher.Settle();
    EXPECT_EQ(launcher.Picker().TextOf(kStatusLine), status);
    EXPECT_EQ(launcher.Install().ToolCalls().size(), toolRuns);
    EXPECT_TRUE(testing::FileExists(package));

    // Yes: Wine's shell has no file operation to recycle with, so the file must stay where it was.
    launcher.Picker().Click(kDeleteMod);
    box = testing::WaitForMessageBox(launcher.Process().Id(), launcher.Process().Handle());
    ASSERT_TRUE(box);
    testing::PressMessageBoxButton(box->window, IDYES);
    ASSERT_TRUE(testing::WaitUntil(launcher.Process(), [&] { return IsWindow(box->window) == FALSE; }));
    Text caption;
    EXPECT_EQ(launcher.AnswerBox(&caption), kRemoveFailedMessage.Now());
    EXPECT_EQ(caption, kOperationFailedCaption.Now());
    EXPECT_TRUE(launcher.WaitForStatus(kRemoveFailedMessage.Now()));
    EXPECT_TRUE(testing::FileExists(package));
    EXPECT_EQ(launcher.Report(L"modCount"), DecimalText(launcher.Install().ModCount()));
    EXPECT_EQ(launcher.Report(L"selectedSource"), package);
    EXPECT_EQ(launcher.Install().ToolCalls().size(), toolRuns) << "the list was not read again";
}

TEST(ModFiles, DeleteModRefusesWhatIsNoLongerAPlainPackage)
{
    const testing::ScratchDirectory elsewhere(L"delete-refused");
    const Text capitalised = elsewhere / L"Capitalised.UMOD";
    const struct {
        const char* label;
        std::vector<Text> listed;  // empty: the install's own catalogue
        void (*change)(const Text& package);
        const LocalizedText& message;
    } cases[] = {
        {"the package went after the list was read", {}, [](const Text& package) { DeleteFileW(package.c_str()); },
            kRemoveRefusedMessage},
        {"a folder took the package's name", {},
            [](const Text& package) {
                DeleteFileW(package.c_str());
                CreateDirectoryW(package.c_str(), nullptr);
            },
            kRemoveRefusedMessage},
        // The catalogue keeps only ".umod" paths; one that stops being one when normalised is the
        // way a listed path without that ending reaches the removal.
        {"a listed path that is no .umod file once normalised",
            {elsewhere.Path() + Text(1, L'\0') + L"\\Hidden.umod"}, [](const Text&) {}, kRemoveRefusedMessage},
        {"a capitalised extension is a package, and goes to the shell", {capitalised}, [](const Text&) {},
            kRemoveFailedMessage},
    };
    testing::WriteFileText(capitalised, L"{}");
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.label);
        Launcher launcher(L"delete-refused");
        ASSERT_TRUE(entry.listed.empty() ? launcher.Start()
                                         : launcher.Start(ListingScenario(launcher.Install(), entry.listed), 1));
        const Text package = entry.listed.empty() ? SelectRow(launcher, 0) : launcher.Report(L"selectedSource");
        ASSERT_FALSE(package.empty());
        entry.change(package);
        const DWORD attributes = GetFileAttributesW(package.c_str());
        const std::size_t toolRuns = launcher.Install().ToolCalls().size();

        launcher.Picker().Click(kDeleteMod);
        const auto question = testing::WaitForMessageBox(launcher.Process().Id(), launcher.Process().Handle());
        ASSERT_TRUE(question) << "the question comes whatever the file has become";
        testing::PressMessageBoxButton(question->window, IDYES);
        ASSERT_TRUE(testing::WaitUntil(launcher.Process(), [&] { return IsWindow(question->window) == FALSE; }));
        EXPECT_EQ(launcher.AnswerBox(), entry.message.Now());
        EXPECT_TRUE(launcher.WaitForStatus(entry.message.Now()));
        EXPECT_EQ(GetFileAttributesW(package.c_str()), attributes) << "left as it was";
        EXPECT_EQ(launcher.Report(L"selectedSource"), package);
        EXPECT_EQ(launcher.Install().ToolCalls().size(), toolRuns) << "the list was not read again";
        EXPECT_TRUE(IsWindowEnabled(launcher.Picker().Control(kDeleteMod)));
    }
}

TEST(ModFiles, ImportAddsAPackageAndARefusalLeavesTheList)
{
    const struct {
        const char* label;
        const wchar_t* scenario;
        bool choose;       // false: the chooser is cancelled
        const wchar_t* toolWords;  // the refusal the box and status show; null for success
    } cases[] = {
        {"a new package", L"", true, nullptr},
        {"a package the tool refuses", LR"({"import-source":{"exitCode":1,"stderr":"KorvaneTool: the package is damaged"}})",
            true, L"KorvaneTool: the package is damaged"},
        {"a cancelled chooser", L"", false, nullptr},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.label);
        Launcher launcher(L"import");
        ASSERT_TRUE(launcher.Start(entry.scenario));
        const Text selected = SelectRow(launcher, 1);
        ASSERT_FALSE(selected.empty());
        const Text status = launcher.Picker().TextOf(kStatusLine);
        const auto before = PackagesIn(launcher.ModsFolder());
        const std::size_t toolRuns = launcher.Install().ToolCalls().size();
        const testing::ScratchDirectory elsewhere(L"import-source");
        const Text source = elsewhere / L"Imported Isles.umod";
        testing::WriteFileText(source,
            LR"({"format":"KorvaneModSource","id":"mod.0123456789abcdef0123456789abcdef","name":"Imported Isles",)"
            LR"("authorName":"Ann","version":"1.0.0","supportedGameVersions":["1.4"],"kind":"standard"})");

        launcher.Picker().Click(kImportMod);
        ASSERT_TRUE(testing::AnswerFileChooser(launcher.Process(), kImportTitle.Now(), entry.choose ? source : Text()));
        if (!entry.choose) {
            launcher.Settle();
            EXPECT_EQ(launcher.Picker().TextOf(kStatusLine), status);
            EXPECT_EQ(launcher.Install().ToolCalls().size(), toolRuns);
            EXPECT_EQ(SendMessageW(launcher.Picker().Control(kModList), LB_GETCURSEL, 0, 0), 1);
            continue;
        }
        if (entry.toolWords != nullptr) {
            Text caption;
            EXPECT_EQ(launcher.AnswerBox(&caption), entry.toolWords);
            EXPECT_EQ(caption, kOperationFailedCaption.Now());
            EXPECT_TRUE(launcher.WaitForStatus(entry.toolWords));
            EXPECT_EQ(launcher.Report(L"modCount"), DecimalText(launcher.Install().ModCount()));
            EXPECT_EQ(launcher.Report(L"selectedSource"), selected);
            EXPECT_EQ(PackagesIn(launcher.ModsFolder()), before);
        } else {
            ASSERT_TRUE(launcher.WaitForStatus(ModCountStatus(launcher.Install().ModCount() + 1)));
            const Text imported = JoinPath(launcher.ModsFolder(), L"Imported Isles.umod");
            EXPECT_TRUE(testing::FileExists(imported));
            EXPECT_EQ(launcher.Report(L"selectedSource"), imported);
        }
        EXPECT_EQ(launcher.LastModCommand(),
            Joined(launcher.CommandStart({L"import-source"}), {L"--mod-file", source}));
        EXPECT_TRUE(IsWindowEnabled(launcher.Picker().Control(kImportMod)));
    }
}

// What a failed or cancelled command leaves: the list, no package, a picker that works.
TEST(ModFiles, AFailedOrCancelledCommandLeavesNoPackageAndAUsablePicker)
{
    const testing::ScratchDirectory files(L"bad-input");
    const Text existing = files / L"Existing.umod";
    const Text noExtension = files / L"Lanterns";
    const Text belowAFile = existing + L"\\Inside\\Lanterns.umod";
    const Text vanishing = files / L"vanishing.png";
    testing::WriteFileText(existing, L"kept");
    const struct {
        const char* label;
        const wchar_t* scenario;
        bool import;
        const Text* target;  // typed into the save location
        bool vanishingCover;
        bool cancel;          // Cancel pressed while the tool runs
        Text expected;        // the status; a box shows it too unless cancelled
        Text named;           // what the tool's words must name, when they are its own
    } cases[] = {
        {"a target that exists", L"", false, &existing, false, false, {}, existing},
        {"a target without an extension", L"", false, &noExtension, false, false, {}, noExtension},
        {"a target whose folder cannot be made", L"", false, &belowAFile, false, false, {}, belowAFile},
        {"a cover that went after it was chosen", L"", false, nullptr, true, false, {}, vanishing},
        {"a tool that fails", LR"({"create":{"exitCode":3,"stderr":"KorvaneTool: disk full"}})", false, nullptr,
            false, false, L"KorvaneTool: disk full", {}},
        {"a create cancelled while the tool hangs", LR"({"create":{"hang":true}})", false, nullptr, false, true,
            kToolCancelledMessage.Now(), {}},
        {"an import cancelled while the tool hangs", LR"({"import-source":{"hang":true}})", true, nullptr, false, true,
            kToolCancelledMessage.Now(), {}},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.label);
        Launcher launcher(L"bad-input");
        ASSERT_TRUE(launcher.Start(entry.scenario));
        const Text selected = SelectRow(launcher, 1);
        ASSERT_FALSE(selected.empty());
        const auto before = PackagesIn(launcher.ModsFolder());
        const std::size_t toolRuns = launcher.Install().ToolCalls().size();

        if (entry.import) {
            launcher.Picker().Click(kImportMod);
            ASSERT_TRUE(testing::AnswerFileChooser(launcher.Process(), kImportTitle.Now(), launcher.Install().ModPackage(0)));
        } else {
            ModForm form(launcher.Picker());
            ASSERT_TRUE(form.IsOpen());
            form.Type(kFormName, L"Lanterns");
            form.Type(kFormAuthor, L"Ann");
            if (entry.target != nullptr) {
                form.Type(kFormTarget, *entry.target);
            }
            if (entry.vanishingCover) {
                testing::WriteFileBytes(vanishing, testing::SolidPng(16, 16, RGB(1, 2, 3)));
                ASSERT_TRUE(form.ChooseCover(vanishing));
                ASSERT_TRUE(testing::WaitUntil(launcher.Process(), [&] { return form.IsEnabled(kFormRemoveCover); }));
                ASSERT_TRUE(DeleteFileW(vanishing.c_str()));
            }
            form.Press(kFormCreate);
            ASSERT_TRUE(form.WaitClosed());
        }
        if (entry.cancel) {
            ASSERT_TRUE(testing::WaitUntil(launcher.Process(), [&] { return launcher.Install().ToolCalls().size() == toolRuns + 1; }));
            EXPECT_EQ(launcher.Picker().TextOf(kClose), kCancelButton.Now());
            launcher.Picker().Click(kClose);
            EXPECT_TRUE(launcher.WaitForStatus(entry.expected));
            // The report is written once the task's end is dealt with, after any box: no box stood.
            EXPECT_EQ(launcher.Report(L"status"), entry.expected);
        } else {
            Text caption;
            const Text words = launcher.AnswerBox(&caption);
            EXPECT_EQ(caption, kOperationFailedCaption.Now());
            if (entry.expected.empty()) {
                EXPECT_NE(words.find(entry.named), Text::npos) << TextToUtf8(words);
            } else {
                EXPECT_EQ(words, entry.expected);
            }
            EXPECT_TRUE(launcher.WaitForStatus(words));
        }
        EXPECT_EQ(PackagesIn(launcher.ModsFolder()), before) << "no package in the library";
        if (entry.target != nullptr && entry.target != &existing) {
            EXPECT_FALSE(testing::FileExists(*entry.target));
        }
        EXPECT_EQ(testing::ReadFileBytes(existing), "kept");
        EXPECT_EQ(launcher.Report(L"modCount"), DecimalText(launcher.Install().ModCount()));
        EXPECT_EQ(launcher.Report(L"selectedSource"), selected);
        EXPECT_TRUE(IsWindowEnabled(launcher.Picker().Control(kNewMod))) << "the picker takes commands again";
        testing::ExpectNoToolRunning(launcher.Install().ToolCalls());
    }
}

}  // namespace
}  // namespace korvane
