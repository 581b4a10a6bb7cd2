// The picker's language combo: a choice is saved into the editor's settings first and only then
// shown; a choice that cannot be saved leaves the language as it was and says so.
#include "PickerDriver.h"
#include "SampleInstall.h"
#include "UserSettingsFile.h"

#include "picker/PickerIds.h"
#include "picker/PickerTexts.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using testing::PickerProcess;
using testing::SampleInstall;

// Chooses the combo row shown as `displayName`, as a user's click on it would.
void ChooseLanguage(const PickerProcess& picker, TextView displayName)
{
    const HWND combo = picker.Control(kLanguageComboId);
    const LRESULT row = SendMessageW(combo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
        reinterpret_cast<LPARAM>(Text(displayName).c_str()));
    ASSERT_NE(row, CB_ERR) << TextToUtf8(displayName);
    SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(row), 0);
    SendMessageW(picker.Window(), WM_COMMAND, MAKEWPARAM(kLanguageComboId, CBN_SELCHANGE), reinterpret_cast<LPARAM>(combo));
}

Text SelectedLanguage(const PickerProcess& picker)
{
    const HWND combo = picker.Control(kLanguageComboId);
    const LRESULT row = SendMessageW(combo, CB_GETCURSEL, 0, 0);
    wchar_t name[128] = {};
    if (row == CB_ERR || SendMessageW(combo, CB_GETLBTEXTLEN, static_cast<WPARAM>(row), 0) >= 128) {
        return {};
    }
    SendMessageW(combo, CB_GETLBTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(name));
    return name;
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
    EXPECT_EQ(picker.TextOf(kStartEditingId), kStartEditingButton.In(false));

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
    EXPECT_EQ(SelectedLanguage(picker), L"\u7B80\u4F53\u4E2D\u6587");
    RemoveDirectoryW(settings.Path().c_str());

    PostMessageW(picker.Window(), WM_CLOSE, 0, 0);
    EXPECT_EQ(picker.WaitForExit(), 0u);
}

}  // namespace
}  // namespace korvane
