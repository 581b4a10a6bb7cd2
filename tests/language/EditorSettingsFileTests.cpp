// The editor's settings file on disk: both encodings, real engine files, and every way a
// file can be unusable, none of which may damage it.
#include "TestSupport.h"

#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"
#include "language/EditorSettingsFile.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace korvane {
namespace {

using testing::ReadFileBytes;
using testing::ScratchDirectory;
using testing::WriteFileBytes;

constexpr char kNewSection[] = "\r\n[Internationalization]\r\nLanguage=ja\r\nCulture=\r\n";

Bytes Utf16Bytes(std::u16string_view text)
{
    Bytes bytes;
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    return bytes;
}

// Every line feed preceded by a carriage return, and one at the very end.
Bytes WithCrlf(BytesView bytes)
{
    Bytes result;
    for (size_t index = 0; index < bytes.size(); ++index) {
        if (bytes[index] == '\n' && (index == 0 || bytes[index - 1] != '\r')) {
            result.push_back('\r');
        }
        result.push_back(bytes[index]);
    }
    if (!result.ends_with("\r\n")) {
        result += "\r\n";
    }
    return result;
}

// Names in the folder, to see that no sibling file was left behind.
std::vector<Text> FolderNames(TextView folder)
{
    std::vector<Text> names;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(Text(folder)))) {
        names.push_back(entry.path().filename().wstring());
    }
    return names;
}

UniqueFileHandle OpenWithSharing(TextView path, DWORD share)
{
    return UniqueFileHandle(
        CreateFileW(Text(path).c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

TEST(EditorSettingsFile, MissingFileIsCreatedWithItsFolders)
{
    ScratchDirectory scratch(L"settings-new");
    // The real path ends in forward slashes; the folders must still be made one by one.
    const Text path = scratch / L"UnrealEngine\\5.3\\Saved/Config/WindowsEditor/EditorSettings.ini";
    EXPECT_EQ(ReadEditorLanguageSetting(path), L"");
    ASSERT_TRUE(SaveEditorLanguageSetting(path, L"ja"));
    EXPECT_EQ(ReadFileBytes(path), kNewSection) << "no byte-order mark, CR LF";
    EXPECT_EQ(ReadEditorLanguageSetting(path), L"ja");
    EXPECT_EQ(FolderNames(ParentPath(path)), std::vector<Text>{L"EditorSettings.ini"});
}

TEST(EditorSettingsFile, EncodingsAreKeptOrDroppedAsTheyShouldBe)
{
    ScratchDirectory scratch(L"settings-encodings");
    const Text utf16 = scratch / L"utf16.ini";
    WriteFileBytes(utf16, "\xFF\xFE" + Utf16Bytes(u"[Internationalization]\nLanguage=ko\n[\u30B2\u30FC\u30E0]\nA=\u4E2D"));
    EXPECT_EQ(ReadEditorLanguageSetting(utf16), L"ko");
    ASSERT_TRUE(SaveEditorLanguageSetting(utf16, L"zh-Hans"));
    EXPECT_EQ(ReadFileBytes(utf16),
        "\xFF\xFE" + Utf16Bytes(u"[Internationalization]\r\nLanguage=zh-Hans\r\nCulture=\r\n[\u30B2\u30FC\u30E0]\r\nA=\u4E2D\r\n"));
    EXPECT_EQ(ReadEditorLanguageSetting(utf16), L"zh-Hans");

    const Text utf8 = scratch / L"utf8.ini";
    WriteFileBytes(utf8, "\xEF\xBB\xBF[Internationalization]\r\nCulture=\"es\"\r\n[\xE6\xB8\xB8]\r\n");
    EXPECT_EQ(ReadEditorLanguageSetting(utf8), L"es");
    ASSERT_TRUE(SaveEditorLanguageSetting(utf8, L"pt-BR"));
    EXPECT_EQ(ReadFileBytes(utf8), "[Internationalization]\r\nLanguage=pt-BR\r\nCulture=\r\n[\xE6\xB8\xB8]\r\n");

    // A lone UTF-16 mark is an empty UTF-16 text: the new section comes in UTF-16.
    const Text loneMark = scratch / L"lone-mark.ini";
    WriteFileBytes(loneMark, "\xFF\xFE");
    EXPECT_EQ(ReadEditorLanguageSetting(loneMark), L"");
    ASSERT_TRUE(SaveEditorLanguageSetting(loneMark, L"ja"));
    EXPECT_EQ(ReadFileBytes(loneMark), "\xFF\xFE" + Utf16Bytes(u"\r\n[Internationalization]\r\nLanguage=ja\r\nCulture=\r\n"));

    // The same code twice gives the same bytes, in both encodings.
    for (const Text& path : {utf16, utf8}) {
        const Bytes once = ReadFileBytes(path);
        ASSERT_TRUE(SaveEditorLanguageSetting(path, ReadEditorLanguageSetting(path)));
        EXPECT_EQ(ReadFileBytes(path), once);
    }
}

TEST(EditorSettingsFile, RealEngineFilesComeBackWholeButForTheBlockAndLineEnds)
{
    ScratchDirectory scratch(L"settings-real");
    const Text path = scratch / L"EditorSettings.ini";
    const wchar_t* const utf8Files[] = {
        L"config\\defaultgame_ue4.27_21cu0315__Rockman\\DefaultGame.ini",
        L"config\\defaultgame_ue5.0_2BingBing__UE5.0_Dangaronpa_BP_Project\\DefaultGame.ini",
        L"config\\defaultgame_ue5.3_02020fan__FirstGame\\DefaultGame.ini",
        L"config\\ue5.2-source_engine_gyakkul__SideProject\\EditorSettings.ini",
        L"config\\ue5.3_02020fan__FirstGame\\EditorPerProjectUserSettings.ini",
        L"config\\ue5_global_Tw1nAi__avatars\\EditorSettings.ini",
    };
    for (const wchar_t* sample : utf8Files) {
        const Bytes original = testing::ReadRealData(sample);
        WriteFileBytes(path, original);
        EXPECT_EQ(ReadEditorLanguageSetting(path), L"") << TextToUtf8(sample);
        ASSERT_TRUE(SaveEditorLanguageSetting(path, L"ja")) << TextToUtf8(sample);
        EXPECT_TRUE(ReadFileBytes(path) == WithCrlf(original) + kNewSection) << TextToUtf8(sample);
        EXPECT_EQ(ReadEditorLanguageSetting(path), L"ja") << TextToUtf8(sample);
    }

    // Its [Internationalization] section has other keys: the block closes it, ahead of the
    // blank line's following header.
    const Bytes coalesced =
        testing::ReadRealData(L"config\\ue4.19_coalesced_19960824munakata__BakaureGodGame\\EditorSettings.ini");
    WriteFileBytes(path, coalesced);
    ASSERT_TRUE(SaveEditorLanguageSetting(path, L"ja"));
    Bytes expected = WithCrlf(coalesced);
    expected.insert(expected.find("[/Script/UnrealEd.EditorSettings]"), "Language=ja\r\nCulture=\r\n");
    EXPECT_TRUE(ReadFileBytes(path) == expected);

    // UTF-16 with its mark and CR LF already: the old bytes stand unchanged in front.
    const Bytes utf16 =
        testing::ReadRealData(L"config\\ue4.17_utf16le-bom_4696neko__Geme_Taisyo_2023\\EditorPerProjectUserSettings.ini");
    WriteFileBytes(path, utf16);
    ASSERT_TRUE(SaveEditorLanguageSetting(path, L"ja"));
    EXPECT_TRUE(ReadFileBytes(path) == utf16 + Utf16Bytes(u"\r\n[Internationalization]\r\nLanguage=ja\r\nCulture=\r\n"));
    EXPECT_EQ(ReadEditorLanguageSetting(path), L"ja");
}

TEST(EditorSettingsFile, SizeLimitIsTwoMebibytesInclusive)
{
    ScratchDirectory scratch(L"settings-size");
    Bytes largest = "[Internationalization]\nLanguage=es\n[Padding]\n;";
    largest.append(2097152 - largest.size() - 1, 'x');
    largest.push_back('\n');
    const Text atLimit = scratch / L"at-limit.ini";
    WriteFileBytes(atLimit, largest);
    EXPECT_EQ(ReadEditorLanguageSetting(atLimit), L"es");
    EXPECT_TRUE(SaveEditorLanguageSetting(atLimit, L"ko"));

    const Text overLimit = scratch / L"over-limit.ini";
    WriteFileBytes(overLimit, largest + "\n");
    EXPECT_EQ(ReadEditorLanguageSetting(overLimit), L"");
    EXPECT_FALSE(SaveEditorLanguageSetting(overLimit, L"ko"));
    EXPECT_TRUE(ReadFileBytes(overLimit) == largest + "\n");
}

TEST(EditorSettingsFile, UnusableFilesAreNeitherReadNorTouched)
{
    ScratchDirectory scratch(L"settings-bad");
    const struct {
        const char* name;
        Bytes bytes;
    } samples[] = {
        {"empty", ""},
        {"not utf-8", "[Internationalization]\r\nLanguage=fr\r\n\xC0\xAF\r\n"},
        {"lone utf-8 mark", "\xEF\xBB\xBF"},
        {"latin-1", "[Internationalization]\r\nLanguage=fr\r\n; caf\xE9\r\n"},
    };
    for (const auto& sample : samples) {
        const Text path = scratch / L"bad.ini";
        WriteFileBytes(path, sample.bytes);
        EXPECT_EQ(ReadEditorLanguageSetting(path), L"") << sample.name;
        EXPECT_FALSE(SaveEditorLanguageSetting(path, L"ja")) << sample.name;
        EXPECT_EQ(ReadFileBytes(path), sample.bytes) << sample.name;
        EXPECT_EQ(FolderNames(scratch.Path()), std::vector<Text>{L"bad.ini"}) << sample.name;
    }

    // A folder in the file's place.
    testing::MakeDirectories(scratch / L"folder.ini");
    EXPECT_EQ(ReadEditorLanguageSetting(scratch / L"folder.ini"), L"");
    EXPECT_FALSE(SaveEditorLanguageSetting(scratch / L"folder.ini", L"ja"));

    EXPECT_EQ(ReadEditorLanguageSetting(L""), L"");
    EXPECT_FALSE(SaveEditorLanguageSetting(L"", L"ja"));
}

TEST(EditorSettingsFile, InvalidLocaleNameIsRefusedBeforeTheFileIsTouched)
{
    ScratchDirectory scratch(L"settings-locale");
    const Text missing = scratch / L"missing\\EditorSettings.ini";
    for (const wchar_t* code : {L"xx-YY", L"not a locale", L"en-", L"qps-ploc"}) {
        EXPECT_FALSE(SaveEditorLanguageSetting(missing, code)) << TextToUtf8(code);
    }
    EXPECT_FALSE(testing::FileExists(ParentPath(missing))) << "not even the folder is made";

    const Text existing = scratch / L"EditorSettings.ini";
    const Bytes original = "[Internationalization]\nLanguage=ko\n";
    WriteFileBytes(existing, original);
    EXPECT_FALSE(SaveEditorLanguageSetting(existing, L"xx-YY"));
    EXPECT_EQ(ReadFileBytes(existing), original);

    // The empty code is allowed, and leaves the language to the editor.
    ASSERT_TRUE(SaveEditorLanguageSetting(existing, L""));
    EXPECT_EQ(ReadFileBytes(existing), "[Internationalization]\r\nLanguage=\r\nCulture=\r\n");
    EXPECT_EQ(ReadEditorLanguageSetting(existing), L"");
}

TEST(EditorSettingsFile, LockedFileAndFailedRenameLeaveTheOldFile)
{
    ScratchDirectory scratch(L"settings-locked");
    const Text path = scratch / L"EditorSettings.ini";
    const Bytes original = "[Internationalization]\nLanguage=ko\n[Other]\nA=1";
    WriteFileBytes(path, original);
    {
        // Held without any sharing: nothing can read it.
        const UniqueFileHandle holder = OpenWithSharing(path, 0);
        ASSERT_TRUE(holder.IsValid());
        EXPECT_EQ(ReadEditorLanguageSetting(path), L"");
        EXPECT_FALSE(SaveEditorLanguageSetting(path, L"ja"));
    }
    EXPECT_EQ(ReadFileBytes(path), original);
    EXPECT_EQ(FolderNames(scratch.Path()), std::vector<Text>{L"EditorSettings.ini"});
    {
        // Readable, but it cannot be replaced while this handle denies deletion: the rename
        // fails after the sibling was written.
        const UniqueFileHandle holder = OpenWithSharing(path, FILE_SHARE_READ | FILE_SHARE_WRITE);
        ASSERT_TRUE(holder.IsValid());
        EXPECT_EQ(ReadEditorLanguageSetting(path), L"ko");
        EXPECT_FALSE(SaveEditorLanguageSetting(path, L"ja"));
    }
    EXPECT_EQ(ReadFileBytes(path), original);
    EXPECT_EQ(FolderNames(scratch.Path()), std::vector<Text>{L"EditorSettings.ini"}) << "the sibling is deleted";
    EXPECT_TRUE(SaveEditorLanguageSetting(path, L"ja")) << "free again";
}

}  // namespace
}  // namespace korvane
