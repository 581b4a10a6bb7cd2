// The real launcher chooses its language at start from the editor's saved setting. The
// choice shows in the words of its first message box: a ".uproject" argument ends the run
// with a box before anything else happens.
#include "LanguageTestFiles.h"
#include "MessageBoxes.h"
#include "UserSettingsFile.h"

#include "launch/LaunchErrors.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(LauncherLanguage, TheSavedSettingChoosesAndThePreviewOptionOverridesWithoutSaving)
{
    const testing::UserSettingsFile settings(L"5.1");
    const testing::LauncherInstall install(L"language-saved");
    // The editor in a version folder below the launcher: the settings of that version count.
    testing::MakeEditorInstall(JoinPath(install.Root(), L"KorvaneEditor\\5.1"), L"5.1", {L"en", L"ko", L"zh-Hans"});
    const Bytes saved = "\xFF\xFE" + testing::Utf16Bytes(u"[Internationalization]\r\nLanguage=zh-Hans\r\n");
    settings.Set(saved);
    const std::pair<std::vector<Text>, bool> runs[] = {
        {{L"Game.uproject"}, true},
        {{L"-KorvanePickerPreviewLanguage=ko", L"Game.uproject"}, false},
    };
    for (const auto& [arguments, chinese] : runs) {
        const testing::RunEnd end = testing::WaitAnsweringBox(install.Start(arguments));
        ASSERT_TRUE(end.box.has_value()) << "the launcher ended without a box";
        // The wording is checked with every other text; here, the language it comes in.
        EXPECT_EQ(end.box->text, kProjectFileRemovedMessage.In(chinese)) << TextToUtf8(arguments.front());
        EXPECT_EQ(settings.Get(), saved) << "the launcher saves nothing at start";
    }
}

}  // namespace
}  // namespace korvane
