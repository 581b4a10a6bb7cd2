// The tool's three-line answer to `prepare`, judged against files that really exist.
#include "TestSupport.h"

#include "foundation/Paths.h"
#include "tool/SelectionFile.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using testing::ScratchDirectory;

constexpr wchar_t kModId[] = L"mod.0123456789abcdef0123456789abcdef";  // 36 units

class Workspace {
public:
    Workspace() : scratch_(L"selection")
    {
        testing::WriteFileBytes(ModProject(), "{}");
        testing::WriteFileBytes(EditorProject(), "{}");
    }
    Text ModProject() const { return scratch_ / L"Mods\\A\\Mod.kmodproject"; }
    Text EditorProject() const { return scratch_ / L"Work\\KorvaneSDK.uproject"; }
    Text Path(TextView relative) const { return scratch_ / relative; }

    Bytes Answer(TextView separator = L"\n", TextView id = kModId) const
    {
        return TextToUtf8(ModProject() + Text(separator) + EditorProject() + Text(separator) + Text(id));
    }

private:
    ScratchDirectory scratch_;
};

TEST(SelectionFile, LinesSplitAtLineFeedsAndSkipEmptyAndInvalidOnes)
{
    const std::vector<Text> lines = SelectionFileLines("a\r\n\n\r\nb\xC3\x28\nc\r\r\n\xE4\xB8\xAD\nlast\r");
    const std::vector<Text> expected = {L"a", L"c\r", L"\x4E2D", L"last\r"};
    EXPECT_EQ(lines, expected);
    EXPECT_TRUE(SelectionFileLines("").empty());
    EXPECT_TRUE(SelectionFileLines("\n\r\n\n").empty());
}

TEST(SelectionFile, AValidAnswerNamesBothFilesAndTheId)
{
    Workspace workspace;
    auto selection = JudgeSelectionFile(workspace.Answer(), L"");
    ASSERT_TRUE(selection.has_value());
    EXPECT_EQ(selection->modProjectFile, workspace.ModProject());
    EXPECT_EQ(selection->editorProject, workspace.EditorProject());
    EXPECT_EQ(selection->modId, kModId);

    EXPECT_TRUE(JudgeSelectionFile(workspace.Answer(L"\r\n\n\r\n"), kModId).has_value())
        << "CR LF ends and empty lines between the three";
    EXPECT_TRUE(JudgeSelectionFile(workspace.Answer() + "\n", kModId).has_value());

    const Text upper = L"mod.0123456789ABCDEF0123456789abcdef";
    EXPECT_FALSE(JudgeSelectionFile(workspace.Answer(L"\n", upper), kModId).has_value())
        << "the id must equal the selected one exactly";
    EXPECT_TRUE(JudgeSelectionFile(workspace.Answer(L"\n", upper), L"").has_value());
}

TEST(SelectionFile, BrokenAnswersAreRefusedWhole)
{
    Workspace workspace;
    const Bytes valid = workspace.Answer();

    EXPECT_FALSE(JudgeSelectionFile(valid + "\nfourth", L"").has_value()) << "a fourth line";
    EXPECT_FALSE(JudgeSelectionFile(TextToUtf8(workspace.ModProject() + L"\n" + kModId), L"").has_value());
    EXPECT_FALSE(JudgeSelectionFile(workspace.Answer(L"\n", L"mod.0123456789abcdef0123456789abcde"), L"").has_value())
        << "an id of 35 units";
    EXPECT_FALSE(JudgeSelectionFile(workspace.Answer(L"\n", L"mod.0123456789abcdef0123456789abcdef0"), L"").has_value());
    EXPECT_FALSE(JudgeSelectionFile(workspace.Answer(L"\n", L"Mod.0123456789abcdef0123456789abcdef"), L"").has_value())
        << "the prefix is case-sensitive";
    EXPECT_FALSE(JudgeSelectionFile(valid + "\r", L"").has_value()) << "a CR without LF stays in the id";

    const Bytes swapped = TextToUtf8(workspace.EditorProject() + L"\n" + workspace.ModProject() + L"\n" + kModId);
    EXPECT_FALSE(JudgeSelectionFile(swapped, L"").has_value());

    const Text missingMod = workspace.Path(L"Mods\\B\\Mod.kmodproject");
    EXPECT_FALSE(JudgeSelectionFile(TextToUtf8(missingMod + L"\n" + workspace.EditorProject() + L"\n" + kModId), L"")
                     .has_value());
    const Text folderNamedLikeProject = workspace.Path(L"Folder\\KorvaneSDK.uproject");
    testing::MakeDirectories(folderNamedLikeProject);
    EXPECT_FALSE(JudgeSelectionFile(
        TextToUtf8(workspace.ModProject() + L"\n" + folderNamedLikeProject + L"\n" + kModId), L"")
                     .has_value());

    // Size bounds hold whatever the content: a valid answer padded to 4096 bytes with empty
    // lines is refused, at 4095 it passes.
    Bytes padded = valid + Bytes(4095 - valid.size(), '\n');
    EXPECT_TRUE(JudgeSelectionFile(padded, L"").has_value());
    padded += '\n';
    EXPECT_FALSE(JudgeSelectionFile(padded, L"").has_value());
    EXPECT_FALSE(JudgeSelectionFile(Bytes(20, 'x'), L"").has_value());
}

TEST(SelectionFile, OneReadOfAtMost4096Bytes)
{
    Workspace workspace;
    const Text path = workspace.Path(L"answer.txt");
    testing::WriteFileBytes(path, Bytes(5000, 'a'));
    EXPECT_EQ(ReadSelectionFile(path).size(), 4096u);
    testing::WriteFileBytes(path, "short");
    EXPECT_EQ(ReadSelectionFile(path), "short");
    EXPECT_EQ(ReadSelectionFile(workspace.Path(L"missing.txt")), "");
}

}  // namespace
}  // namespace korvane
