#include "foundation/Text.h"

#include <gtest/gtest.h>

#include <windows.h>
#include <shellapi.h>

#include <random>
#include <vector>

namespace korvane {
namespace {

// Splits a command line with the platform's own rule.
std::vector<Text> SplitWithPlatform(const Text& commandLine)
{
    int count = 0;
    LPWSTR* argv = CommandLineToArgvW(commandLine.c_str(), &count);
    std::vector<Text> parts;
    for (int i = 0; i < count; ++i) {
        parts.emplace_back(argv[i]);
    }
    LocalFree(argv);
    return parts;
}

Text RandomArgument(std::mt19937& random)
{
    static const wchar_t kPieces[] = {L'a', L'Z', L'\\', L'"', L' ', L'\t', L'x', L'\\', L'"', 0x00E9, 0x4E2D,
        0xD83D, 0xDE00, L'\'', L'^', L'%', L'.', L'-', L'='};
    std::uniform_int_distribution<int> length(0, 14);
    std::uniform_int_distribution<size_t> piece(0, std::size(kPieces) - 1);
    Text text;
    const int units = length(random);
    for (int i = 0; i < units; ++i) {
        text.push_back(kPieces[piece(random)]);
    }
    return text;
}

TEST(QuoteCommandArgument, RoundTripsThroughCommandLineToArgvW)
{
    std::mt19937 random(20261122);
    for (int round = 0; round < 5000; ++round) {
        std::vector<Text> arguments = {RandomArgument(random), RandomArgument(random), RandomArgument(random)};
        // The program name is split by a simpler rule; keep it plain so the arguments are what is tested.
        Text commandLine = L"program.exe";
        for (const Text& argument : arguments) {
            commandLine += L' ' + QuoteCommandArgument(argument);
        }
        const std::vector<Text> parts = SplitWithPlatform(commandLine);
        ASSERT_EQ(parts.size(), arguments.size() + 1) << "round " << round;
        for (size_t i = 0; i < arguments.size(); ++i) {
            ASSERT_EQ(parts[i + 1], arguments[i]) << "round " << round;
        }
    }
}

TEST(QuoteCommandArgument, QuotesAndBackslashRules)
{
    EXPECT_EQ(QuoteCommandArgument(L""), L"\"\"");
    EXPECT_EQ(QuoteCommandArgument(L"plain"), L"\"plain\"");
    EXPECT_EQ(QuoteCommandArgument(L"C:\\dir\\"), L"\"C:\\dir\\\\\"");
    EXPECT_EQ(QuoteCommandArgument(L"a\"b"), L"\"a\\\"b\"");
    EXPECT_EQ(QuoteCommandArgument(L"a\\\"b"), L"\"a\\\\\\\"b\"");
    EXPECT_EQ(QuoteCommandArgument(L"a\\b"), L"\"a\\b\"");
}

TEST(Utf8Conversion, IsStrictAndKeepsTheByteOrderMark)
{
    EXPECT_EQ(Utf8ToText(""), L"");
    EXPECT_EQ(Utf8ToText("abc\xE4\xB8\xAD"), L"abc\x4E2D");
    EXPECT_EQ(Utf8ToText("valid text\xFF"), L"");
    EXPECT_EQ(Utf8ToText("\xC0\xAF"), L"") << "overlong encodings are refused";
    EXPECT_EQ(Utf8ToText("\xED\xA0\x80"), L"") << "encoded surrogates are refused";
    EXPECT_EQ(Utf8ToText("\xEF\xBB\xBFx"), L"\xFEFFx");
    EXPECT_EQ(TextToUtf8(L""), "");
    EXPECT_EQ(TextToUtf8(L"\x4E2D\x00E9"), "\xE4\xB8\xAD\xC3\xA9");
    EXPECT_EQ(TextToUtf8(L"\xD83D\xDE00"), "\xF0\x9F\x98\x80");
}

TEST(TrimText, RemovesOnlyTheFourUnits)
{
    EXPECT_EQ(TrimText(L" \t\r\n"), L"");
    EXPECT_EQ(TrimText(L""), L"");
    EXPECT_EQ(TrimText(L" \na b\t"), L"a b");
    EXPECT_EQ(TrimText(L"\x00A0x\x3000"), L"\x00A0x\x3000");
    EXPECT_EQ(TrimText(L"\fx"), L"\fx");
}

TEST(QuoteJsonText, EscapesFiveUnitsAndDropsOtherControls)
{
    EXPECT_EQ(QuoteJsonText(L""), L"\"\"");
    EXPECT_EQ(QuoteJsonText(L"a\x0001" L"b"), L"\"ab\"");
    EXPECT_EQ(QuoteJsonText(L"\"\\\n\r\t/"), L"\"\\\"\\\\\\n\\r\\t/\"");
    EXPECT_EQ(QuoteJsonText(L"\x007F\x4E2D"), L"\"\x007F\x4E2D\"");
}

TEST(CaseRules, FoldOnlyAToZ)
{
    EXPECT_TRUE(EqualsIgnoringCase(L"Title.KVSDK", L"title.kvsdk"));
    EXPECT_FALSE(EqualsIgnoringCase(L"\x00C0.kvsdk", L"\x00E0.kvsdk"));
    EXPECT_TRUE(EndsWithIgnoringCase(L"C:\\x\\y.KVSDK", L".kvsdk"));
    EXPECT_FALSE(EndsWithIgnoringCase(L"kvsdk", L".kvsdk"));
    EXPECT_TRUE(StartsWithIgnoringCase(L"-SDK=x", L"-sdk="));
    EXPECT_EQ(FoldAsciiCase(L"AbC\x00C9\x0416"), L"abc\x00C9\x0416");
}

}  // namespace
}  // namespace korvane
