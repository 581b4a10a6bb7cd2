// The real launcher chooses its language at start from the editor's saved setting. The
// choice shows in the words and title of its first message box: a ".uproject" argument ends
// the run with a box before anything else happens.
#include "LanguageTestFiles.h"
#include "MessageBoxes.h"
#include "UserSettingsFile.h"

#include "foundation/KnownFolders.h"
#include "launch/LaunchErrors.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

namespace korvane {
namespace {

using testing::UserSettingsFile;

// A launcher install with the editor's files at its root or in `editorFolder` below it.
struct LanguageInstall : testing::LauncherInstall {
    LanguageInstall(TextView label, TextView version, std::initializer_list<const wchar_t*> cultures,
        TextView editorFolder = {})
        : LauncherInstall(label)
    {
        testing::MakeEditorInstall(editorFolder.empty() ? Root() : JoinPath(Root(), editorFolder), version, cultures);
    }

    // Runs the launcher with `arguments` and a project file behind them, and checks the box it shows.
    void ExpectBox(std::vector<Text> arguments, bool chinese, const char* why) const
    {
        arguments.push_back(L"Game.uproject");
        const testing::RunEnd end = testing::WaitAnsweringBox(Start(arguments));
        ASSERT_TRUE(end.box.has_value()) << "the launcher ended without a box: " << why;
        EXPECT_EQ(end.exitCode, 3u);
        // The wording is checked with every other text; here, the language it comes in.
        EXPECT_EQ(end.box->title, kLaunchErrorTitle.In(chinese)) << why;
        EXPECT_EQ(end.box->text, kProjectFileRemovedMessage.In(chinese)) << why;
    }
};

TEST(LauncherLanguage, SavedSettingOfTheEditorsVersionChoosesAndThePreviewOptionOverridesWithoutSaving)
{
    const UserSettingsFile settings(L"5.1");
    const LanguageInstall install(L"language-saved", L"5.1", {L"en", L"ko", L"zh-Hans"});
    const Bytes chinese = "[Internationalization]\nLanguage=zh-Hans\n";
    const Bytes english = "[Internationalization]\r\nLanguage=en\r\n";
    const struct {
        std::optional<Bytes> saved;
        const wchar_t* option;
        bool chinese;
        const char* why;
    } runs[] = {
        {std::nullopt, nullptr, false, "a first start is in English"},
        {"\xFF\xFE" + testing::Utf16Bytes(u"[Internationalization]\r\nLanguage=zh-Hans\r\n"), nullptr, true, "UTF-16"},
        {"[/Script/UnrealEd.EditorSettings]\nbCopyStarterContentPreference=True\n[INTERNATIONALIZATION]\nLanguage=\n"
         "Culture = \"zh_CN\"\n", nullptr, true, "a Simplified Chinese culture maps to zh-Hans"},
        {chinese, L"-KorvanePickerPreviewLanguage=ko", false, "the option wins over the saved language"},
        {english, L"-KorvanePickerPreviewLanguage=zh_CN", true, "an underscore regional code"},
    };
    for (const auto& run : runs) {
        settings.Set(run.saved);
        install.ExpectBox(run.option ? std::vector<Text>{run.option} : std::vector<Text>{}, run.chinese, run.why);
        EXPECT_EQ(settings.Get(), run.saved) << "the launcher saves nothing at start: " << run.why;
    }

    // The editor in a version folder below the launcher: the settings of that version count.
    const UserSettingsFile versioned(L"5.4");
    const LanguageInstall below(L"language-versioned", L"5.4", {L"en", L"zh-Hans"}, L"KorvaneEditor\\5.4");
    versioned.Set(chinese);
    below.ExpectBox({}, true, "the launcher finds the editor below it and reads its version's settings");
}

}  // namespace
}  // namespace korvane
