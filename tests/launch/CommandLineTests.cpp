#include "launch/EntryOptions.h"

#include "TestSupport.h"

#include "context/LaunchContext.h"
#include "context/UiLanguage.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// Parses the arguments and names what differs from the defaults, in a fixed order, so that a
// row also fails when an argument sets something it should not.
Text Describe(const std::vector<Text>& arguments)
{
    const testing::ScopedUiLanguage english(L"en");
    EntryOptions o;
    LaunchContext c;
    c.languages = {{L"en", L"English"}, {L"zh-Hans", L"简体中文"}};
    Text d = ParseEntryArguments(arguments, o, c) == ArgumentsOutcome::ProjectFileGiven ? L"stop;" : L"";
    const auto text = [&d](const wchar_t* name, const Text& value) {
        d += value.empty() ? Text() : Text(name) + L"=" + value + L";";
    };
    const auto flag = [&d](const wchar_t* name, bool value) { d += value ? Text(name) + L";" : Text(); };
    const auto number = [&text](const wchar_t* name, std::uint32_t value, std::uint32_t standard) {
        text(name, value == standard ? Text() : std::to_wstring(value));
    };
    flag(L"emptyHost", o.emptyHost);
    flag(L"resolve", o.resolveHostContext);
    text(L"report", o.hostContextReportPath);
    flag(L"headless", o.headless);
    flag(L"instance", o.instanceCheck);
    flag(L"picker", c.pickerPreview);
    flag(L"pickerHidden", c.pickerPreviewHidden);
    text(L"snapshot", c.pickerSnapshot);
    text(L"fixture", c.pickerFixture);
    text(L"pickerReport", c.pickerReport);
    number(L"pickerMs", c.pickerPreviewMs, 0);
    number(L"pickerDpi", c.previewDpi, 96);
    text(L"language", c.language);
    flag(L"chineseUi", IsChineseUi());
    flag(L"startup", o.startupPreview);
    flag(L"noBackground", o.startupPreviewOptions.noBackground);
    flag(L"startupChinese", o.startupPreviewOptions.chinese);
    number(L"startupDpi", o.startupPreviewOptions.dpi, 96);
    number(L"startupMs", o.startupPreviewOptions.durationMs, 3000);
    text(L"startupReport", o.startupPreviewOptions.reportPath);
    text(L"phase", o.startupPreviewOptions.phaseText);
    number(L"pid", o.waitForEditorPid, 0);
    text(L"game", o.requestedGameDirectory);
    text(L"sdk", c.requestedSdk);
    text(L"mod", c.selectedMod);
    text(L"modFile", c.modFile);
    for (const Text& word : c.passThroughArguments) {
        text(L"pass", word);
    }
    return d;
}

TEST(EntryArguments, OptionTable)
{
    const struct {
        std::vector<Text> arguments;
        Text expected;
    } rows[] = {
        {{L"-KorvaneEmptyHost", L"-KorvaneHostContextReport=C:\\r.json", L"-KorvanePickerPreview",
             L"-KorvanePickerPreviewHidden", L"-KorvanePickerSnapshot=s.png", L"-KorvanePickerFixture=f.json",
             L"-KorvanePickerReport=p.json", L"-KorvanePickerPreviewMs=250", L"-KorvanePickerPreviewDpi=192",
             L"-KorvaneStartupPreview", L"-KorvaneStartupPreviewNoBackground", L"-KorvaneStartupPreviewDpi=144",
             L"-KorvaneStartupPreviewMs=60000", L"-KorvaneStartupReport=C:\\s.json", L"-KorvaneStartupPhase=P & Q",
             L"-KorvaneWaitForEditorPid=1234", L"-KorvaneGameDir=C:\\Game", L"-sdk=C:\\a.kvsdk",
             L"-KorvaneSelectedMod=mod.1", L"-KorvaneModFile=C:\\m.umod", L"-extra"},
            L"emptyHost;report=C:\\r.json;picker;pickerHidden;snapshot=s.png;fixture=f.json;pickerReport=p.json;"
            L"pickerMs=250;pickerDpi=192;startup;noBackground;startupDpi=144;startupMs=60000;"
            L"startupReport=C:\\s.json;phase=P & Q;pid=1234;game=C:\\Game;sdk=C:\\a.kvsdk;mod=mod.1;"
            L"modFile=C:\\m.umod;pass=-extra;"},
        {{L"-KorvaneResolveHostContext"}, L"resolve;headless;"},
        {{L"-KorvaneLauncherCheck"}, L"headless;"},
        {{L"-KorvaneInstanceCheck"}, L"headless;instance;"},
        // Values out of range or not strictly decimal are ignored; 4294967546 wraps to 250.
        {{L"-KorvaneStartupPreviewDpi=120", L"-KorvaneStartupPreviewMs=249", L"-KorvanePickerPreviewMs=60001",
             L"-KorvanePickerPreviewDpi=96x", L"-KorvaneStartupPreviewMs=", L"-KorvaneStartupPreviewDpi=+144",
             L"-KorvanePickerPreviewMs=4294967546"},
            L""},
        {{L"-KorvaneStartupPreviewDpi=0144"}, L"startupDpi=144;"},
        {{L"-sdk=C:\\a.kvsdk", L"-sdk=C:\\b.kvsdk", L"-KorvaneStartupPreviewDpi=192", L"-KorvaneStartupPreviewDpi=100"},
            L"startupDpi=192;sdk=C:\\b.kvsdk;"},
        {{L"-KorvaneWaitForEditorPid=5", L"-KorvaneWaitForEditorPid=abc"}, L""},
        {{L"-KorvaneWaitForEditorPid=42abc"}, L"pid=42;"},
        {{L"-KorvaneWaitForEditorPid= 7"}, L"pid=7;"},
        // Letter case matters except for the game, SDK and Mod options.
        {{L"-korvanegamedir=C:\\G", L"-SDK=C:\\s.kvsdk", L"-korvaneselectedmod=mod.x", L"-korvaneemptyhost",
             L"-korvanemodfile=C:\\m.umod", L"-KORVANELAUNCHERCHECK"},
            L"game=C:\\G;sdk=C:\\s.kvsdk;mod=mod.x;pass=-korvaneemptyhost;pass=-korvanemodfile=C:\\m.umod;"
            L"pass=-KORVANELAUNCHERCHECK;"},
        {{L"-KorvaneGameDir=", L"-sdk=", L"-KorvaneSelectedMod=", L"-KorvaneModFile="},
            L"pass=-KorvaneGameDir=;pass=-sdk=;pass=-KorvaneSelectedMod=;"},
        // The word after -sdk is taken untested; a trailing -sdk passes through.
        {{L"-sdk", L"-KorvaneLauncherCheck", L"Game.KVSDK"}, L"sdk=Game.KVSDK;"},
        {{L"-Sdk", L"-KorvaneLauncherCheck"}, L"sdk=-KorvaneLauncherCheck;"},
        {{L"-sdk"}, L"pass=-sdk;"},
        {{L"-KorvaneModFile=C:\\x.kvsdk"}, L"sdk=-KorvaneModFile=C:\\x.kvsdk;"},
        // A project file ends the reading at once.
        {{L"-KorvaneLauncherCheck", L"C:\\Game\\Game.UPROJECT", L"-KorvaneStartupPreview"}, L"stop;headless;"},
        {{L"Game.uproject", L"-KorvaneLauncherCheck"}, L"stop;"},
        {{L"-KorvanePickerPreviewLanguage=zh_Hans"}, L"language=zh-Hans;chineseUi;"},
        {{L"-KorvanePickerPreviewLanguage=fr"}, L"language=en;"},
        {{L"-KorvaneStartupPreviewLanguage=ZH-HANS"}, L"startupChinese;"},
        {{L"-KorvaneStartupPreviewLanguage=zh_Hans"}, L""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Describe(row.arguments), row.expected) << TextToUtf8(row.arguments.front());
    }
}

}  // namespace
}  // namespace korvane
