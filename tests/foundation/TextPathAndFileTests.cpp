#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "foundation/Text.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <windows.h>
#include <shellapi.h>

#include <random>
#include <vector>

namespace korvane {
namespace {

using testing::ReadFileBytes;
using testing::ScratchDirectory;

// Splits a command line with the platform's own rule.
std::vector<Text> SplitWithPlatform(const Text& commandLine)
{
    int count = 0;
    LPWSTR* argv = CommandLineToArgvW(commandLine.c_str(), &count);
    std::vector<Text> parts(argv, argv + count);
    LocalFree(argv);
    return parts;
}

TEST(QuoteCommandArgument, RoundTripsThroughCommandLineToArgvW)
{
    static const wchar_t kPieces[] = {L'a', L'Z', L'\\', L'"', L' ', L'\t', L'x', L'\\', L'"', 0x00E9, 0x4E2D,
        0xD83D, 0xDE00, L'\'', L'^', L'%', L'.', L'-', L'='};
    std::mt19937 random(20261122);
    std::uniform_int_distribution<size_t> piece(0, std::size(kPieces) - 1);
    for (int round = 0; round < 5000; ++round) {
        std::vector<Text> arguments(3);
        // The program name is split by a simpler rule; keep it plain so the arguments are what is tested.
        Text commandLine = L"program.exe";
        for (Text& argument : arguments) {
            for (int units = std::uniform_int_distribution<int>(0, 14)(random); units > 0; --units) {
                argument.push_back(kPieces[piece(random)]);
            }
            commandLine += L' ' + QuoteCommandArgument(argument);
        }
        arguments.insert(arguments.begin(), L"program.exe");
        ASSERT_EQ(SplitWithPlatform(commandLine), arguments) << "round " << round;
    }
}

TEST(TextAndPathHelpers, GiveTheirExactResults)
{
    const struct {
        Text (*function)(TextView);
        const wchar_t* input;
        const wchar_t* expected;
    } cases[] = {
        {TrimText, L" \t\r\n", L""}, {TrimText, L" \na b\t", L"a b"},
        {TrimText, L"\x00A0x\x3000", L"\x00A0x\x3000"},  // only the four ASCII units go
        {TrimText, L"\fx", L"\fx"},
        {QuoteJsonText, L"", L"\"\""},
        {QuoteJsonText, L"a\x0001" L"b", L"\"ab\""},     // other controls are dropped
        {QuoteJsonText, L"\"\\\n\r\t/", L"\"\\\"\\\\\\n\\r\\t/\""},
        {QuoteJsonText, L"\x007F\x4E2D", L"\"\x007F\x4E2D\""},
        {QuoteJsonText, L" a  b ", L"\" a  b \""},  // blanks are no control units
        {FoldAsciiCase, L"AbC\x00C9\x0416", L"abc\x00C9\x0416"},
        {NormalizePath, L"", L""}, {NormalizePath, L"C:\\", L"C:\\"},
        {NormalizePath, L"C:/Games//", L"C:\\Games"},
        {NormalizePath, L"C:\\Games\\..\\Tools\\", L"C:\\Tools"},
        {NormalizePath, L"C:\\A\\.\\MiXeD", L"C:\\A\\MiXeD"},
        {ParentPath, L"file.txt", L""}, {ParentPath, L"a\\b/c", L"a\\b"}, {ParentPath, L"C:\\", L"C:"},
        {ParentPath, L"C:\\Games", L"C:"},
        {LastPathComponent, L"C:\\Games\\Title", L"Title"}, {LastPathComponent, L"Title", L"Title"},
        {LastPathComponent, L"C:\\", L""}, {LastPathComponent, L"a/b", L"b"},
    };
    for (const auto& sample : cases) {
        EXPECT_EQ(sample.function(sample.input), sample.expected) << TextToUtf8(sample.input);
    }
    // Relative paths are made absolute against the current directory.
    wchar_t current[MAX_PATH] = {};
    GetCurrentDirectoryW(MAX_PATH, current);
    EXPECT_EQ(NormalizePath(L"sub"), JoinPath(current, L"sub"));

    const wchar_t* const joins[][3] = {{L"C:\\", L"x", L"C:\\x"}, {L"C:\\a/", L"x", L"C:\\a/\\x"},
        {L"", L"x", L"x"}, {L"C:\\a", L"", L"C:\\a\\"}, {L"C:", L"Games", L"C:\\Games"}};
    for (const auto& join : joins) {
        EXPECT_EQ(JoinPath(join[0], join[1]), join[2]);
    }
    EXPECT_TRUE(IsAbsoluteInForm(L"\\server") && IsAbsoluteInForm(L"/x") && IsAbsoluteInForm(L"D:relative"));
    EXPECT_FALSE(IsAbsoluteInForm(L"..\\Game") || IsAbsoluteInForm(L""));

    // UTF-8 conversion is strict and keeps a byte-order mark; case rules fold only A to Z.
    // Nothing, and refusals: a bad byte, an overlong encoding, an encoded surrogate.
    for (const char* refused : {"", "valid text\xFF", "\xC0\xAF", "\xED\xA0\x80"}) {
        EXPECT_EQ(Utf8ToText(refused), L"") << refused;
    }
    EXPECT_EQ(Utf8ToText("abc\xE4\xB8\xAD"), L"abc\x4E2D");
    EXPECT_EQ(Utf8ToText("\xEF\xBB\xBFx"), L"\xFEFFx");
    EXPECT_EQ(TextToUtf8(L"\x4E2D\x00E9"), "\xE4\xB8\xAD\xC3\xA9");
    EXPECT_EQ(TextToUtf8(L"\xD83D\xDE00"), "\xF0\x9F\x98\x80");
    EXPECT_TRUE(EqualsIgnoringCase(L"Title.KVSDK", L"title.kvsdk"));
    EXPECT_FALSE(EqualsIgnoringCase(L"\x00C0.kvsdk", L"\x00E0.kvsdk"));
    EXPECT_TRUE(EndsWithIgnoringCase(L"C:\\x\\y.KVSDK", L".kvsdk"));
    EXPECT_FALSE(EndsWithIgnoringCase(L"kvsdk", L".kvsdk"));
    EXPECT_TRUE(StartsWithIgnoringCase(L"-SDK=x", L"-sdk="));
}

TEST(ReadWholeFile, ReadsUpToTheLimitAndNothingOfALargerFile)
{
    ScratchDirectory scratch(L"files");
    const Text exact = scratch / L"exact.bin";
    testing::WriteFileBytes(exact, Bytes(65536, 'x'));
    testing::WriteFileBytes(scratch / L"over.bin", Bytes(65537, 'x'));
    EXPECT_EQ(ReadWholeFile(exact, kSmallFileLimit).size(), 65536u);
    EXPECT_TRUE(ReadWholeFile(scratch / L"over.bin", kSmallFileLimit).empty());
    EXPECT_TRUE(ReadWholeFile(scratch / L"missing.bin", kSmallFileLimit).empty());
    EXPECT_TRUE(ReadWholeFile(scratch.Path(), kSmallFileLimit).empty()) << "a folder reads as nothing";

    // The bytes are not interpreted, and a file another process is writing can still be read.
    testing::WriteFileBytes(exact, "\xEF\xBB\xBF{}");
    UniqueFileHandle writer(CreateFileW(exact.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
        FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(writer);
    EXPECT_EQ(ReadWholeFile(exact, kSmallFileLimit), "\xEF\xBB\xBF{}");

    EXPECT_TRUE(IsRegularFile(exact) && IsRegularFile(scratch / L"EXACT.BIN") && IsDirectory(scratch.Path()));
    EXPECT_FALSE(IsRegularFile(scratch.Path()) || IsRegularFile(scratch / L"missing.bin") || IsRegularFile(L""));
}

TEST(WritingFiles, ReplacesWholeOrLeavesTheOldFile)
{
    ScratchDirectory scratch(L"replace");
    const Text target = scratch / L"selection.json";
    const Text sibling = scratch / (L"selection.json." + DecimalText(GetCurrentProcessId()) + L".tmp");
    ASSERT_TRUE(WriteWholeFile(target, "a longer first content"));
    ASSERT_TRUE(WriteWholeFile(target, "old"));
    EXPECT_EQ(ReadFileBytes(target), "old") << "writing truncates";
    EXPECT_FALSE(WriteWholeFile(scratch / L"missing\\report.json", "x"));

    ASSERT_TRUE(ReplaceFileFromSibling(target, sibling, "new content"));
    EXPECT_EQ(ReadFileBytes(target), "new content");
    EXPECT_FALSE(testing::FileExists(sibling));
    {
        // Held open without delete sharing: the rename fails, the old bytes survive, the sibling goes.
        UniqueFileHandle holder(CreateFileW(target.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(holder);
        EXPECT_FALSE(ReplaceFileFromSibling(target, sibling, "lost"));
    }
    EXPECT_EQ(ReadFileBytes(target), "new content");
    EXPECT_FALSE(testing::FileExists(sibling));
    // A sibling that cannot be written ends the operation before the target is touched.
    EXPECT_FALSE(ReplaceFileFromSibling(target, scratch / L"no-such-folder\\x.tmp", "lost"));
    EXPECT_EQ(ReadFileBytes(target), "new content");
}

TEST(LauncherTempFiles, AreUniqueEmptyAndOwned)
{
    Text first;
    {
        TemporaryFile a(CreateLauncherTempFile());
        TemporaryFile b(CreateLauncherTempFile());
        ASSERT_FALSE(a.IsEmpty());
        ASSERT_NE(a.Path(), b.Path());
        EXPECT_TRUE(ReadFileBytes(a.Path()).empty());
        EXPECT_TRUE(StartsWithIgnoringCase(LastPathComponent(a.Path()), L"KVL"));
        first = a.Path();
        TemporaryFile moved(std::move(a));
        EXPECT_TRUE(a.IsEmpty());
        EXPECT_TRUE(IsRegularFile(first));
    }
    EXPECT_FALSE(testing::FileExists(first)) << "the owner deletes the file";
}

}  // namespace
}  // namespace korvane
