// The Interactive mode from end to end: the real launcher started with no arguments in a sample
// install, its picker driven as an author drives it, the stand-in tool and editor playing theirs.
#include "PickerDriver.h"
#include "SampleInstall.h"

#include "foundation/Paths.h"
#include "host/SdkDiscovery.h"
#include "picker/PickerIds.h"
#include "picker/PickerTexts.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using testing::PickerProcess;
using testing::SampleInstall;


Text ModCountStatus(const SampleInstall& install)
{
    return DecimalText(install.ModCount()) + L" Mods";
}

TEST(Interactive, SearchSelectAndStartEditingEndsWithTheEditorsExitCode)
{
    SampleInstall install(L"interactive");
    install.SetEditorScenario(LR"({"mode":"normal","runMs":400,"exitCode":42,"shaderLines":0})");
    testing::ScratchDirectory reports(L"interactive-report");
    PickerProcess picker(install.Launcher(), {}, reports.Path());
    ASSERT_TRUE(picker.WaitForWindow());
    ASSERT_TRUE(picker.WaitForStatus(ModCountStatus(install))) << TextToUtf8(picker.TextOf(kStatusLineId));
    EXPECT_EQ(picker.TextOf(kSdkEditId), install.SdkPath()) << "the host's SDK is loaded";

    // The search narrows the list to the one Mod of that name, in any case of A to Z.
    Text query = install.ModName(3);
    CharUpperBuffW(query.data(), static_cast<DWORD>(query.size()));
    picker.Type(kSearchEditId, query);
    ASSERT_TRUE(testing::WaitUntil(picker.Process(),
        [&] { return SendMessageW(picker.Control(kModListId), LB_GETCOUNT, 0, 0) == 1; }));
    picker.ClickRow(0);
    ASSERT_TRUE(testing::WaitUntil(picker.Process(), [&] { return IsWindowEnabled(picker.Control(kStartEditingId)); }));
    picker.Click(kStartEditingId);

    // The picker steps aside for the progress window, and then the editor stands.
    EXPECT_TRUE(testing::WaitUntil(picker.Process(), [&] { return !IsWindowVisible(picker.Window()); }));
    EXPECT_TRUE(testing::WaitUntil(picker.Process(),
        [&] { return testing::FindVisibleWindow(picker.Process().Id(), L"KorvaneStartupProgress") != nullptr; }));
    EXPECT_EQ(picker.WaitForExit(), 42u);
    const auto records = install.EditorRecords();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_NE(FindJsonMember(records[0], L"commandLine").text.find(
                  QuoteCommandArgument(L"-KorvaneSelectedMod=" + install.ModId(3))),
        Text::npos);
}

TEST(Interactive, AFailedLaunchBringsThePickerBackWithItsMessage)
{
    SampleInstall install(L"interactive-failed");
    install.SetEditorScenario(LR"({"mode":"exitBeforeWindow","exitCode":3})");
    testing::ScratchDirectory reports(L"interactive-failed-report");
    PickerProcess picker(install.Launcher(), {}, reports.Path());
    ASSERT_TRUE(picker.WaitForWindow());
    ASSERT_TRUE(picker.WaitForStatus(ModCountStatus(install)));
    picker.ClickRow(1, true);  // a double-click starts editing

    const auto box = picker.AnswerBox();
    const Text& message = box.text;
    EXPECT_EQ(box.title, L"Korvane operation failed");
    EXPECT_EQ(message.rfind(L"Editor startup failed (exit code 3). Check the startup log in Saved/Logs.\n", 0), 0u)
        << TextToUtf8(message);
    ASSERT_TRUE(testing::WaitUntil(picker.Process(), [&] { return IsWindowVisible(picker.Window()) != FALSE; }));
    EXPECT_TRUE(picker.WaitForStatus(message));
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
    EXPECT_EQ(testing::ReportStatus(picker.Report()), L"Cancelling…") << "the report of the moment it closed";
}

TEST(Interactive, AToolAnswerThatIsNoPreviewGivesTheOneMessage)
{
    SampleInstall install(L"interactive-schema");
    install.SetToolScenario(LR"({"sdk-preview":{"stdout":"[]"}})");
    testing::ScratchDirectory reports(L"interactive-schema-report");
    PickerProcess picker(install.Launcher(), {}, reports.Path());
    ASSERT_TRUE(picker.WaitForWindow());
    const auto box = picker.AnswerBox();
    EXPECT_EQ(box.text, L"Could not read the tool JSON result.");
    EXPECT_EQ(box.title, L"Korvane operation failed");
    EXPECT_TRUE(picker.WaitForStatus(L"Could not read the tool JSON result."));
    EXPECT_EQ(FindJsonMember(picker.Report(), L"modCount").text, L"0");
    PostMessageW(picker.Window(), WM_CLOSE, 0, 0);
    EXPECT_EQ(picker.WaitForExit(), 0u);
}

TEST(Interactive, AnEditedPathMakesTheListStaleAndARefreshThatSettlesNoSdkSaysSoInTheStatusLine)
{
    SampleInstall install(L"interactive-stale");
    testing::ScratchDirectory reports(L"interactive-stale-report");
    PickerProcess picker(install.Launcher(), {}, reports.Path());
    ASSERT_TRUE(picker.WaitForWindow());
    ASSERT_TRUE(picker.WaitForStatus(ModCountStatus(install)));
    picker.ClickRow(0);
    ASSERT_TRUE(testing::WaitUntil(picker.Process(), [&] { return IsWindowEnabled(picker.Control(kStartEditingId)); }));

    // The rows of the last SDK stay in view, but nothing may act on them.
    picker.Type(kGameFolderEditId, L"");
    picker.Type(kSdkEditId, L"");
    EXPECT_EQ(picker.TextOf(kStatusLineId), kApplySelectionStatus.In(false));
    for (const int command : {kStartEditingId, kDeleteModId, kNewModId, kImportModId}) {
        EXPECT_FALSE(IsWindowEnabled(picker.Control(command))) << command;
    }
    EXPECT_TRUE(IsWindowEnabled(picker.Control(kRefreshId)));
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

}  // namespace
}  // namespace korvane
