// The pure pieces of the tool bridge: stage lines, progress and timing files, the error a
// failed run reports, the SDK arguments, the source listing and the conflict markers.
#include "foundation/Text.h"
#include "launch/UiLanguage.h"
#include "tool/ModSource.h"
#include "tool/Preparation.h"
#include "tool/PrepareStage.h"
#include "tool/ProgressFile.h"
#include "tool/ToolOutcome.h"
#include "tool/ToolRun.h"

#include <gtest/gtest.h>

#include <windows.h>
#include <shellapi.h>

#include <stdexcept>
#include <vector>

namespace korvane {
namespace {

// Switches the process-wide language for one scope.
class UiLanguageScope {
public:
    explicit UiLanguageScope(TextView code) { SetUiLanguage(code); }
    ~UiLanguageScope() { SetUiLanguage(L"en"); }
};

std::vector<Text> SplitLikeTheChild(const Text& commandLine)
{
    int count = 0;
    LPWSTR* argv = CommandLineToArgvW(commandLine.c_str(), &count);
    std::vector<Text> words(argv, argv + count);
    LocalFree(argv);
    return words;
}

TEST(StageText, EveryWordInBothLanguagesAndCaseMatters)
{
    struct Row {
        const wchar_t* word;
        const wchar_t* english;
        const wchar_t* chinese;
    };
    const Row rows[] = {
        {L"sdkMetadata", L"Reading SDK metadata…", L"读取 SDK 元数据…"},
        {L"sdkVerify", L"Verifying SDK payload integrity…", L"校验 SDK 内容完整性…"},
        {L"sdkHash", L"Computing the SDK content revision…", L"计算 SDK 内容版本…"},
        {L"cacheVerify", L"Verifying the local SDK cache…", L"校验本地 SDK 缓存…"},
        {L"materialize", L"Preparing local SDK files…", L"准备本地 SDK 文件…"},
        {L"sourceInspect", L"Verifying the Mod source…", L"校验 Mod 源码…"},
        {L"workspacePrepare", L"Preparing the Mod workspace…", L"准备 Mod 工作区…"},
        {L"pluginsApply", L"Applying SDK plugins…", L"应用 SDK 插件…"},
        {L"complete", L"Workspace preparation complete…", L"工作区准备完成…"},
        {L"sdkhash", L"Preparing the Mod…", L"正在准备 Mod…"},
        {L"", L"Preparing the Mod…", L"正在准备 Mod…"},
        {L"complete ", L"Preparing the Mod…", L"正在准备 Mod…"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(StageText(row.word), row.english) << row.word;
    }
    UiLanguageScope chinese(L"zh-Hans");
    for (const Row& row : rows) {
        EXPECT_EQ(StageText(row.word), row.chinese) << row.word;
    }
}

TEST(ProgressFile, LinesFollowChangesAndCarryTheCacheState)
{
    ProgressFileFollower follower;
    std::int32_t cacheHit = -1;

    EXPECT_EQ(follower.Take("", cacheHit), std::nullopt) << "an empty or oversized read shows nothing";
    EXPECT_EQ(follower.Take(R"({"stage":"sdkHash"})", cacheHit), Text(L"Computing the SDK content revision…"))
        << "no cache state yet: no suffix";
    EXPECT_EQ(follower.Take(R"({"stage":"sdkHash"})", cacheHit), std::nullopt) << "unchanged bytes are shown once";
    EXPECT_EQ(follower.Take(R"({"stage":"cacheVerify","cacheHit":fal)", cacheHit), std::nullopt)
        << "a file caught half written";
    EXPECT_EQ(cacheHit, -1);
    EXPECT_EQ(follower.Take(R"({"stage":"cacheVerify","cacheHit":false})", cacheHit),
        Text(L"Verifying the local SDK cache… · Creating the SDK cache"));
    EXPECT_EQ(cacheHit, 0);
    EXPECT_EQ(follower.Take(R"({"stage":"materialize"})", cacheHit),
        Text(L"Preparing local SDK files… · Creating the SDK cache"))
        << "a later file without the key keeps the state";
    EXPECT_EQ(follower.Take(R"({"stage":"materialize","cacheHit":"true"})", cacheHit),
        Text(L"Preparing local SDK files… · SDK cache hit, verifying"))
        << "only the value's text is compared";
    EXPECT_EQ(cacheHit, 1);
    EXPECT_EQ(follower.Take(R"({"stage":"materialize","cacheHit":1})", cacheHit),
        Text(L"Preparing local SDK files… · SDK cache hit, verifying"));
    EXPECT_EQ(cacheHit, 1) << "any other text leaves the state";
    EXPECT_EQ(follower.Take(R"({"stage":"sdkHash"})", cacheHit),
        Text(L"Computing the SDK content revision… · SDK cache hit, verifying"))
        << "the same bytes after different ones are shown again";
    EXPECT_EQ(follower.Take(R"(["sdkHash"])", cacheHit), Text(L"Preparing the Mod… · SDK cache hit, verifying"));

    UiLanguageScope chinese(L"zh-Hans");
    std::int32_t fresh = -1;
    ProgressFileFollower other;
    EXPECT_EQ(other.Take(R"({"stage":"complete","cacheHit":true})", fresh), Text(L"工作区准备完成… · SDK 缓存命中，正在校验"));
    EXPECT_EQ(other.Take(R"({"cacheHit":false})", fresh), Text(L"正在准备 Mod… · 正在从 SDK 创建缓存"));
}

TEST(ProgressFile, TimingReportLastRowWithTheKeyWins)
{
    std::int32_t cacheHit = 1;
    ApplyTimingReport(R"({"stages":[{"cacheHit":true},{"name":"x"},{"cacheHit":false},{"cacheHit":"maybe"}]})", cacheHit);
    EXPECT_EQ(cacheHit, 0);

    cacheHit = 0;
    ApplyTimingReport(R"({"stages":[{"cacheHit":false},{"cacheHit":"true"}],"cacheHit":false})", cacheHit);
    EXPECT_EQ(cacheHit, 1) << "only rows of stages count";

    cacheHit = 1;
    ApplyTimingReport("", cacheHit);
    ApplyTimingReport(R"({"stages":[{"cacheHit":false}])", cacheHit);
    ApplyTimingReport(R"({"stages":[{"cacheHit":false}],"stages":[]})", cacheHit);
    EXPECT_EQ(cacheHit, 1) << "a missing, broken or refused report changes nothing";

    cacheHit = -1;
    ApplyTimingReport(R"({"stages":[{"durationMs":12}]})", cacheHit);
    EXPECT_EQ(cacheHit, -1);
}

TEST(ToolOutcome, ErrorComesFromStandardErrorThenOutputThenTheNumber)
{
    Text error;
    CompleteToolError(3, "from stdout", "from stderr", error);
    EXPECT_EQ(error, L"from stderr");

    error.clear();
    CompleteToolError(3, "from stdout", "", error);
    EXPECT_EQ(error, L"from stdout");

    error.clear();
    CompleteToolError(3, "from stdout \xE4\xB8\xAD", "bad \xC3\x28 utf-8", error);
    EXPECT_EQ(error, L"from stdout \x4E2D") << "standard error that is not UTF-8 counts as no text";

    error.clear();
    CompleteToolError(3, "\xFF", "", error);
    EXPECT_EQ(error, L"KorvaneTool failed (exit code 3).");

    error.clear();
    CompleteToolError(0xC0000005u, "", "", error);
    EXPECT_EQ(error, L"KorvaneTool failed (exit code 3221225477).") << "never a negative number";

    error = L"Operation cancelled.";
    CompleteToolError(1223, "out", "err", error);
    EXPECT_EQ(error, L"Operation cancelled.") << "a message already set stays";

    error.clear();
    CompleteToolError(0, "out", "warnings on stderr", error);
    EXPECT_EQ(error, L"") << "a success has no error";

    error.clear();
    CompleteToolError(2, "", Bytes(10000, 'e'), error);
    EXPECT_EQ(error, Text(8192, L'e'));

    UiLanguageScope chinese(L"zh-Hans");
    error.clear();
    CompleteToolError(4294967295u, "", "", error);
    EXPECT_EQ(error, L"KorvaneTool 失败（退出码 4294967295).");
    EXPECT_EQ(ToolStartFailedText(2), L"无法启动 KorvaneTool（Windows 错误 2).");
}

TEST(ToolArguments, SdkArgumentsSplitBackExactly)
{
    EXPECT_EQ(BuildSdkArguments(L"C:\\Sdk\\Game.kvsdk", L""), L" --sdk \"C:\\Sdk\\Game.kvsdk\"");
    EXPECT_EQ(BuildSdkArguments(L"C:\\A.kvsdk", L"C:\\Games\\Title\\"),
        L" --sdk \"C:\\A.kvsdk\" --game-root \"C:\\Games\\Title\\\\\"");

    const Text sdk = L"C:\\Program Files\\\"Odd\" \x6E38\x620F\\A.kvsdk";
    const Text game = L"D:\\Games\\Title\\";
    const std::vector<Text> words = SplitLikeTheChild(L"\"C:\\Tool.exe\" sdk-preview" + BuildSdkArguments(sdk, game));
    const std::vector<Text> expected = {L"C:\\Tool.exe", L"sdk-preview", L"--sdk", sdk, L"--game-root", game};
    EXPECT_EQ(words, expected);
}

TEST(ModSourceListing, FirstExactIdDecides)
{
    const Bytes listing = R"({"mods":[{"id":"mod.A","modProject":"C:\\a-upper.kvmod"},)"
                          R"({"id":"mod.a","modProject":"C:\\a-first.kvmod"},)"
                          R"({"id":"mod.a","modProject":"C:\\a-second.kvmod"},)"
                          R"({"id":"mod.empty","modProject":""}]})";
    EXPECT_EQ(FindModSourceInListing(listing, L"mod.a"), L"C:\\a-first.kvmod");
    EXPECT_EQ(FindModSourceInListing(listing, L"mod.A"), L"C:\\a-upper.kvmod");
    EXPECT_EQ(FindModSourceInListing(listing, L"mod.b"), L"");
    EXPECT_EQ(FindModSourceInListing(listing, L"mod.empty"), L"");
    EXPECT_EQ(FindModSourceInListing(R"({"other":[]})", L"mod.a"), L"") << "no mods reads as an empty list";
    EXPECT_THROW(FindModSourceInListing("", L"mod.a"), std::runtime_error);
    EXPECT_THROW(FindModSourceInListing(R"({"mods":[})", L"mod.a"), std::runtime_error);
}

TEST(ConflictMarkers, ExactTextAnywhereInTheMessage)
{
    EXPECT_TRUE(HasConflictMarker(L"error: KV3651: source changed while a workspace exists (C:\\x)"));
    EXPECT_TRUE(HasConflictMarker(L"KV3648: source changed outside the Editor"));
    EXPECT_FALSE(HasConflictMarker(L"KV3651: Source changed while a workspace exists"));
    EXPECT_FALSE(HasConflictMarker(L"kv3648: source changed outside the editor"));
    EXPECT_FALSE(HasConflictMarker(L"KV3651: source changed"));
    EXPECT_EQ(ResolutionForAnswer(IDYES), Text(L"workspace"));
    EXPECT_EQ(ResolutionForAnswer(IDNO), Text(L"source"));
    EXPECT_EQ(ResolutionForAnswer(IDCANCEL), std::nullopt);
}

}  // namespace
}  // namespace korvane
