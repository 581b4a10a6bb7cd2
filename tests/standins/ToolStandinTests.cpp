// The stand-in tool is fit for the launcher's tests: run for real in a sample install, it
// answers sdk-preview and prepare with its files, follows a scenario and logs every run.
#include "CapturedRun.h"
#include "SampleInstall.h"
#include "TestSupport.h"
#include "ToolCalls.h"

#include "foundation/Json.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(ToolStandin, AnswersPreviewAndPrepareFollowsItsScenarioAndLogsEachRun)
{
    testing::SampleInstall install(L"tool-smoke");
    testing::ScratchDirectory scratch(L"tool-smoke-files");
    const auto run = [&](const std::vector<Text>& arguments) {
        return testing::RunCaptured(install.ToolPath(), arguments, install.EditorRoot());
    };
    const testing::CapturedRun preview = run({L"sdk-preview", L"--sdk", install.SdkPath()});
    ASSERT_EQ(preview.exitCode, 0u) << preview.err;
    const JsonValue document = ParseJson(preview.out);
    EXPECT_EQ(FindJsonMember(document, L"editorBuildId").text, install.BuildId());
    const std::vector<JsonValue>& mods = FindJsonMember(document, L"mods").items;
    ASSERT_EQ(mods.size(), install.ModCount());
    for (size_t index = 0; index < mods.size(); ++index) {
        EXPECT_EQ(FindJsonMember(mods[index], L"id").text, install.ModId(index));
        EXPECT_EQ(FindJsonMember(mods[index], L"modProject").text, install.ModPackage(index));
    }

    const Text selection = scratch / L"selection.txt", progress = scratch / L"progress.json";
    const testing::CapturedRun prepare = run({L"prepare", L"--sdk", install.SdkPath(), L"--editor-root",
        install.EditorRoot(), L"--selection-file", selection, L"--mod-file", install.ModPackage(1), L"--progress-file",
        progress, L"--timing-report", scratch / L"timing.json"});
    ASSERT_EQ(prepare.exitCode, 0u) << prepare.err;
    const Text workspace = install.Workspace(1);
    EXPECT_EQ(testing::ReadFileBytes(selection),
        TextToUtf8(workspace + L"\\Mod.kmodproject\n" + workspace + L"\\KorvaneSDK.uproject\n" + install.ModId(1) + L"\n"));
    EXPECT_EQ(testing::ReadFileBytes(progress), "{\"stage\":\"complete\",\"cacheHit\":false}");
    EXPECT_FALSE(FindJsonMember(ParseJson(testing::ReadFileBytes(scratch / L"timing.json")), L"stages").items.empty());

    EXPECT_EQ(run({L"frobnicate"}).exitCode, 2u) << "an unknown command is refused";
    install.SetToolScenario(LR"({"*":{"exitCode":7,"stderr":"scripted"}})");
    const testing::CapturedRun scripted = run({L"sdk-preview", L"--sdk", install.SdkPath()});
    EXPECT_EQ(scripted.exitCode, 7u);
    EXPECT_EQ(scripted.err, "scripted");

    const std::vector<JsonValue> calls = install.ToolCalls();
    ASSERT_EQ(calls.size(), 4u);
    EXPECT_EQ(testing::Argv(calls[1]).at(1), L"prepare");
    EXPECT_TRUE(EqualsIgnoringCase(FindJsonMember(calls[1], L"cwd").text, install.EditorRoot()));
}

}  // namespace
}  // namespace korvane
