// Removal on the real file system: only a plain ".umod" file goes to the shell, and whatever the
// shell answers, the file is looked at afterwards. Wine's shell cannot recycle (IFileOperation is
// not implemented), so there a plain package ends in the failure message and stays.
#include "TestSupport.h"

#include "context/UiLanguage.h"
#include "picker/ModRemoval.h"
#include "picker/PickerTexts.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(MoveModToRecycleBin, RefusesAllButAPlainPackageAndChecksThatTheFileIsGone)
{
    const testing::ScopedUiLanguage english(L"en");
    testing::ScratchDirectory scratch(L"mod-removal");
    testing::WriteFileText(scratch / L"Plain.umod", L"package");
    testing::WriteFileText(scratch / L"Loud.UMOD", L"package");
    testing::WriteFileText(scratch / L"Backup.umod.bak", L"package");
    testing::MakeDirectories(scratch / L"Folder.umod");
    const struct {
        const wchar_t* name;
        const LocalizedText& message;
    } rows[] = {
        {L"Backup.umod.bak", kRemoveRefusedMessage},
        {L"Missing.umod", kRemoveRefusedMessage},
        {L"Folder.umod", kRemoveRefusedMessage},
        {L"Plain.umod", kRemoveFailedMessage},  // to the shell, which fails under Wine
        {L"Loud.UMOD", kRemoveFailedMessage},   // the extension in any case
    };
    for (const auto& row : rows) {
        Text error;
        EXPECT_FALSE(MoveModToRecycleBin(nullptr, scratch / row.name, error)) << TextToUtf8(row.name);
        EXPECT_EQ(error, row.message.In(false)) << TextToUtf8(row.name);
    }
    for (const wchar_t* kept : {L"Plain.umod", L"Loud.UMOD", L"Backup.umod.bak", L"Folder.umod"}) {
        EXPECT_TRUE(testing::FileExists(scratch / kept)) << TextToUtf8(kept);
    }
}

}  // namespace
}  // namespace korvane
