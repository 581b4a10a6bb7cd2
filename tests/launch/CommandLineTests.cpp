#include "launch/EntryOptions.h"

#include "launch/LaunchContext.h"
#include "launch/UiLanguage.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

struct Parsed {
    EntryOptions options;
    LaunchContext context;
    ArgumentsOutcome outcome = ArgumentsOutcome::Complete;
};

std::unique_ptr<Parsed> Parse(const std::vector<Text>& arguments)
{
    auto parsed = std::make_unique<Parsed>();
    parsed->context.languages = {{L"en", L"English"}, {L"zh-Hans", L"简体中文"}};
    parsed->outcome = ParseEntryArguments(arguments, parsed->options, parsed->context);
    return parsed;
}

TEST(EntryArguments, EachOptionSetsItsValue)
{
    const auto parsed = Parse({L"-KorvaneEmptyHost", L"-KorvaneHostContextReport=C:\\r.json", L"-KorvanePickerPreview",
        L"-KorvanePickerPreviewHidden", L"-KorvanePickerSnapshot=s.png", L"-KorvanePickerFixture=f.json",
        L"-KorvanePickerReport=p.json", L"-KorvanePickerPreviewMs=250", L"-KorvanePickerPreviewDpi=192",
        L"-KorvaneStartupPreview", L"-KorvaneStartupPreviewNoBackground", L"-KorvaneStartupPreviewDpi=144",
        L"-KorvaneStartupPreviewMs=60000", L"-KorvaneStartupReport=C:\\s.json", L"-KorvaneStartupPhase=Phase & more",
        L"-KorvaneWaitForEditorPid=1234", L"-KorvaneGameDir=C:\\Game", L"-sdk=C:\\a.kvsdk",
        L"-KorvaneSelectedMod=mod.1", L"-KorvaneModFile=C:\\m.umod", L"-extra"});
    const EntryOptions& o = parsed->options;
    const LaunchContext& c = parsed->context;
    EXPECT_TRUE(o.emptyHost);
    EXPECT_FALSE(o.headless);
    EXPECT_EQ(o.hostContextReportPath, L"C:\\r.json");
    EXPECT_TRUE(c.pickerPreview);
    EXPECT_TRUE(c.pickerPreviewHidden);
    EXPECT_EQ(c.pickerSnapshot, L"s.png");
    EXPECT_EQ(c.pickerFixture, L"f.json");
    EXPECT_EQ(c.pickerReport, L"p.json");
    EXPECT_EQ(c.pickerPreviewMs, 250u);
    EXPECT_EQ(c.previewDpi, 192u);
    EXPECT_TRUE(o.startupPreview);
    EXPECT_TRUE(o.startupPreviewNoBackground);
    EXPECT_EQ(o.startupPreviewDpi, 144u);
    EXPECT_EQ(o.startupPreviewMs, 60000u);
    EXPECT_EQ(o.startupReportPath, L"C:\\s.json");
    EXPECT_EQ(o.startupPhaseText, L"Phase & more");
    EXPECT_EQ(o.waitForEditorPid, 1234u);
    EXPECT_EQ(o.requestedGameDirectory, L"C:\\Game");
    EXPECT_EQ(c.requestedSdk, L"C:\\a.kvsdk");
    EXPECT_EQ(c.selectedMod, L"mod.1");
    EXPECT_EQ(c.modFile, L"C:\\m.umod");
    EXPECT_EQ(c.passThroughArguments, std::vector<Text>{L"-extra"});
}

TEST(EntryArguments, HeadlessModesSetTheirFlags)
{
    EXPECT_TRUE(Parse({L"-KorvaneResolveHostContext"})->options.resolveHostContext);
    EXPECT_TRUE(Parse({L"-KorvaneResolveHostContext"})->options.headless);
    EXPECT_TRUE(Parse({L"-KorvaneLauncherCheck"})->options.headless);
    EXPECT_FALSE(Parse({L"-KorvaneLauncherCheck"})->options.instanceCheck);
    const auto instance = Parse({L"-KorvaneInstanceCheck"});
    EXPECT_TRUE(instance->options.instanceCheck);
    EXPECT_TRUE(instance->options.headless);
}

TEST(EntryArguments, ValuesOutOfRangeAreIgnoredAndRepeatsOverwrite)
{
    const auto ignored = Parse({L"-KorvaneStartupPreviewDpi=120", L"-KorvaneStartupPreviewMs=249",
        L"-KorvanePickerPreviewMs=60001", L"-KorvanePickerPreviewDpi=96x", L"-KorvaneStartupPreviewMs=",
        L"-KorvaneStartupPreviewDpi=+144"});
    EXPECT_EQ(ignored->options.startupPreviewDpi, 96u);
    EXPECT_EQ(ignored->options.startupPreviewMs, 3000u);
    EXPECT_EQ(ignored->context.pickerPreviewMs, 0u);
    EXPECT_EQ(ignored->context.previewDpi, 96u);

    const auto repeated = Parse({L"-sdk=C:\\a.kvsdk", L"-sdk=C:\\b.kvsdk", L"-KorvaneStartupPreviewDpi=144",
        L"-KorvaneStartupPreviewDpi=192", L"-KorvaneStartupPreviewDpi=100"});
    EXPECT_EQ(repeated->context.requestedSdk, L"C:\\b.kvsdk");
    EXPECT_EQ(repeated->options.startupPreviewDpi, 192u);
}

TEST(EntryArguments, WaitForEditorPidIsReadLikeWcstoul)
{
    EXPECT_EQ(Parse({L"-KorvaneWaitForEditorPid=abc"})->options.waitForEditorPid, 0u);
    EXPECT_EQ(Parse({L"-KorvaneWaitForEditorPid=42abc"})->options.waitForEditorPid, 42u);
    EXPECT_EQ(Parse({L"-KorvaneWaitForEditorPid="})->options.waitForEditorPid, 0u);
    EXPECT_EQ(Parse({L"-KorvaneWaitForEditorPid= 7"})->options.waitForEditorPid, 7u);
}

TEST(EntryArguments, LetterCaseMattersExceptForTheFourPathOptions)
{
    const auto parsed = Parse({L"-korvanegamedir=C:\\G", L"-SDK=C:\\s.kvsdk", L"-korvaneselectedmod=mod.x",
        L"-korvaneemptyhost", L"-korvanemodfile=C:\\m.umod", L"-KORVANELAUNCHERCHECK"});
    EXPECT_EQ(parsed->options.requestedGameDirectory, L"C:\\G");
    EXPECT_EQ(parsed->context.requestedSdk, L"C:\\s.kvsdk");
    EXPECT_EQ(parsed->context.selectedMod, L"mod.x");
    EXPECT_FALSE(parsed->options.emptyHost);
    EXPECT_FALSE(parsed->options.headless);
    EXPECT_TRUE(parsed->context.modFile.empty());
    EXPECT_EQ(parsed->context.passThroughArguments,
        (std::vector<Text>{L"-korvaneemptyhost", L"-korvanemodfile=C:\\m.umod", L"-KORVANELAUNCHERCHECK"}));
}

TEST(EntryArguments, EmptyValuesOfNocaseOptionsPassThrough)
{
    const auto parsed = Parse({L"-KorvaneGameDir=", L"-sdk=", L"-KorvaneSelectedMod=", L"-KorvaneModFile="});
    EXPECT_TRUE(parsed->options.requestedGameDirectory.empty());
    EXPECT_TRUE(parsed->context.requestedSdk.empty());
    EXPECT_EQ(parsed->context.passThroughArguments,
        (std::vector<Text>{L"-KorvaneGameDir=", L"-sdk=", L"-KorvaneSelectedMod="}));
    EXPECT_TRUE(parsed->context.modFile.empty());
}

TEST(EntryArguments, SdkLooksAheadAndPositionalSdkFilesCount)
{
    const auto lookAhead = Parse({L"-sdk", L"-KorvaneLauncherCheck", L"Game.KVSDK"});
    EXPECT_EQ(lookAhead->context.requestedSdk, L"Game.KVSDK");
    EXPECT_FALSE(lookAhead->options.headless) << "the argument after -sdk is consumed untested";

    const auto nextIsValue = Parse({L"-Sdk", L"-KorvaneLauncherCheck"});
    EXPECT_EQ(nextIsValue->context.requestedSdk, L"-KorvaneLauncherCheck");

    const auto last = Parse({L"-sdk"});
    EXPECT_TRUE(last->context.requestedSdk.empty());
    EXPECT_EQ(last->context.passThroughArguments, std::vector<Text>{L"-sdk"});

    // A value ending in .kvsdk is taken as the SDK before the Mod file row is tested.
    const auto modFileSdk = Parse({L"-KorvaneModFile=C:\\x.kvsdk"});
    EXPECT_EQ(modFileSdk->context.requestedSdk, L"-KorvaneModFile=C:\\x.kvsdk");
    EXPECT_TRUE(modFileSdk->context.modFile.empty());
}

TEST(EntryArguments, ProjectFileStopsAtOnce)
{
    const auto stopped = Parse({L"-KorvaneLauncherCheck", L"C:\\Game\\Game.UPROJECT", L"-KorvaneStartupPreview"});
    EXPECT_EQ(stopped->outcome, ArgumentsOutcome::ProjectFileGiven);
    EXPECT_TRUE(stopped->options.headless);
    EXPECT_FALSE(stopped->options.startupPreview) << "arguments behind it are not read";

    const auto before = Parse({L"Game.uproject", L"-KorvaneLauncherCheck"});
    EXPECT_EQ(before->outcome, ArgumentsOutcome::ProjectFileGiven);
    EXPECT_FALSE(before->options.headless) << "the box is shown when the check option stands behind";
}

TEST(EntryArguments, PreviewLanguagesFollowTheirOwnRules)
{
    const auto picker = Parse({L"-KorvanePickerPreviewLanguage=zh-Hans"});
    EXPECT_EQ(picker->context.language, L"zh-Hans");
    EXPECT_TRUE(IsChineseUi());
    const auto english = Parse({L"-KorvanePickerPreviewLanguage=fr"});
    EXPECT_FALSE(IsChineseUi());
    static_cast<void>(english);

    EXPECT_TRUE(Parse({L"-KorvaneStartupPreviewLanguage=ZH-HANS"})->options.startupPreviewChinese);
    EXPECT_FALSE(Parse({L"-KorvaneStartupPreviewLanguage=zh_Hans"})->options.startupPreviewChinese);
    SetUiLanguage(L"en");
}

TEST(ParseDecimal, AcceptsDigitsOnly)
{
    std::uint32_t value = 5;
    EXPECT_TRUE(ParseDecimal(L"0144", value));
    EXPECT_EQ(value, 144u);
    EXPECT_FALSE(ParseDecimal(L"", value));
    EXPECT_FALSE(ParseDecimal(L"-1", value));
    EXPECT_FALSE(ParseDecimal(L"4294967296", value));
    EXPECT_TRUE(ParseDecimal(L"4294967295", value));
    EXPECT_EQ(value, 4294967295u);
}

}  // namespace
}  // namespace korvane
