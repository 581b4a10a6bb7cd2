// The stand-in editor is fit for the launcher's tests: run for real in a sample install, it
// records its run, writes its log, shows its main window and ends with its code when closed.
#include "MessageBoxes.h"
#include "SampleInstall.h"
#include "TestSupport.h"

#include "foundation/Json.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(EditorStandin, RecordsItsRunWritesItsLogShowsItsWindowAndEndsWithItsCode)
{
    testing::SampleInstall install(L"editor-smoke");
    testing::ScratchDirectory scratch(L"editor-smoke-files");
    install.SetEditorScenario(LR"({"splashMs":0,"logPaceMs":0,"exitCode":5})");
    const Text log = scratch / L"Editor.log";
    const std::vector<Text> arguments{install.Workspace(0) + L"\\KorvaneSDK.uproject", L"-ABSLOG=" + log};
    testing::ProcessOptions options;
    options.currentDirectory = install.EditorRoot();
    options.hidden = false;
    testing::ChildProcess editor = testing::ChildProcess::Start(install.EditorExe(), arguments, options);
    const HWND window = testing::WaitForVisibleWindow(editor.Id(), editor.Handle(), L"UnrealWindow");
    ASSERT_NE(window, nullptr) << "the editor ended without its main window";
    EXPECT_FALSE(editor.Wait(300)) << "it runs until its window is closed";
    PostMessageW(window, WM_CLOSE, 0, 0);
    ASSERT_TRUE(editor.Wait(30000));
    EXPECT_EQ(editor.ExitCode(), 5u);

    const Bytes written = testing::ReadFileBytes(log);
    for (const char* marker : {"LogEngine: Initializing Engine", "(Engine Initialization) Total time"}) {
        EXPECT_NE(written.find(marker), Bytes::npos) << marker;
    }
    const std::vector<JsonValue> records = install.EditorRecords();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(FindJsonMember(records[0], L"commandLine").text, testing::BuildCommandLine(install.EditorExe(), arguments));
    EXPECT_TRUE(EqualsIgnoringCase(FindJsonMember(records[0], L"cwd").text, install.EditorRoot()));
    EXPECT_EQ(FindJsonMember(records[0], L"pid").text, DecimalText(editor.Id()));
}

}  // namespace
}  // namespace korvane
