// The real launcher chooses its language at start from the editor's saved setting. The
// choice shows in the words and title of its first message box: a ".uproject" argument ends
// the run with a box before anything else happens.
#include "InstallTree.h"
#include "MessageBoxes.h"
#include "TestSupport.h"

#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using testing::ScratchDirectory;

constexpr wchar_t kEnglishTitle[] = L"Korvane launch error";
constexpr wchar_t kEnglishText[] = L"KV4300: Select a .kvsdk file. UE project SDK loading has been removed.";
constexpr wchar_t kChineseTitle[] = L"Korvane \x542F\x52A8\x9519\x8BEF";
constexpr wchar_t kChineseText[] = L"KV4300: \x8BF7\x9009\x62E9 .kvsdk \x6587\x4EF6\x3002\x5DF2\x79FB\x9664 UE project SDK \x52A0\x8F7D\x3002";

// The per-user settings file of one engine version. Each test owns one version, since the
// file lies in the profile that every test program shares. Whatever was there before comes
// back when the object goes, and folders it had to make go again.
class UserSettingsFile {
public:
    explicit UserSettingsFile(TextView version)
    {
        Text folder = LocalAppDataFolder();
        for (const Text& part :
            {Text(L"UnrealEngine"), Text(version), Text(L"Saved"), Text(L"Config"), Text(L"WindowsEditor")}) {
            folder = JoinPath(folder, part);
            if (!IsDirectory(folder)) {
                madeFolders_.push_back(folder);
            }
        }
        path_ = JoinPath(folder, L"EditorSettings.ini");
        existed_ = testing::FileExists(path_);
        if (existed_) {
            before_ = testing::ReadFileBytes(path_);
        }
    }
    ~UserSettingsFile()
    {
        if (existed_) {
            testing::WriteFileBytes(path_, before_);
            return;
        }
        DeleteFileW(path_.c_str());
        for (auto folder = madeFolders_.rbegin(); folder != madeFolders_.rend(); ++folder) {
            RemoveDirectoryW(folder->c_str());
        }
    }
    UserSettingsFile(const UserSettingsFile&) = delete;
    UserSettingsFile& operator=(const UserSettingsFile&) = delete;

    void Write(BytesView bytes) const { testing::WriteFileBytes(path_, bytes); }
    void Remove() const { DeleteFileW(path_.c_str()); }
    Bytes Read() const { return testing::ReadFileBytes(path_); }

private:
    Text path_;
    bool existed_ = false;
    Bytes before_;
    std::vector<Text> madeFolders_;
};

// Launcher and editor side by side, or the editor in `editorFolder` below the launcher.
class LanguageInstall {
public:
    LanguageInstall(TextView label, TextView version, std::initializer_list<const wchar_t*> cultures,
        TextView editorFolder = {})
        : scratch_(label), root_(scratch_ / L"install")
    {
        testing::CopyFileTo(testing::BuiltLauncherPath(), JoinPath(root_, L"KorvaneEditor.exe"));
        testing::WriteFileBytes(JoinPath(root_, L"Engine\\Binaries\\Win64\\UnrealEditor.exe"), "MZ");
        testing::MakeEditorInstall(editorFolder.empty() ? root_ : JoinPath(root_, editorFolder), version, cultures);
    }

    // Runs the launcher with `arguments` and a project file behind them; gives the box.
    testing::MessageBoxSeen BoxOfRun(std::vector<Text> arguments) const
    {
        arguments.push_back(L"Game.uproject");
        testing::ProcessOptions options;
        options.currentDirectory = root_;
        testing::ChildProcess child =
            testing::ChildProcess::Start(JoinPath(root_, L"KorvaneEditor.exe"), arguments, options);
        const auto box = testing::WaitForMessageBox(child.Id(), child.Handle());
        EXPECT_TRUE(box.has_value()) << "the launcher ended without a box";
        if (!box) {
            return {};
        }
        testing::PressMessageBoxButton(box->window, IDOK);
        EXPECT_TRUE(child.Wait(30000));
        EXPECT_EQ(child.ExitCode(), 3u);
        return *box;
    }

private:
    ScratchDirectory scratch_;
    Text root_;
};

Bytes Utf16File(std::u16string_view text)
{
    Bytes bytes = "\xFF\xFE";
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    return bytes;
}

void ExpectEnglish(const testing::MessageBoxSeen& box, const char* why)
{
    EXPECT_EQ(box.title, kEnglishTitle) << why;
    EXPECT_EQ(box.text, kEnglishText) << why;
}

void ExpectChinese(const testing::MessageBoxSeen& box, const char* why)
{
    EXPECT_EQ(box.title, kChineseTitle) << why;
    EXPECT_EQ(box.text, kChineseText) << why;
}

TEST(LauncherLanguage, SavedSettingChoosesTheLanguageAtStart)
{
    UserSettingsFile settings(L"5.1");
    const LanguageInstall install(L"language-saved", L"5.1", {L"en", L"zh-Hans"});

    settings.Remove();
    ExpectEnglish(install.BoxOfRun({}), "a first start is in English");

    settings.Write(Utf16File(u"[Internationalization]\r\nLanguage=zh-Hans\r\n"));
    ExpectChinese(install.BoxOfRun({}), "saved zh-Hans in UTF-16");

    settings.Write("[/Script/UnrealEd.EditorSettings]\nbCopyStarterContentPreference=True\n"
                   "[INTERNATIONALIZATION]\nLanguage=\nCulture = \"zh_CN\"\n");
    ExpectChinese(install.BoxOfRun({}), "a Simplified Chinese culture maps to zh-Hans");

    settings.Write("[Internationalization]\nLanguage=ja\n");
    ExpectEnglish(install.BoxOfRun({}), "a language the editor lacks falls to English");
}

TEST(LauncherLanguage, PreviewLanguageOverridesWithoutSaving)
{
    UserSettingsFile settings(L"5.2");
    const LanguageInstall install(L"language-preview", L"5.2", {L"en", L"ko", L"zh-Hans"});

    const Bytes chinese = "[Internationalization]\nLanguage=zh-Hans\n";
    settings.Write(chinese);
    ExpectEnglish(install.BoxOfRun({L"-KorvanePickerPreviewLanguage=ko"}), "the option wins over the saved language");
    EXPECT_EQ(settings.Read(), chinese) << "the option is not saved";
    ExpectChinese(install.BoxOfRun({}), "the saved language holds again");

    const Bytes english = "[Internationalization]\r\nLanguage=en\r\n";
    settings.Write(english);
    ExpectChinese(install.BoxOfRun({L"-KorvanePickerPreviewLanguage=zh_CN"}), "an underscore regional code");
    ExpectEnglish(install.BoxOfRun({L"-KorvanePickerPreviewLanguage=zh-TW"}), "Traditional Chinese is not offered");
    EXPECT_EQ(settings.Read(), english);
}

TEST(LauncherLanguage, EditorInAVersionFolderGivesTheSettingsOfItsVersion)
{
    UserSettingsFile settings(L"5.4");
    const LanguageInstall install(L"language-versioned", L"5.4", {L"en", L"zh-Hans"}, L"KorvaneEditor\\5.4");
    settings.Write("[Internationalization]\nLanguage=zh-Hans\n");
    ExpectChinese(install.BoxOfRun({}), "the launcher finds the editor below it and reads its version's settings");
}

}  // namespace
}  // namespace korvane
