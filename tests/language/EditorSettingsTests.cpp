// The editor's settings file: decoding, the reader's grammar, the rewrite's placement, and the
// file on disk in both encodings, real engine files, and the ways a file can be unusable, none
// of which may damage it. (A file that cannot be replaced is the file-writing tests' case.)
#include "LanguageTestFiles.h"

#include "language/EditorSettingsFile.h"
#include "language/EditorSettingsText.h"

#include <gtest/gtest.h>

#include <optional>
#include <regex>

namespace korvane {
namespace {

using testing::ReadFileBytes;
using testing::ScratchDirectory;
using testing::Utf16Bytes;
using testing::WriteFileBytes;

constexpr char kNewSection[] = "\r\n[Internationalization]\r\nLanguage=ja\r\nCulture=\r\n";

TEST(EditorSettingsText, TheReaderFollowsTheGrammarAndTheRewritePlacesOneStableBlock)
{
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        // Capitals, blanks around "=", quotes, CR LF.
        {L"  [INTERNATIONALIZATION]  \r\n  LANGUAGE   =   \"ko\"  \r\n", L"ko"},
        // A later line overwrites, also with an empty value that leaves it to Culture; both sections count as one.
        {L"[Internationalization]\nLanguage=fr\n[X]\n[Internationalization]\nlanguage=\nculture=pt-BR", L"pt-BR"},
        {L"[Internationalization]\nLanguage=\"", L"\""},  // one quote is kept
        {L"[Internationalization]\nLanguage=\"zh-Hans", L"\"zh-Hans"},
        {L"[Internationalization]\nLanguage=a=b", L"a=b"},  // split at the first =
        {L"[Other]\nLanguage=fr\n", L""},
        {L"Language=fr\n[Internationalization]\n", L""},  // before any section
        {L"[ Internationalization ]\nLanguage=fr\n", L""},  // the name is not trimmed
        {L"[Internationalization]\n; Language=fr\n#Language=de\n;Culture=it", L""},
        {L"[Internationalization]\nLanguage fr\nLanguages=de\n", L""},
        {L"[Internationalization]\rLanguage=fr", L""},  // a lone CR ends no line
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(FindLanguageSetting(text), expected) << TextToUtf8(text);
    }

    // The rewrite places one block, keeps every other line and is stable.
    const struct {
        const wchar_t* text;
        const wchar_t* code;
        const wchar_t* expected;
    } rewrites[] = {
        {L"; header comment\n[/Script/UnrealEd.EditorSettings]\nLanguage=fr\n  [INTERNATIONALIZATION]  \n"
         L"ShouldUseLocalizedNumericInput=True\r\n; Language=de\n#Culture=de\n  LANGUAGE   =   \"ko\"  \n"
         L"Culture = es\n \t\n[Other]\nKey=Value\r\r\n[internationalization]\nCulture=pt-BR\nExtra=1\nlanguage=",
            L"zh-Hans",
            L"; header comment\r\n[/Script/UnrealEd.EditorSettings]\r\nLanguage=fr\r\n  [INTERNATIONALIZATION]  \r\n"
            L"ShouldUseLocalizedNumericInput=True\r\n; Language=de\r\n#Culture=de\r\nLanguage=zh-Hans\r\nCulture=\r\n"
            L" \t\r\n[Other]\r\nKey=Value\r\r\n[internationalization]\r\nExtra=1\r\n"},
        // A section without the keys gets the block at its end (before the next header in the real
        // coalesced file), here the end of the text.
        {L"[Internationalization]\nX=1", L"ja", L"[Internationalization]\r\nX=1\r\nLanguage=ja\r\nCulture=\r\n"},
        // No such section: a new one at the end of the text.
        {L"[A]\r\nB=1\r\n", L"ja", L"[A]\r\nB=1\r\n\r\n[Internationalization]\r\nLanguage=ja\r\nCulture=\r\n"},
    };
    for (const auto& sample : rewrites) {
        const Text once = RewriteLanguageSetting(sample.text, sample.code);
        EXPECT_EQ(once, sample.expected) << TextToUtf8(sample.text);
        EXPECT_EQ(RewriteLanguageSetting(once, sample.code), once) << "again: " << TextToUtf8(sample.text);
        EXPECT_EQ(FindLanguageSetting(once), sample.code) << TextToUtf8(sample.text);
    }
}

// Every line ended by CR LF, the last one too.
Bytes WithCrlf(const Bytes& bytes)
{
    const Bytes crlf = std::regex_replace(bytes, std::regex("\r?\n"), "\r\n");
    return crlf.ends_with("\r\n") ? crlf : crlf + "\r\n";
}

TEST(EditorSettingsFile, EncodingsAreKeptOrDroppedAMissingFileIsMadeAndAnUnusableOneIsLeftAlone)
{
    ScratchDirectory scratch(L"settings-file");
    Bytes largest = "[Internationalization]\nLanguage=es\n[Padding]\n;";
    largest.append(2097152 - largest.size() - 1, 'x');
    largest.push_back('\n');
    const struct {
        const wchar_t* name;
        std::optional<Bytes> before;
        const wchar_t* code;
        std::optional<Bytes> after;  // nullopt: refused, and the file stays as it was
    } cases[] = {
        // The real path ends in forward slashes; the folders must still be made one by one.
        {L"UnrealEngine\\5.3\\Saved/Config/WindowsEditor/EditorSettings.ini", std::nullopt, L"ja", kNewSection},
        {L"utf16.ini", "\xFF\xFE" + Utf16Bytes(u"[Internationalization]\nLanguage=ko\n[\u30B2\u30FC\u30E0]\nA=\u4E2D"),
            L"zh-Hans",
            "\xFF\xFE" + Utf16Bytes(u"[Internationalization]\r\nLanguage=zh-Hans\r\nCulture=\r\n[\u30B2\u30FC\u30E0]\r\n"
                                    u"A=\u4E2D\r\n")},
        {L"utf8.ini", "\xEF\xBB\xBF[Internationalization]\r\nCulture=\"es\"\r\n[\xE6\xB8\xB8]\r\n", L"pt-BR",
            "[Internationalization]\r\nLanguage=pt-BR\r\nCulture=\r\n[\xE6\xB8\xB8]\r\n"},
        // A lone UTF-16 mark is an empty UTF-16 text: the new section comes in UTF-16. A lone last byte is dropped.
        {L"lone-mark.ini", "\xFF\xFE", L"ja",
            "\xFF\xFE" + Utf16Bytes(u"\r\n[Internationalization]\r\nLanguage=ja\r\nCulture=\r\n")},
        {L"odd.ini", "\xFF\xFE" + Utf16Bytes(u"[\U0001F600]") + "X", L"ko",
            "\xFF\xFE" + Utf16Bytes(u"[\U0001F600]\r\n\r\n[Internationalization]\r\nLanguage=ko\r\nCulture=\r\n")},
        // Too large, a lone UTF-8 mark, Latin-1; an invalid locale name before the folder is made.
        {L"large.ini", largest + "\n", L"ja", std::nullopt},
        {L"utf8-mark.ini", "\xEF\xBB\xBF", L"ja", std::nullopt},
        {L"latin1.ini", "[Internationalization]\r\nLanguage=fr\r\n; caf\xE9\r\n", L"ja", std::nullopt},
        {L"missing\\EditorSettings.ini", std::nullopt, L"xx-YY", std::nullopt},
        {L"missing\\EditorSettings.ini", std::nullopt, L"en-", std::nullopt},
    };
    for (const auto& sample : cases) {
        SCOPED_TRACE(TextToUtf8(sample.name) + " " + TextToUtf8(sample.code));
        const Text path = scratch / sample.name;
        if (sample.before) {
            WriteFileBytes(path, *sample.before);
        }
        EXPECT_EQ(SaveEditorLanguageSetting(path, sample.code), sample.after.has_value());
        EXPECT_TRUE((testing::FileExists(path) ? std::optional(ReadFileBytes(path)) : std::nullopt) ==
            (sample.after ? sample.after : sample.before));
        EXPECT_EQ(ReadEditorLanguageSetting(path), sample.after ? sample.code : L"");
    }
    EXPECT_FALSE(testing::FileExists(scratch / L"missing"));
    EXPECT_FALSE(SaveEditorLanguageSetting(L"", L"ja"));
    // 2 MiB is read and saved; the empty code leaves the language to the editor.
    WriteFileBytes(scratch / L"largest.ini", largest);
    EXPECT_EQ(ReadEditorLanguageSetting(scratch / L"largest.ini"), L"es");
    EXPECT_TRUE(SaveEditorLanguageSetting(scratch / L"largest.ini", L""));
}

TEST(EditorSettingsFile, RealEngineFilesComeBackWholeButForTheBlockAndLineEnds)
{
    ScratchDirectory scratch(L"settings-real");
    const Text path = scratch / L"EditorSettings.ini";
    const auto save = [&](const wchar_t* sample) {
        const Bytes original = testing::ReadRealData(Text(L"config\\") + sample);
        WriteFileBytes(path, original);
        EXPECT_TRUE(SaveEditorLanguageSetting(path, L"ja")) << TextToUtf8(sample);
        return original;
    };
    // Without the section: it is added at the end.
    const Bytes plain = save(L"ue5_global_Tw1nAi__avatars\\EditorSettings.ini");
    EXPECT_TRUE(ReadFileBytes(path) == WithCrlf(plain) + kNewSection);
    // Its [Internationalization] section has other keys: the block closes it, ahead of the
    // blank line's following header.
    Bytes expected = WithCrlf(save(L"ue4.19_coalesced_19960824munakata__BakaureGodGame\\EditorSettings.ini"));
    expected.insert(expected.find("[/Script/UnrealEd.EditorSettings]"), "Language=ja\r\nCulture=\r\n");
    EXPECT_TRUE(ReadFileBytes(path) == expected);
    // UTF-16 with its mark and CR LF already: the old bytes stand unchanged in front.
    const Bytes utf16 = save(L"ue4.17_utf16le-bom_4696neko__Geme_Taisyo_2023\\EditorPerProjectUserSettings.ini");
    EXPECT_TRUE(ReadFileBytes(path) == utf16 + Utf16Bytes(u"\r\n[Internationalization]\r\nLanguage=ja\r\nCulture=\r\n"));
}

}  // namespace
}  // namespace korvane
