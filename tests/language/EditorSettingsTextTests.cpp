// The settings text on its own: decoding, the reader's grammar and the rewrite's placement.
#include "language/EditorSettingsText.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

constexpr wchar_t kNewSection[] = L"\r\n[Internationalization]\r\nLanguage=ja\r\nCulture=\r\n";

TEST(EditorSettingsText, DecodesBothEncodingsAndRefusesBrokenUtf8)
{
    SettingsText decoded;
    ASSERT_TRUE(DecodeSettingsBytes(BytesView("\xFF\xFE[\0A\0\x3D\xD8\x00\xDE" "B", 11), decoded));
    EXPECT_TRUE(decoded.utf16);
    EXPECT_EQ(decoded.text, L"[A\xD83D\xDE00") << "pairs from byte 2; a lone last byte is dropped";

    ASSERT_TRUE(DecodeSettingsBytes("\xFF\xFE", decoded)) << "a lone UTF-16 mark is an empty text";
    EXPECT_TRUE(decoded.utf16);
    EXPECT_EQ(decoded.text, L"");

    ASSERT_TRUE(DecodeSettingsBytes("\xEF\xBB\xBF[A]\r\n\xE4\xB8\xAD", decoded));
    EXPECT_FALSE(decoded.utf16);
    EXPECT_EQ(decoded.text, L"[A]\r\n\x4E2D") << "the UTF-8 mark is dropped";

    EXPECT_FALSE(DecodeSettingsBytes("\xEF\xBB\xBF", decoded)) << "a lone UTF-8 mark gives no text";
    EXPECT_FALSE(DecodeSettingsBytes("[Internationalization]\nLanguage=fr\n\xC0\xAF", decoded));
    EXPECT_EQ(decoded.text, L"") << "one malformed sequence empties everything";
    EXPECT_FALSE(DecodeSettingsBytes(BytesView("\xFE\xFF[\0", 4), decoded)) << "a big-endian mark is no UTF-16 here";
}

TEST(EditorSettingsText, EncodesUtf16WithItsMarkAndUtf8WithoutOne)
{
    EXPECT_EQ(EncodeSettingsText({L"A\x4E2D", true}), Bytes("\xFF\xFE" "A\0\x2D\x4E", 6));
    EXPECT_EQ(EncodeSettingsText({L"\x4E2D", false}), "\xE4\xB8\xAD");
    EXPECT_EQ(EncodeSettingsText({L"", true}), "\xFF\xFE");
}

TEST(EditorSettingsText, ReaderFollowsTheGrammar)
{
    // Capitals, blanks around "=", quotes, CR LF, a second section, a later empty value.
    EXPECT_EQ(FindLanguageSetting(L"  [INTERNATIONALIZATION]  \r\n  LANGUAGE   =   \"ko\"  \r\n"), L"ko");
    EXPECT_EQ(FindLanguageSetting(L"[internationalization]\nLanguage=\nCulture=ja"), L"ja")
        << "an empty Language leaves the word to Culture";
    EXPECT_EQ(FindLanguageSetting(L"[Internationalization]\nLanguage=fr\n[X]\n[Internationalization]\nlanguage=\n"
                                  L"culture=pt-BR"),
        L"pt-BR")
        << "a later line overwrites, also with an empty value; both sections count as one";
    EXPECT_EQ(FindLanguageSetting(L"[Internationalization]\nLanguage=\"\"\nCulture=es"), L"es");
    EXPECT_EQ(FindLanguageSetting(L"[Internationalization]\nLanguage=\""), L"\"") << "one quote is kept";
    EXPECT_EQ(FindLanguageSetting(L"[Internationalization]\nLanguage=\"zh-Hans"), L"\"zh-Hans");
    EXPECT_EQ(FindLanguageSetting(L"[Internationalization]\nLanguage=a=b"), L"a=b") << "split at the first =";

    EXPECT_EQ(FindLanguageSetting(L""), L"");
    EXPECT_EQ(FindLanguageSetting(L"Language=fr\n[Internationalization]\n"), L"") << "before any section";
    EXPECT_EQ(FindLanguageSetting(L"[Other]\nLanguage=fr\n"), L"");
    EXPECT_EQ(FindLanguageSetting(L"[ Internationalization ]\nLanguage=fr\n"), L"") << "the name is not trimmed";
    EXPECT_EQ(FindLanguageSetting(L"[Internationalization]\n; Language=fr\n#Language=de\n;Culture=it"), L"");
    EXPECT_EQ(FindLanguageSetting(L"[Internationalization]\nLanguage fr\nLanguages=de\n"), L"");
    EXPECT_EQ(FindLanguageSetting(L"[Internationalization]\rLanguage=fr"), L"") << "a lone CR ends no line";
}

TEST(EditorSettingsText, RewritePlacesOneBlockAndKeepsEveryOtherLine)
{
    const Text odd = L"; header comment\n"
                     L"[/Script/UnrealEd.EditorSettings]\n"
                     L"Language=fr\n"
                     L"  [INTERNATIONALIZATION]  \n"
                     L"ShouldUseLocalizedNumericInput=True\r\n"
                     L"; Language=de\n"
                     L"#Culture=de\n"
                     L"  LANGUAGE   =   \"ko\"  \n"
                     L"Culture = es\n"
                     L" \t\n"
                     L"[Other]\n"
                     L"Key=Value\r\r\n"
                     L"[internationalization]\n"
                     L"Culture=pt-BR\n"
                     L"Extra=1\n"
                     L"language=";
    EXPECT_EQ(RewriteLanguageSetting(odd, L"zh-Hans"),
        L"; header comment\r\n"
        L"[/Script/UnrealEd.EditorSettings]\r\n"
        L"Language=fr\r\n"
        L"  [INTERNATIONALIZATION]  \r\n"
        L"ShouldUseLocalizedNumericInput=True\r\n"
        L"; Language=de\r\n"
        L"#Culture=de\r\n"
        L"Language=zh-Hans\r\nCulture=\r\n"
        L" \t\r\n"
        L"[Other]\r\n"
        L"Key=Value\r\r\n"
        L"[internationalization]\r\n"
        L"Extra=1\r\n");

    // A section without the keys gets the block at its end, behind comments and blank lines.
    EXPECT_EQ(RewriteLanguageSetting(L"[Internationalization]\nShouldUseLocalizedNumericInput=True\n; tail\n\n"
                                     L"[Next]\nA=1",
                  L"ja"),
        L"[Internationalization]\r\nShouldUseLocalizedNumericInput=True\r\n; tail\r\n\r\nLanguage=ja\r\nCulture=\r\n"
        L"[Next]\r\nA=1\r\n");
    EXPECT_EQ(RewriteLanguageSetting(L"[Internationalization]\nX=1", L"ja"),
        L"[Internationalization]\r\nX=1\r\nLanguage=ja\r\nCulture=\r\n");

    // No such section: a new one at the end of the text.
    EXPECT_EQ(RewriteLanguageSetting(L"", L"ja"), kNewSection);
    EXPECT_EQ(RewriteLanguageSetting(L"[A]\r\nB=1\r\n", L"ja"), Text(L"[A]\r\nB=1\r\n") + kNewSection);
    EXPECT_EQ(RewriteLanguageSetting(L"[ Internationalization ]\nLanguage=fr", L"ja"),
        Text(L"[ Internationalization ]\r\nLanguage=fr\r\n") + kNewSection);
    EXPECT_EQ(RewriteLanguageSetting(L"[Internationalization]\nCulture=es\n", L""),
        L"[Internationalization]\r\nLanguage=\r\nCulture=\r\n")
        << "the empty code is written as it is";
}

TEST(EditorSettingsText, RewritingAgainWithTheSameCodeChangesNothing)
{
    for (const wchar_t* sample : {L"", L"[A]\nB=1", L"[Internationalization]\nCulture=es\n\n[B]\nLanguage=x\n",
             L"\n\n[internationalization]\r\nLanguage=ko\r\n[Internationalization]\r\nCulture=ja\r\n",
             L"x\r\r\n[Internationalization]\n;c\n\n"}) {
        const Text once = RewriteLanguageSetting(sample, L"pt-BR");
        EXPECT_EQ(RewriteLanguageSetting(once, L"pt-BR"), once) << "for sample: " << TextToUtf8(sample);
        EXPECT_EQ(FindLanguageSetting(once), L"pt-BR") << "for sample: " << TextToUtf8(sample);
    }
}

}  // namespace
}  // namespace korvane
