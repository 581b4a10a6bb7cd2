// The launcher's texts are constants shown as they stand; whole runs check that the right one
// comes up in the right language. What is left here is the rule for reading the tool's stage
// words, which no sample run reaches: a word in another letter case is no stage.
#include "TestSupport.h"

#include "tool/PrepareStage.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(UserTexts, StageWordsMatchOnlyInTheirOwnCase)
{
    const testing::ScopedUiLanguage english(L"en");
    EXPECT_EQ(StageText(L"sdkHash"), L"Computing the SDK content revision…");
    EXPECT_EQ(StageText(L"sdkhash"), L"Preparing the Mod…");
}

}  // namespace
}  // namespace korvane
