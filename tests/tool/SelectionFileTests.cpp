// The tool's three-line answer to `prepare`, judged against files that really exist.
#include "TestSupport.h"

#include "tool/SelectionFile.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

constexpr wchar_t kModId[] = L"mod.0123456789abcdef0123456789abcdef";  // 36 units

Bytes Answer(TextView mod, TextView project, TextView id, TextView separator = L"\n")
{
    return TextToUtf8(Text(mod) + Text(separator) + Text(project) + Text(separator) + Text(id));
}

TEST(SelectionFile, LinesAndOneReadOfAtMost4096Bytes)
{
    const std::vector<Text> expected = {L"a", L"c\r", L"\x4E2D", L"last\r"};
    EXPECT_EQ(SelectionFileLines("a\r\n\n\r\nb\xC3\x28\nc\r\r\n\xE4\xB8\xAD\nlast\r"), expected);
    EXPECT_TRUE(SelectionFileLines("").empty());
    EXPECT_TRUE(SelectionFileLines("\n\r\n\n").empty());

    testing::ScratchDirectory scratch(L"selection-read");
    testing::WriteFileBytes(scratch / L"answer.txt", Bytes(5000, 'a'));
    EXPECT_EQ(ReadSelectionFile(scratch / L"answer.txt").size(), 4096u);
    testing::WriteFileBytes(scratch / L"answer.txt", "short");
    EXPECT_EQ(ReadSelectionFile(scratch / L"answer.txt"), "short");
    EXPECT_EQ(ReadSelectionFile(scratch / L"missing.txt"), "");
}

TEST(SelectionFile, AnAnswerPassesWholeOrNotAtAll)
{
    testing::ScratchDirectory scratch(L"selection");
    const Text mod = scratch / L"Mods\\A\\Mod.kmodproject";
    const Text project = scratch / L"Work\\KorvaneSDK.uproject";
    testing::WriteFileBytes(mod, "{}");
    testing::WriteFileBytes(project, "{}");
    const Text folderProject = scratch / L"Folder\\KorvaneSDK.uproject";
    testing::MakeDirectories(folderProject);
    const Text upper = L"mod.0123456789ABCDEF0123456789abcdef";
    const Bytes valid = Answer(mod, project, kModId);

    struct Row { Bytes content; const wchar_t* selectedMod; bool valid; const char* what; };
    const Row rows[] = {
        {valid, L"", true, "plain"},
        {Answer(mod, project, kModId, L"\r\n\n\r\n"), kModId, true, "CR LF ends and empty lines between"},
        {valid + "\n", kModId, true, "a last LF"},
        {Answer(mod, project, upper), kModId, false, "the id must equal the selected one exactly"},
        {Answer(mod, project, upper), L"", true, "any id when none is selected"},
        {valid + "\nfourth", L"", false, "a fourth line"},
        {TextToUtf8(mod + L"\n" + kModId), L"", false, "two lines"},
        {Answer(mod, project, L"mod.0123456789abcdef0123456789abcde"), L"", false, "an id of 35 units"},
        {Answer(mod, project, L"mod.0123456789abcdef0123456789abcdef0"), L"", false, "an id of 37 units"},
        {Answer(mod, project, L"Mod.0123456789abcdef0123456789abcdef"), L"", false, "the prefix is case-sensitive"},
        {valid + "\r", L"", false, "a CR without LF stays in the id"},
        {Answer(project, mod, kModId), L"", false, "swapped files"},
        {Answer(scratch / L"Mods\\B\\Mod.kmodproject", project, kModId), L"", false, "a missing Mod project"},
        {Answer(mod, folderProject, kModId), L"", false, "a folder named like the project"},
        {valid + Bytes(4095 - valid.size(), '\n'), L"", true, "4095 bytes"},
        {valid + Bytes(4096 - valid.size(), '\n'), L"", false, "4096 bytes"},
        {Bytes(20, 'x'), L"", false, "20 bytes"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(JudgeSelectionFile(row.content, row.selectedMod).has_value(), row.valid) << row.what;
    }
    const auto selection = JudgeSelectionFile(valid, L"");
    ASSERT_TRUE(selection.has_value());
    EXPECT_EQ(selection->modProjectFile, mod);
    EXPECT_EQ(selection->editorProject, project);
    EXPECT_EQ(selection->modId, kModId);
}

}  // namespace
}  // namespace korvane
