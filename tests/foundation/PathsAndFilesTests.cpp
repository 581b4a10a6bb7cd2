#include "foundation/Files.h"
#include "foundation/Paths.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using testing::ScratchDirectory;

TEST(NormalizePath, LeavesAnAbsolutePathWithoutTrailingSeparators)
{
    EXPECT_EQ(NormalizePath(L""), L"");
    EXPECT_EQ(NormalizePath(L"C:\\"), L"C:\\");
    EXPECT_EQ(NormalizePath(L"C:/Games//"), L"C:\\Games");
    EXPECT_EQ(NormalizePath(L"C:\\Games\\..\\Tools\\"), L"C:\\Tools");
    EXPECT_EQ(NormalizePath(L"C:\\Games\\\\\\"), L"C:\\Games");
    EXPECT_EQ(NormalizePath(L"C:\\A\\.\\b"), L"C:\\A\\b");
    EXPECT_EQ(NormalizePath(L"C:\\MiXeD\\Case"), L"C:\\MiXeD\\Case");
    // Relative paths are made absolute against the current directory.
    wchar_t current[MAX_PATH] = {};
    GetCurrentDirectoryW(MAX_PATH, current);
    EXPECT_EQ(NormalizePath(L"sub"), JoinPath(current, L"sub"));
}

TEST(PathPieces, JoinParentAndLastComponent)
{
    EXPECT_EQ(JoinPath(L"C:\\", L"x"), L"C:\\x");
    EXPECT_EQ(JoinPath(L"C:\\a", L"x"), L"C:\\a\\x");
    EXPECT_EQ(JoinPath(L"C:\\a/", L"x"), L"C:\\a/\\x");
    EXPECT_EQ(JoinPath(L"", L"x"), L"x");
    EXPECT_EQ(JoinPath(L"C:\\a", L""), L"C:\\a\\");
    EXPECT_EQ(JoinPath(L"C:", L"Games"), L"C:\\Games");

    EXPECT_EQ(ParentPath(L"file.txt"), L"");
    EXPECT_EQ(ParentPath(L"a\\b/c"), L"a\\b");
    EXPECT_EQ(ParentPath(L"C:\\"), L"C:");
    EXPECT_EQ(ParentPath(L"C:\\Games"), L"C:");

    EXPECT_EQ(LastPathComponent(L"C:\\Games\\Title"), L"Title");
    EXPECT_EQ(LastPathComponent(L"Title"), L"Title");
    EXPECT_EQ(LastPathComponent(L"C:\\"), L"");
    EXPECT_EQ(LastPathComponent(L"a/b"), L"b");

    EXPECT_TRUE(IsAbsoluteInForm(L"\\server"));
    EXPECT_TRUE(IsAbsoluteInForm(L"/x"));
    EXPECT_TRUE(IsAbsoluteInForm(L"D:relative"));
    EXPECT_FALSE(IsAbsoluteInForm(L"..\\Game"));
    EXPECT_FALSE(IsAbsoluteInForm(L""));
}

TEST(ReadWholeFile, ReadsUpToTheLimitAndNothingOfALargerFile)
{
    ScratchDirectory scratch(L"files");
    const Text exact = scratch / L"exact.bin";
    const Text over = scratch / L"over.bin";
    testing::WriteFileBytes(exact, Bytes(65536, 'x'));
    testing::WriteFileBytes(over, Bytes(65537, 'x'));
    EXPECT_EQ(ReadWholeFile(exact, kSmallFileLimit).size(), 65536u);
    EXPECT_TRUE(ReadWholeFile(over, kSmallFileLimit).empty());
    EXPECT_TRUE(ReadWholeFile(scratch / L"missing.bin", kSmallFileLimit).empty());
    EXPECT_TRUE(ReadWholeFile(scratch.Path(), kSmallFileLimit).empty()) << "a folder reads as nothing";

    // A byte-order mark is kept; the bytes are not interpreted.
    testing::WriteFileBytes(exact, "\xEF\xBB\xBF{}");
    EXPECT_EQ(ReadWholeFile(exact, kSmallFileLimit), "\xEF\xBB\xBF{}");

    // A file another process holds open for writing can still be read.
    UniqueFileHandle writer(CreateFileW(exact.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
        FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(writer);
    EXPECT_EQ(ReadWholeFile(exact, kSmallFileLimit), "\xEF\xBB\xBF{}");
}

TEST(ReplaceFileFromSibling, ReplacesWholeOrLeavesTheOldFile)
{
    ScratchDirectory scratch(L"replace");
    const Text target = scratch / L"selection.json";
    const Text sibling = scratch / (L"selection.json." + DecimalText(GetCurrentProcessId()) + L".tmp");
    testing::WriteFileBytes(target, "old");
    ASSERT_TRUE(ReplaceFileFromSibling(target, sibling, "new content"));
    EXPECT_EQ(testing::ReadFileBytes(target), "new content");
    EXPECT_FALSE(testing::FileExists(sibling));

    // A target held open without delete sharing cannot be replaced: the old bytes survive and
    // the sibling is removed.
    {
        UniqueFileHandle holder(CreateFileW(target.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(holder);
        EXPECT_FALSE(ReplaceFileFromSibling(target, sibling, "lost"));
    }
    EXPECT_EQ(testing::ReadFileBytes(target), "new content");
    EXPECT_FALSE(testing::FileExists(sibling));

    // A sibling that cannot be written ends the operation before the target is touched.
    EXPECT_FALSE(ReplaceFileFromSibling(target, scratch / L"no-such-folder\\x.tmp", "lost"));
    EXPECT_EQ(testing::ReadFileBytes(target), "new content");
}

TEST(WriteWholeFile, CreatesOrTruncates)
{
    ScratchDirectory scratch(L"write");
    const Text path = scratch / L"report.json";
    ASSERT_TRUE(WriteWholeFile(path, "a longer first content"));
    ASSERT_TRUE(WriteWholeFile(path, "short"));
    EXPECT_EQ(testing::ReadFileBytes(path), "short");
    EXPECT_FALSE(WriteWholeFile(scratch / L"missing\\report.json", "x"));
}

TEST(LauncherTempFiles, AreUniqueEmptyAndOwned)
{
    Text first;
    {
        TemporaryFile a(CreateLauncherTempFile());
        TemporaryFile b(CreateLauncherTempFile());
        ASSERT_FALSE(a.IsEmpty());
        ASSERT_NE(a.Path(), b.Path());
        EXPECT_TRUE(IsRegularFile(a.Path()));
        EXPECT_TRUE(testing::ReadFileBytes(a.Path()).empty());
        EXPECT_TRUE(StartsWithIgnoringCase(LastPathComponent(a.Path()), L"KVL"));
        first = a.Path();
        TemporaryFile moved(std::move(a));
        EXPECT_TRUE(a.IsEmpty());
        EXPECT_TRUE(IsRegularFile(first));
    }
    EXPECT_FALSE(testing::FileExists(first)) << "the owner deletes the file";
}

TEST(IsRegularFile, MeansExistingAndNotAFolder)
{
    ScratchDirectory scratch(L"regular");
    testing::WriteFileBytes(scratch / L"a.kvsdk", "{}");
    EXPECT_TRUE(IsRegularFile(scratch / L"a.kvsdk"));
    EXPECT_TRUE(IsRegularFile(scratch / L"A.KVSDK"));
    EXPECT_FALSE(IsRegularFile(scratch.Path()));
    EXPECT_FALSE(IsRegularFile(scratch / L"missing"));
    EXPECT_FALSE(IsRegularFile(L""));
    EXPECT_TRUE(IsDirectory(scratch.Path()));
}

}  // namespace
}  // namespace korvane
