// The Mod file commands through a real launcher's window: New Mod and its form, the cover
// choice, Import and Delete, with the shell's choosers answered as a user answers them and the
// stand-in tool doing the work.
#include "ModFormDriver.h"
#include "PickerDriver.h"
#include "SampleInstall.h"
#include "ToolCalls.h"

#include "foundation/Paths.h"
#include "picker/PickerTexts.h"

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

// A launcher on a sample install of its own, its Mod list loaded.
class Launcher {
public:
    explicit Launcher(TextView label, TextView toolScenario = {}) : install_(label), reports_(Text(label) + L"-report")
    {
        install_.SetToolScenario(toolScenario);
        picker_.emplace(install_.Launcher(), std::vector<Text>{}, reports_.Path());
    }

    const SampleInstall& Install() const { return install_; }
    PickerProcess& Picker() { return *picker_; }
    testing::ChildProcess& Process() { return picker_->Process(); }
    Text Report(TextView key) const { return FindJsonMember(picker_->Report(), key).text; }
    Text ModsFolder() const { return ParentPath(install_.ModPackage(0)); }

    // Waits for the window and the first list.
    bool Loaded()
    {
        return picker_->WaitForWindow() &&
            testing::WaitUntil(Process(), [&] { return Report(L"modCount") == DecimalText(install_.ModCount()); });
    }

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
        ASSERT_TRUE(launcher.Loaded());
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
        ASSERT_TRUE(launcher.Picker().WaitForStatus(ModCountStatus(launcher.Install().ModCount() + 1)))
            << TextToUtf8(launcher.Picker().TextOf(kStatusLine));

        std::vector<Text> options{L"--name", entry.toolName, L"--author-name", entry.toolAuthor};
        if (entry.chooseTarget) {
            options.insert(options.end(), {L"--output-file", target});
        }
        EXPECT_EQ(launcher.LastModCommand(), Joined(launcher.CommandStart(entry.command), options));
        const auto after = PackagesIn(launcher.ModsFolder());
        const Text created = entry.chooseTarget ? target : after.empty() ? Text() : *after.rbegin();
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
    ASSERT_TRUE(launcher.Loaded());
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
    ASSERT_TRUE(launcher.Loaded());
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
    ASSERT_TRUE(launcher.Loaded());
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
    ASSERT_TRUE(launcher.Picker().WaitForStatus(ModCountStatus(launcher.Install().ModCount() + 1)));
    EXPECT_EQ(launcher.LastModCommand(),
        Joined(launcher.CommandStart({L"create"}),
            {L"--cover", good, L"--name", L"Covered", L"--author-name", L"Ann"}));
}

}  // namespace
}  // namespace korvane
