// The Interactive mode from end to end: the real launcher started with no arguments in a sample
// install, its picker driven as an author drives it, the stand-in tool and editor playing theirs.
// The language combo: a choice is saved into the editor's settings first and only then shown; a
// choice that cannot be saved leaves the language as it was and says so.
#include "PickerDriver.h"
#include "SampleInstall.h"
#include "UserSettingsFile.h"

#include "foundation/Paths.h"
#include "host/SdkDiscovery.h"
#include "picker/Catalogue.h"
#include "picker/PickerIds.h"
#include "picker/PickerTexts.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using testing::PickerProcess;
using testing::SampleInstall;

// Once the progress window shows the launch, the picker has stepped aside: hidden, not gone.
bool HiddenWhileTheProgressWindowShows(PickerProcess& picker)
{
    const bool progress = testing::WaitUntil(picker.Process(),
        [&] { return testing::FindVisibleWindow(picker.Process().Id(), L"KorvaneStartupProgress") != nullptr; });
    return progress && IsWindow(picker.Window()) && !IsWindowVisible(picker.Window());
}

TEST(Interactive, SearchSelectAndStartEditingEndsWithTheEditorsExitCode)
{
    SampleInstall install(L"interactive");
    install.SetEditorScenario(LR"({"mode":"normal","runMs":400,"exitCode":42,"shaderLines":0})");
    testing::ScratchDirectory reports(L"interactive-report");
    PickerProcess picker(install.Launcher(), {}, reports.Path());
    ASSERT_TRUE(picker.WaitForWindow());
    ASSERT_TRUE(picker.WaitForStatus(ModCountText(install.ModCount()))) << TextToUtf8(picker.TextOf(kStatusLineId));
    EXPECT_EQ(picker.TextOf(kSdkEditId), install.SdkPath()) << "the host's SDK is loaded";

    // The search narrows the list to the one Mod of that name, and the report follows it.
    picker.Type(kSearchEditId, install.ModName(3));
    ASSERT_TRUE(testing::WaitUntil(picker.Process(),
        [&] { return SendMessageW(picker.Control(kModListId), LB_GETCOUNT, 0, 0) == 1; }));
    EXPECT_EQ(FindJsonMember(picker.Report(), L"search").text, install.ModName(3));
    EXPECT_EQ(FindJsonMember(picker.Report(), L"visibleModCount").text, L"1");
    picker.ClickRow(0);
    ASSERT_TRUE(testing::WaitUntil(picker.Process(), [&] { return IsWindowEnabled(picker.Control(kStartEditingId)); }));

    // Return in the search field starts nothing; in the list it is Start editing.
    const HWND search = picker.Control(kSearchEditId);
    PostMessageW(search, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(4, 4));
    PostMessageW(search, WM_LBUTTONUP, 0, MAKELPARAM(4, 4));
    PostMessageW(search, WM_KEYDOWN, VK_RETURN, 0);
    ASSERT_TRUE(picker.Drain());
    EXPECT_TRUE(IsWindowVisible(picker.Window())) << "Return in the search field started a launch";
    picker.ClickRow(0);
    PostMessageW(picker.Control(kModListId), WM_KEYDOWN, VK_RETURN, 0);

    // The picker steps aside for the progress window, and then the editor stands. Keys and
    // clicks meanwhile start nothing more.
    EXPECT_TRUE(HiddenWhileTheProgressWindowShows(picker));
    PostMessageW(picker.Control(kModListId), WM_KEYDOWN, VK_RETURN, 0);
    picker.Click(kStartEditingId);
    EXPECT_EQ(picker.WaitForExit(), 42u);
    const auto records = install.EditorRecords();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_NE(FindJsonMember(records[0], L"commandLine").text.find(
                  QuoteCommandArgument(L"-KorvaneSelectedMod=" + install.ModId(3))),
        Text::npos);
    EXPECT_EQ(install.ToolCalls().size(), 2u) << "the preview, then one preparation";
    const JsonValue report = picker.Report();
    EXPECT_EQ(FindJsonMember(report, L"childStarted").text, L"true");
    EXPECT_EQ(FindJsonMember(report, L"windowVisible").text, L"false");
}

TEST(Interactive, AFailedLaunchBringsThePickerBackWithItsMessage)
{
    SampleInstall install(L"interactive-failed");
    // Ended before any window, even with exit code 0, the start failed.
    install.SetEditorScenario(LR"({"mode":"exitBeforeWindow","exitCode":0})");
    testing::ScratchDirectory reports(L"interactive-failed-report");
    PickerProcess picker(install.Launcher(), {}, reports.Path());
    ASSERT_TRUE(picker.WaitForWindow());
    ASSERT_TRUE(picker.WaitForStatus(ModCountText(install.ModCount())));
    picker.ClickRow(1, true);  // a double-click starts editing
    EXPECT_TRUE(HiddenWhileTheProgressWindowShows(picker));

    const auto box = picker.AnswerBox();
    EXPECT_EQ(box.title, L"Korvane operation failed");
    EXPECT_EQ(box.text.rfind(L"Editor startup failed (exit code 0). Check the startup log in Saved/Logs.\n", 0), 0u)
        << TextToUtf8(box.text);
    ASSERT_TRUE(testing::WaitUntil(picker.Process(), [&] { return IsWindowVisible(picker.Window()) != FALSE; }));
    EXPECT_TRUE(picker.WaitForStatus(box.text));
    EXPECT_TRUE(testing::WaitUntil(picker.Process(), [&] { return IsWindowEnabled(picker.Control(kStartEditingId)) != FALSE; }))
        << "the picker is usable again";
    EXPECT_EQ(picker.TextOf(kSdkEditId), install.SdkPath()) << "the SDK, not the workspace";

    PostMessageW(picker.Window(), WM_CLOSE, 0, 0);
    EXPECT_EQ(picker.WaitForExit(), 0u);
}

TEST(Interactive, ClosingDuringALoadCancelsItAndClosesWhenItEnds)
{
    SampleInstall install(L"interactive-closing");
    install.SetToolScenario(LR"({"sdk-preview":{"hang":true}})");
    testing::ScratchDirectory reports(L"interactive-closing-report");
    PickerProcess picker(install.Launcher(), {}, reports.Path());
    ASSERT_TRUE(picker.WaitForWindow());
    ASSERT_TRUE(testing::WaitUntil(picker.Process(), [&] { return install.ToolCalls().size() == 1; }));
    EXPECT_EQ(picker.TextOf(kStatusLineId), L"Reading SDK…");

    // A second task is dropped without a trace, whether asked for by message or by command.
    PostMessageW(picker.Window(), WM_PICKER_INITIAL_LOAD, 0, 0);
    picker.Click(kRefreshId);
    PostMessageW(picker.Window(), WM_CLOSE, 0, 0);
    EXPECT_EQ(picker.WaitForExit(), 0u) << "closed once the cancelled load ended";
    EXPECT_EQ(install.ToolCalls().size(), 1u);
    EXPECT_EQ(FindJsonMember(picker.Report(), L"status").text, L"Cancelling…") << "the report of the moment it closed";
}

TEST(Interactive, AnEditedPathMakesTheListStaleAndARefreshThatSettlesNoSdkSaysSoInTheStatusLine)
{
    SampleInstall install(L"interactive-stale");
    testing::ScratchDirectory reports(L"interactive-stale-report");
    PickerProcess picker(install.Launcher(), {}, reports.Path());
    ASSERT_TRUE(picker.WaitForWindow());
    ASSERT_TRUE(picker.WaitForStatus(ModCountText(install.ModCount())));
    picker.ClickRow(0);
    ASSERT_TRUE(testing::WaitUntil(picker.Process(), [&] { return IsWindowEnabled(picker.Control(kStartEditingId)); }));

    // The rows of the last SDK stay in view, but nothing may act on them.
    picker.Type(kGameFolderEditId, L"");
    picker.Type(kSdkEditId, L"");
    EXPECT_EQ(picker.TextOf(kStatusLineId), kApplySelectionStatus.In(false));
    for (const int command : {kStartEditingId, kDeleteModId, kNewModId, kImportModId}) {
        EXPECT_FALSE(IsWindowEnabled(picker.Control(command))) << command;
    }
    EXPECT_EQ(SendMessageW(picker.Control(kModListId), LB_GETCOUNT, 0, 0), static_cast<LRESULT>(install.ModCount()));

    picker.Click(kRefreshId);
    EXPECT_TRUE(testing::WaitUntil(
        picker.Process(), [&] { return picker.TextOf(kStatusLineId) == kChooseSdkPrompt.In(false); }, 10000))
        << "nothing to load: the prompt";
    picker.Type(kSdkEditId, install.SdkPath() + L".gone");
    picker.Click(kRefreshId);
    EXPECT_TRUE(testing::WaitUntil(
        picker.Process(), [&] { return picker.TextOf(kStatusLineId) == kNoSdkSelectedMessage.In(false); }, 10000))
        << TextToUtf8(picker.TextOf(kStatusLineId));
    EXPECT_FALSE(testing::FindVisibleWindow(picker.Process().Id(), L"#32770")) << "told in the status line, no box";
    EXPECT_EQ(install.ToolCalls().size(), 1u) << "no load without an SDK";
    PostMessageW(picker.Window(), WM_CLOSE, 0, 0);
    EXPECT_EQ(picker.WaitForExit(), 0u);
}

// The combo row shown as `displayName`.
LRESULT LanguageRow(const PickerProcess& picker, TextView displayName)
{
    return SendMessageW(picker.Control(kLanguageComboId), CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
        reinterpret_cast<LPARAM>(Text(displayName).c_str()));
}

// Chooses the combo row shown as `displayName`, as a user's click on it would.
void ChooseLanguage(const PickerProcess& picker, TextView displayName)
{
    const HWND combo = picker.Control(kLanguageComboId);
    const LRESULT row = LanguageRow(picker, displayName);
    ASSERT_NE(row, CB_ERR) << TextToUtf8(displayName);
    SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(row), 0);
    SendMessageW(picker.Window(), WM_COMMAND, MAKEWPARAM(kLanguageComboId, CBN_SELCHANGE), reinterpret_cast<LPARAM>(combo));
}

TEST(PickerLanguage, AChoiceIsSavedBeforeItShowsAndAnUnsavedOneIsTakenBack)
{
    SampleInstall install(L"picker-language", L"5.3");
    const testing::UserSettingsFile settings(L"5.3");
    settings.Set(std::nullopt);
    testing::ScratchDirectory reports(L"picker-language-report");
    PickerProcess picker(install.Launcher(), {}, reports.Path());
    ASSERT_TRUE(picker.WaitForWindow());
    ASSERT_TRUE(picker.WaitForStatus(DecimalText(install.ModCount()) + L" Mods"));

    ChooseLanguage(picker, L"\u7B80\u4F53\u4E2D\u6587");
    EXPECT_EQ(picker.TextOf(kStartEditingId), kStartEditingButton.In(true));
    const std::optional<Bytes> saved = settings.Get();
    ASSERT_TRUE(saved.has_value()) << "saved through the editor's own settings file";
    EXPECT_NE(saved->find("zh-Hans"), Bytes::npos);

    // A folder where the file should be: the save fails, so Chinese stays, on screen and in the combo.
    settings.Set(std::nullopt);
    testing::MakeDirectories(settings.Path());
    ChooseLanguage(picker, L"English");
    EXPECT_EQ(picker.TextOf(kStatusLineId), kLanguageNotSavedStatus.In(true));
    EXPECT_EQ(picker.TextOf(kStartEditingId), kStartEditingButton.In(true));
    const LRESULT chinese = LanguageRow(picker, L"\u7B80\u4F53\u4E2D\u6587");
    EXPECT_EQ(SendMessageW(picker.Control(kLanguageComboId), CB_GETCURSEL, 0, 0), chinese) << "the combo shows it too";
    RemoveDirectoryW(settings.Path().c_str());

    // An empty file is no settings file the editor wrote: it is left as it is, and so is Chinese.
    settings.Set(Bytes());
    ChooseLanguage(picker, L"English");
    EXPECT_EQ(picker.TextOf(kStartEditingId), kStartEditingButton.In(true));
    EXPECT_EQ(settings.Get(), Bytes());

    PostMessageW(picker.Window(), WM_CLOSE, 0, 0);
    EXPECT_EQ(picker.WaitForExit(), 0u);
}

}  // namespace
}  // namespace korvane
