// The stand-in tool run for real inside a sample install: its commands, its refusals and each
// scenario key.
#include "CapturedRun.h"
#include "SampleInstall.h"
#include "TestSupport.h"

#include "foundation/Json.h"
#include "foundation/Paths.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using testing::CapturedRun;
using testing::SampleInstall;

class ToolBench {
public:
    explicit ToolBench(TextView label) : install(label), scratch(Text(label) + L"-files") {}

    CapturedRun Run(const std::vector<Text>& arguments, DWORD timeoutMs = 60000) const
    {
        return testing::RunCaptured(install.ToolPath(), arguments, install.EditorRoot(), timeoutMs);
    }

    // prepare for one Mod, with the three files in the scratch folder.
    std::vector<Text> PrepareArguments(size_t mod, TextView gameRoot = {}) const
    {
        testing::WriteFileBytes(Selection(), "");
        std::vector<Text> arguments = {L"prepare", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot(),
            L"--selection-file", Selection()};
        if (!gameRoot.empty()) {
            arguments.insert(arguments.end(), {L"--game-root", Text(gameRoot)});
        }
        arguments.insert(arguments.end(), {L"--mod-file", install.ModPackage(mod), L"--progress-file", Progress(),
                                              L"--timing-report", Timing()});
        return arguments;
    }

    Text Selection() const { return scratch / L"selection.txt"; }
    Text Progress() const { return scratch / L"progress.json"; }
    Text Timing() const { return scratch / L"timing.json"; }

    SampleInstall install;
    testing::ScratchDirectory scratch;
};

JsonValue ParseOutput(const CapturedRun& run)
{
    try {
        return ParseJson(run.out);
    } catch (const std::exception& error) {
        ADD_FAILURE() << "output is not JSON: " << error.what() << ": " << run.out.substr(0, 200);
        return {};
    }
}

// The "mods" array of a run's answer, copied out of the parsed document.
std::vector<JsonValue> ModsOf(const CapturedRun& run)
{
    return FindJsonMember(ParseOutput(run), L"mods").items;
}

Text Member(const JsonValue& value, TextView key)
{
    return FindJsonMember(value, key).text;
}

// "prepare" and so on: the command word of each logged call, joined.
std::vector<Text> LoggedArguments(const JsonValue& call)
{
    std::vector<Text> arguments;
    const auto& items = FindJsonMember(call, L"argv").items;
    for (size_t index = 1; index < items.size(); ++index) {
        arguments.push_back(items[index].text);
    }
    return arguments;
}

TEST(ToolStandin, TakesEveryCommandInItsOrderAndRefusesAnythingElse)
{
    ToolBench bench(L"tool-grammar");
    const SampleInstall& install = bench.install;
    const Text& sdk = install.SdkPath();
    const Text& editor = install.EditorRoot();
    const Text& game = install.GameDirectory();
    const Text cover = install.Root() + L"\\Skyhaven\\Mods\\Covers\\LanternFestival.png";
    const Text imported = bench.scratch / L"Imported.umod";
    testing::WriteFileText(imported,
        L"{\"format\":\"KorvaneModSource\",\"schemaVersion\":1,\"id\":\"mod.0123456789abcdef0123456789abcdef\","
        L"\"name\":\"Imported\",\"authorName\":\"Someone\",\"supportedGameVersions\":[\"1.4\"],\"coverPath\":\"\"}");

    const std::vector<std::vector<Text>> accepted = {
        {L"sdk-preview", L"--sdk", sdk},
        {L"sdk-preview", L"--sdk", sdk, L"--game-root", game},
        {L"list-sources", L"--sdk", sdk, L"--editor-root", editor},
        {L"list-sources", L"--sdk", sdk, L"--editor-root", editor, L"--game-root", game},
        {L"resolve-source", L"--sdk", sdk, L"--mod-file", install.ModPackage(0), L"--resolution", L"workspace"},
        {L"resolve-source", L"--sdk", sdk, L"--mod-file", install.ModPackage(0), L"--resolution", L"source"},
        bench.PrepareArguments(0, game),
        bench.PrepareArguments(1),
        {L"prepare", L"--sdk", sdk, L"--editor-root", editor, L"--selection-file", bench.Selection(), L"--mod-file",
            install.ModPackage(2), L"--progress-file", L"", L"--timing-report", L""},
        {L"create", L"--sdk", sdk, L"--game-root", game, L"--editor-root", editor, L"--cover", cover, L"--name",
            L"Full Create", L"--author-name", L"A", L"--output-file", bench.scratch / L"Full.umod"},
        {L"create", L"--sdk", sdk, L"--editor-root", editor, L"--name", L"Bare Create", L"--author-name", L"B"},
        {L"translations", L"create", L"--sdk", sdk, L"--editor-root", editor, L"--name", L"Translated",
            L"--author-name", L"C"},
        {L"import-source", L"--sdk", sdk, L"--game-root", game, L"--editor-root", editor, L"--mod-file", imported},
        {L"sdk-info", L"--sdk", sdk, L"--editor-root", editor},
    };
    for (const auto& arguments : accepted) {
        const CapturedRun run = bench.Run(arguments);
        EXPECT_EQ(run.exitCode, 0u) << TextToUtf8(arguments[0]) << ": " << run.err;
    }

    const std::vector<std::vector<Text>> refused = {
        {},
        {L"frobnicate", L"--sdk", sdk},
        {L"SDK-PREVIEW", L"--sdk", sdk},
        {L"translations", L"--sdk", sdk},
        {L"sdk-preview"},
        {L"sdk-preview", L"--sdk"},
        {L"sdk-preview", L"--sdk", L""},
        {L"sdk-preview", L"-sdk", sdk},
        {L"sdk-preview", L"--sdk", sdk, L"--game-root", L""},
        {L"sdk-preview", L"--game-root", game, L"--sdk", sdk},
        {L"sdk-preview", L"--sdk", sdk, L"--sdk", sdk},
        {L"list-sources", L"--editor-root", editor, L"--sdk", sdk},
        {L"list-sources", L"--sdk", sdk, L"--game-root", game, L"--editor-root", editor},
        {L"resolve-source", L"--sdk", sdk, L"--mod-file", install.ModPackage(0), L"--resolution", L"Workspace"},
        {L"prepare", L"--sdk", sdk, L"--editor-root", editor, L"--selection-file", bench.Selection(), L"--mod-file",
            install.ModPackage(0), L"--progress-file", bench.Progress()},
        {L"prepare", L"--sdk", sdk, L"--editor-root", editor, L"--mod-file", install.ModPackage(0),
            L"--selection-file", bench.Selection(), L"--progress-file", L"", L"--timing-report", L""},
        {L"create", L"--sdk", sdk, L"--editor-root", editor, L"--author-name", L"A", L"--name", L"N"},
        {L"create", L"--sdk", sdk, L"--editor-root", editor, L"--name", L"N", L"--author-name", L"A",
            L"--output-file", L""},
        {L"import-source", L"--sdk", sdk, L"--mod-file", imported},
        {L"sdk-info", L"--sdk", sdk, L"--editor-root", editor, L"extra"},
    };
    const size_t logged = install.ToolCalls().size();
    for (const auto& arguments : refused) {
        const CapturedRun run = bench.Run(arguments);
        EXPECT_EQ(run.exitCode, 2u) << (arguments.empty() ? "" : TextToUtf8(arguments.back()));
        EXPECT_EQ(run.err.rfind("KorvaneTool: ", 0) == 0 || run.err.rfind("--resolution", 0) == 0, true) << run.err;
        EXPECT_TRUE(run.out.empty());
    }
    // Every run, refused or not, leaves one line with its arguments, directory and process id.
    const std::vector<JsonValue> calls = install.ToolCalls();
    ASSERT_EQ(calls.size(), logged + refused.size());
    EXPECT_EQ(LoggedArguments(calls[0]), accepted[0]);
    EXPECT_EQ(FindJsonMember(calls[0], L"argv").items[0].text, install.ToolPath());
    EXPECT_TRUE(EqualsIgnoringCase(Member(calls[0], L"cwd"), install.EditorRoot()));
    EXPECT_NE(Member(calls[0], L"pid"), L"");
    EXPECT_EQ(LoggedArguments(calls.back()), refused.back());
}

TEST(ToolStandin, PreviewAndSourceListingDescribeTheSdk)
{
    ToolBench bench(L"tool-preview");
    const SampleInstall& install = bench.install;
    const CapturedRun preview = bench.Run({L"sdk-preview", L"--sdk", install.SdkPath(), L"--game-root", install.GameDirectory()});
    ASSERT_EQ(preview.exitCode, 0u) << preview.err;
    EXPECT_EQ(preview.out.find('\n'), preview.out.size() - 1) << "one line";
    const JsonValue document = ParseOutput(preview);
    EXPECT_EQ(Member(document, L"sdkFile"), install.SdkPath());
    EXPECT_EQ(Member(FindJsonMember(document, L"gameInfo"), L"displayName"), L"Skyhaven");
    EXPECT_EQ(Member(document, L"gameVersion"), L"1.4.2");
    EXPECT_EQ(Member(document, L"engineVersion").substr(0, 6), L"5.6.1-");
    EXPECT_EQ(Member(document, L"editorBuildId"), install.BuildId());
    EXPECT_EQ(Member(document, L"requiresEditorBuildBinding"), L"true");
    EXPECT_TRUE(IsRegularFile(Member(document, L"iconPath")));
    const auto& mods = FindJsonMember(document, L"mods").items;
    ASSERT_EQ(mods.size(), install.ModCount());
    bool chinese = false;
    for (size_t index = 0; index < mods.size(); ++index) {
        EXPECT_EQ(Member(mods[index], L"id"), install.ModId(index));
        EXPECT_EQ(Member(mods[index], L"id").size(), 36u);
        EXPECT_EQ(Member(mods[index], L"name"), install.ModName(index));
        EXPECT_EQ(Member(mods[index], L"modProject"), install.ModPackage(index));
        EXPECT_NE(Member(mods[index], L"authorName"), L"");
        EXPECT_FALSE(FindJsonMember(mods[index], L"supportedGameVersions").items.empty());
        EXPECT_EQ(testing::ReadFileBytes(Member(mods[index], L"coverPath")).substr(0, 8), Bytes("\x89PNG\r\n\x1A\n", 8));
        chinese = chinese || install.ModName(index).find(L'\x4E91') != Text::npos;
    }
    EXPECT_TRUE(chinese) << "a Mod with a Chinese name";

    const CapturedRun listing = bench.Run({L"list-sources", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot()});
    ASSERT_EQ(listing.exitCode, 0u);
    const std::vector<JsonValue> rows = ModsOf(listing);
    ASSERT_EQ(rows.size(), install.ModCount());
    EXPECT_EQ(Member(rows[3], L"id"), install.ModId(3));
    EXPECT_EQ(Member(rows[3], L"modProject"), install.ModPackage(3));

    // A package that is gone leaves the catalogue, as after a removal to the Recycle Bin.
    ASSERT_TRUE(DeleteFileW(install.ModPackage(1).c_str()));
    const std::vector<JsonValue> after = ModsOf(bench.Run({L"sdk-preview", L"--sdk", install.SdkPath()}));
    ASSERT_EQ(after.size(), install.ModCount() - 1);
    EXPECT_EQ(Member(after[1], L"id"), install.ModId(2));

    const CapturedRun missing = bench.Run({L"sdk-preview", L"--sdk", install.Root() + L"\\Missing.kvsdk"});
    EXPECT_EQ(missing.exitCode, 1u);
    EXPECT_NE(missing.err.find("Missing.kvsdk"), Bytes::npos);
}

TEST(ToolStandin, PrepareBuildsTheWorkspaceAndAnswersInItsFiles)
{
    ToolBench bench(L"tool-prepare");
    const SampleInstall& install = bench.install;
    const CapturedRun first = bench.Run(bench.PrepareArguments(1, install.GameDirectory()));
    ASSERT_EQ(first.exitCode, 0u) << first.err;
    const Text workspace = install.Workspace(1);
    EXPECT_EQ(testing::ReadFileBytes(bench.Selection()),
        TextToUtf8(workspace + L"\\Mod.kmodproject\n" + workspace + L"\\KorvaneSDK.uproject\n" + install.ModId(1) + L"\n"));
    EXPECT_TRUE(IsRegularFile(workspace + L"\\KorvaneSDK.uproject"));
    const JsonValue project = ParseJson(testing::ReadFileBytes(workspace + L"\\Mod.kmodproject"));
    EXPECT_EQ(Member(project, L"modId"), install.ModId(1));
    EXPECT_EQ(Member(project, L"sourcePackage"), install.ModPackage(1));
    EXPECT_EQ(testing::ReadFileBytes(bench.Progress()), "{\"stage\":\"complete\",\"cacheHit\":false}");

    const JsonValue timing = ParseJson(testing::ReadFileBytes(bench.Timing()));
    std::vector<Text> stages;
    Text cacheHit;
    for (const JsonValue& row : FindJsonMember(timing, L"stages").items) {
        stages.push_back(Member(row, L"stage"));
        if (!Member(row, L"cacheHit").empty()) {
            cacheHit = Member(row, L"cacheHit");
        }
    }
    const std::vector<Text> expected = {L"sdkMetadata", L"sdkVerify", L"sdkHash", L"sdkHash", L"cacheVerify",
        L"materialize", L"sourceInspect", L"workspacePrepare", L"pluginsApply", L"complete"};
    EXPECT_EQ(stages, expected);
    EXPECT_EQ(cacheHit, L"false") << "the first preparation creates the cache";

    // The second preparation finds the cache.
    ASSERT_EQ(bench.Run(bench.PrepareArguments(1, install.GameDirectory())).exitCode, 0u);
    EXPECT_EQ(testing::ReadFileBytes(bench.Progress()), "{\"stage\":\"complete\",\"cacheHit\":true}");

    // Another game root holds its own workspaces; one that does not exist is refused.
    testing::ScratchDirectory otherGame(L"tool-prepare-game");
    ASSERT_EQ(bench.Run(bench.PrepareArguments(0, otherGame.Path())).exitCode, 0u);
    EXPECT_TRUE(IsRegularFile(otherGame.Path() + L"\\Saved\\Korvane\\Workspaces\\" + install.ModId(0) + L"\\Mod.kmodproject"));
    const CapturedRun noGame = bench.Run(bench.PrepareArguments(0, otherGame / L"missing"));
    EXPECT_EQ(noGame.exitCode, 1u);
    EXPECT_EQ(testing::ReadFileBytes(bench.Selection()), "") << "no answer on failure";

    // A package that is not a Mod source fails after the stages that precede the source check.
    std::vector<Text> broken = bench.PrepareArguments(0);
    broken[broken.size() - 5] = install.SdkPath();
    const CapturedRun notAPackage = bench.Run(broken);
    EXPECT_EQ(notAPackage.exitCode, 1u);
    EXPECT_NE(notAPackage.err.find("Mod source package"), Bytes::npos);
    EXPECT_EQ(testing::ReadFileBytes(bench.Progress()), "{\"stage\":\"sourceInspect\",\"cacheHit\":true}");
}

TEST(ToolStandin, PrepareRewritesTheProgressFileStageByStage)
{
    ToolBench bench(L"tool-stages");
    bench.install.SetToolScenario(L"{\"prepare\":{\"stageDelayMs\":150}}");
    testing::WriteFileBytes(bench.Progress(), "");
    testing::ChildProcess child = testing::ChildProcess::Start(bench.install.ToolPath(), bench.PrepareArguments(0));
    // Follow the file as the launcher does, and keep each new content.
    std::vector<Bytes> seen;
    while (!child.Wait(20)) {
        const Bytes content = testing::ReadFileBytes(bench.Progress());
        if (!content.empty() && (seen.empty() || seen.back() != content)) {
            seen.push_back(content);
        }
    }
    EXPECT_EQ(child.ExitCode(), 0u);
    ASSERT_GE(seen.size(), 6u);
    EXPECT_EQ(seen.front(), "{\"stage\":\"sdkMetadata\"}");
    EXPECT_EQ(seen.back(), "{\"stage\":\"complete\",\"cacheHit\":false}");
    const ULONGLONG started = GetTickCount64();
    ASSERT_EQ(bench.Run(bench.PrepareArguments(0)).exitCode, 0u);
    EXPECT_GE(GetTickCount64() - started, 10u * 150u) << "ten rewrites, each followed by the pause";
}

TEST(ToolStandin, CreateTranslationAndImportAddPackagesToTheCatalogue)
{
    ToolBench bench(L"tool-create");
    const SampleInstall& install = bench.install;
    const Text cover = install.GameDirectory() + L"\\Mods\\Covers\\HarborLights.png";
    const CapturedRun created = bench.Run({L"create", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot(),
        L"--cover", cover, L"--name", L"\x6625\x8282 Mod: \"Lanterns\"", L"--author-name", L"Ann"});
    ASSERT_EQ(created.exitCode, 0u) << created.err;
    const Text package = Member(ParseOutput(created), L"modProject");
    EXPECT_EQ(ParentPath(package), install.GameDirectory() + L"\\Mods");
    EXPECT_TRUE(EndsWithIgnoringCase(package, L".umod"));
    EXPECT_TRUE(IsRegularFile(package));

    const Text chosen = bench.scratch / L"Chosen Place\\Translation.umod";
    testing::MakeDirectories(ParentPath(chosen));
    const CapturedRun translation = bench.Run({L"translations", L"create", L"--sdk", install.SdkPath(), L"--editor-root",
        install.EditorRoot(), L"--name", L"Translation", L"--author-name", L"Bo", L"--output-file", chosen});
    ASSERT_EQ(translation.exitCode, 0u) << translation.err;
    EXPECT_EQ(Member(ParseOutput(translation), L"modProject"), chosen);
    EXPECT_EQ(bench.Run({L"translations", L"create", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot(),
                  L"--name", L"Again", L"--author-name", L"Bo", L"--output-file", chosen})
                  .exitCode,
        1u)
        << "an existing file is not overwritten";

    // An import copies the package into the Mod library; the same Mod cannot come in twice.
    const Text outside = bench.scratch / L"Outside.umod";
    ASSERT_TRUE(CopyFileW(package.c_str(), outside.c_str(), FALSE));
    EXPECT_EQ(bench.Run({L"import-source", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot(),
                  L"--mod-file", outside})
                  .exitCode,
        1u)
        << "that Mod is in the library already";
    const Text foreign = bench.scratch / L"Foreign.umod";
    testing::WriteFileText(foreign,
        L"{\"format\":\"KorvaneModSource\",\"schemaVersion\":1,\"id\":\"mod.ffffffffffffffffffffffffffffffff\","
        L"\"name\":\"Foreign\",\"authorName\":\"Cy\",\"supportedGameVersions\":[\"1.4\"],\"coverPath\":\"\"}");
    const CapturedRun imported = bench.Run({L"import-source", L"--sdk", install.SdkPath(), L"--game-root",
        install.GameDirectory(), L"--editor-root", install.EditorRoot(), L"--mod-file", foreign});
    ASSERT_EQ(imported.exitCode, 0u) << imported.err;
    const Text importedPackage = Member(ParseOutput(imported), L"modProject");
    EXPECT_EQ(importedPackage, install.GameDirectory() + L"\\Mods\\Foreign.umod");
    testing::WriteFileBytes(bench.scratch / L"NotAMod.umod", "{\"name\":\"x\"}");
    EXPECT_EQ(bench.Run({L"import-source", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot(),
                  L"--mod-file", bench.scratch / L"NotAMod.umod"})
                  .exitCode,
        1u);

    const std::vector<JsonValue> mods = ModsOf(bench.Run({L"sdk-preview", L"--sdk", install.SdkPath()}));
    ASSERT_EQ(mods.size(), install.ModCount() + 3);
    const JsonValue& first = mods[install.ModCount()];
    EXPECT_EQ(Member(first, L"modProject"), package);
    EXPECT_EQ(Member(first, L"name"), L"\x6625\x8282 Mod: \"Lanterns\"");
    EXPECT_EQ(Member(first, L"authorName"), L"Ann");
    EXPECT_EQ(Member(first, L"id").substr(0, 4), L"mod.");
    EXPECT_EQ(testing::ReadFileBytes(Member(first, L"coverPath")), testing::ReadFileBytes(cover));
    EXPECT_EQ(Member(mods[install.ModCount() + 1], L"kind"), L"translation");
    EXPECT_EQ(Member(mods[install.ModCount() + 2], L"id"), L"mod.ffffffffffffffffffffffffffffffff");
}

TEST(ToolStandin, ResolveSourceRecordsTheAnswerAndSdkInfoComparesTheBuild)
{
    ToolBench bench(L"tool-resolve");
    const SampleInstall& install = bench.install;
    ASSERT_EQ(bench.Run({L"resolve-source", L"--sdk", install.SdkPath(), L"--mod-file", install.ModPackage(2),
                  L"--resolution", L"source"})
                  .exitCode,
        0u);
    const std::vector<JsonValue> records = testing::ReadJsonLines(install.ModPackage(2) + L".resolution.jsonl");
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(Member(records[0], L"resolution"), L"source");
    EXPECT_EQ(bench.Run({L"resolve-source", L"--sdk", install.SdkPath(), L"--mod-file", bench.scratch / L"none.umod",
                  L"--resolution", L"workspace"})
                  .exitCode,
        1u);

    EXPECT_EQ(bench.Run({L"sdk-info", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot()}).exitCode, 0u);
    // Another editor build refuses the SDK, unless the SDK does not bind itself to a build.
    const Text modules = install.EditorRoot() + L"\\Engine\\Binaries\\Win64\\UnrealEditor.modules";
    Bytes list = testing::ReadFileBytes(modules);
    list.replace(list.find(TextToUtf8(install.BuildId())), 8, "00000000");
    testing::WriteFileBytes(modules, list);
    const CapturedRun mismatch = bench.Run({L"sdk-info", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot()});
    EXPECT_EQ(mismatch.exitCode, 1u);
    EXPECT_NE(mismatch.err.find(TextToUtf8(install.BuildId())), Bytes::npos);
    EXPECT_EQ(bench.Run(bench.PrepareArguments(0)).exitCode, 1u) << "prepare checks the build as well";
    Bytes sdk = testing::ReadFileBytes(install.SdkPath());
    sdk.replace(sdk.find("\"requiresEditorBuildBinding\": true"), 34, "\"requiresEditorBuildBinding\": false");
    testing::WriteFileBytes(install.SdkPath(), sdk);
    EXPECT_EQ(bench.Run({L"sdk-info", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot()}).exitCode, 0u);
}

TEST(ToolStandin, ScenarioSetsExitCodeAndStreams)
{
    ToolBench bench(L"tool-streams");
    const SampleInstall& install = bench.install;
    const std::vector<Text> preview = {L"sdk-preview", L"--sdk", install.SdkPath()};

    install.SetToolScenario(L"{\"sdk-preview\":{\"exitCode\":3221225781,\"stderr\":\"\x9519\x8BEF: broken\"}}");
    CapturedRun run = bench.Run(preview);
    EXPECT_EQ(run.exitCode, 3221225781u);
    EXPECT_EQ(run.err, "\xE9\x94\x99\xE8\xAF\xAF: broken");
    EXPECT_TRUE(run.out.empty()) << "a failing scenario skips the command's own answer";

    install.SetToolScenario(L"{\"*\":{\"exitCode\":3,\"stdout\":\"only out\"}}");
    run = bench.Run(preview);
    EXPECT_EQ(run.exitCode, 3u);
    EXPECT_EQ(run.out, "only out");
    EXPECT_TRUE(run.err.empty());

    install.SetToolScenario(L"{\"sdk-preview\":{\"exitCode\":0,\"stdout\":\"not json\"}}");
    run = bench.Run(preview);
    EXPECT_EQ(run.exitCode, 0u);
    EXPECT_EQ(run.out, "not json");

    install.SetToolScenario(L"{\"sdk-preview\":{\"stdoutMiB\":9}}");
    run = bench.Run(preview);
    EXPECT_EQ(run.exitCode, 0u);
    EXPECT_EQ(run.out.size(), 9u * 1048576u);

    install.SetToolScenario(L"{\"sdk-preview\":{\"exitCode\":4,\"stderrMiB\":1,\"stderr\":\"head\"}}");
    run = bench.Run(preview);
    EXPECT_EQ(run.err.size(), 4u + 1048576u);
    EXPECT_EQ(run.err.substr(0, 4), "head");

    install.SetToolScenario(L"{\"sdk-preview\":{\"exitCode\":5,\"invalidUtf8\":\"stderr\",\"stdout\":\"readable\"}}");
    run = bench.Run(preview);
    EXPECT_EQ(run.exitCode, 5u);
    EXPECT_TRUE(Utf8ToText(run.err).empty()) << "standard error is not UTF-8";
    EXPECT_FALSE(run.err.empty());
    EXPECT_EQ(run.out, "readable");

    // A failing create makes no Mod.
    install.SetToolScenario(L"{\"create\":{\"exitCode\":7}}");
    EXPECT_EQ(bench.Run({L"create", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot(), L"--name",
                  L"Never", L"--author-name", L"N"})
                  .exitCode,
        7u);
    EXPECT_FALSE(testing::FileExists(install.GameDirectory() + L"\\Mods\\Never.umod"));
    // The object of another command does not apply.
    EXPECT_EQ(bench.Run(preview).exitCode, 0u);
}

TEST(ToolStandin, ScenarioSleepsHangsAndLeavesAGrandchild)
{
    ToolBench bench(L"tool-timing");
    const SampleInstall& install = bench.install;
    const std::vector<Text> info = {L"sdk-info", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot()};

    install.SetToolScenario(L"{\"sdk-info\":{\"sleepMs\":700}}");
    const CapturedRun slow = bench.Run(info);
    EXPECT_EQ(slow.exitCode, 0u);
    EXPECT_GE(slow.elapsedMs, 700u);

    install.SetToolScenario(L"{\"sdk-info\":{\"hang\":true}}");
    const CapturedRun hung = bench.Run(info, 1500);
    EXPECT_TRUE(hung.timedOut);

    install.SetToolScenario(L"{\"sdk-info\":{\"grandchild\":true,\"exitCode\":0,\"stdout\":\"\"}}");
    testing::ChildProcess tool = testing::ChildProcess::Start(install.ToolPath(), info);
    ASSERT_TRUE(tool.Wait(30000));
    EXPECT_EQ(tool.ExitCode(), 0u);
    const std::vector<JsonValue> calls = install.ToolCalls();
    ASSERT_FALSE(calls.empty());
    const DWORD grandchildId = static_cast<DWORD>(std::stoul(Member(calls.back(), L"grandchildPid")));
    UniqueHandle grandchild(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, grandchildId));
    ASSERT_TRUE(grandchild.IsValid());
    EXPECT_EQ(WaitForSingleObject(grandchild.Get(), 0), static_cast<DWORD>(WAIT_TIMEOUT)) << "outlives its parent";
    EXPECT_EQ(install.ToolCalls().size(), calls.size()) << "the waiting copy logs no call";
    tool.Kill();  // ends the job, and the grandchild with it
    EXPECT_EQ(WaitForSingleObject(grandchild.Get(), 10000), static_cast<DWORD>(WAIT_OBJECT_0));
}

TEST(ToolStandin, ScenarioReportsAConflictOnce)
{
    ToolBench bench(L"tool-conflict");
    const SampleInstall& install = bench.install;
    install.SetToolScenario(L"{\"prepare\":{\"conflictOnce\":true}}");
    const CapturedRun first = bench.Run(bench.PrepareArguments(0));
    EXPECT_EQ(first.exitCode, 1u);
    EXPECT_NE(first.err.find("KV3651: source changed while a workspace exists"), Bytes::npos) << first.err;
    EXPECT_EQ(testing::ReadFileBytes(bench.Selection()), "");
    const CapturedRun second = bench.Run(bench.PrepareArguments(0));
    EXPECT_EQ(second.exitCode, 0u) << second.err;

    // Removing the state arms it again; the other marker can be asked for.
    const Text scenario = ParentPath(install.ToolPath()) + L"\\KorvaneTool.scenario.json";
    ASSERT_TRUE(DeleteFileW((scenario + L".conflict-state").c_str()));
    install.SetToolScenario(L"{\"prepare\":{\"conflictOnce\":\"KV3648\"}}");
    EXPECT_NE(bench.Run(bench.PrepareArguments(0)).err.find("KV3648: source changed outside the Editor"), Bytes::npos);
    EXPECT_EQ(bench.Run(bench.PrepareArguments(0)).exitCode, 0u);
}

TEST(ToolStandin, ScenarioShapesTheCacheStateAndBreaksTheFiles)
{
    ToolBench bench(L"tool-files");
    const SampleInstall& install = bench.install;
    const auto timingCacheHit = [&] {
        Text value;
        const JsonValue timing = ParseJson(testing::ReadFileBytes(bench.Timing()));
        for (const JsonValue& row : FindJsonMember(timing, L"stages").items) {
            if (!Member(row, L"cacheHit").empty()) {
                value = Member(row, L"cacheHit");
            }
        }
        return value;
    };
    install.SetToolScenario(L"{\"prepare\":{\"cacheHit\":1}}");
    ASSERT_EQ(bench.Run(bench.PrepareArguments(0)).exitCode, 0u);
    EXPECT_EQ(testing::ReadFileBytes(bench.Progress()), "{\"stage\":\"complete\",\"cacheHit\":true}");
    EXPECT_EQ(timingCacheHit(), L"true");
    install.SetToolScenario(L"{\"prepare\":{\"cacheHit\":-1}}");
    ASSERT_EQ(bench.Run(bench.PrepareArguments(0)).exitCode, 0u);
    EXPECT_EQ(testing::ReadFileBytes(bench.Progress()), "{\"stage\":\"complete\"}");
    EXPECT_EQ(timingCacheHit(), L"");

    install.SetToolScenario(L"{\"prepare\":{\"progress\":\"malformed\"}}");
    ASSERT_EQ(bench.Run(bench.PrepareArguments(0)).exitCode, 0u);
    EXPECT_THROW(ParseJson(testing::ReadFileBytes(bench.Progress())), std::runtime_error);
    install.SetToolScenario(L"{\"prepare\":{\"progress\":\"oversized\"}}");
    ASSERT_EQ(bench.Run(bench.PrepareArguments(0)).exitCode, 0u);
    const Bytes oversized = testing::ReadFileBytes(bench.Progress());
    EXPECT_GT(oversized.size(), 65536u);
    EXPECT_EQ(Member(ParseJson(oversized), L"stage"), L"complete");
    install.SetToolScenario(L"{\"prepare\":{\"progress\":\"dieMidWrite\"}}");
    EXPECT_EQ(bench.Run(bench.PrepareArguments(0)).exitCode, 0xC0000005u);
    EXPECT_EQ(testing::ReadFileBytes(bench.Progress()), "{\"stage\":\"materiali") << "half of the stage after the cache check";

    // prepare with a failing exit code still shows its first stages, then stops.
    install.SetToolScenario(L"{\"prepare\":{\"exitCode\":9,\"stderr\":\"failed on purpose\"}}");
    const CapturedRun failed = bench.Run(bench.PrepareArguments(0));
    EXPECT_EQ(failed.exitCode, 9u);
    EXPECT_EQ(Member(ParseJson(testing::ReadFileBytes(bench.Progress())), L"stage"), L"sourceInspect");
    EXPECT_EQ(testing::ReadFileBytes(bench.Selection()), "");

    const Text workspace = install.Workspace(0);
    const Bytes good = TextToUtf8(workspace + L"\\Mod.kmodproject\n" + workspace + L"\\KorvaneSDK.uproject\n");
    const auto selectionWith = [&](TextView variant) {
        install.SetToolScenario(L"{\"prepare\":{\"selectionFile\":\"" + Text(variant) + L"\"}}");
        EXPECT_EQ(bench.Run(bench.PrepareArguments(0)).exitCode, 0u);
        return testing::ReadFileBytes(bench.Selection());
    };
    EXPECT_EQ(selectionWith(L"malformed"), good + TextToUtf8(install.ModId(0).substr(0, 35)) + "\n");
    const Bytes oversizedSelection = selectionWith(L"oversized");
    EXPECT_EQ(oversizedSelection.size(), 4096u);
    EXPECT_EQ(oversizedSelection.substr(0, good.size() + 37), good + TextToUtf8(install.ModId(0)) + "\n");
    EXPECT_EQ(selectionWith(L"short").size(), 20u);
    EXPECT_EQ(selectionWith(L"twoLines"), good);
    selectionWith(L"missing");
    EXPECT_FALSE(testing::FileExists(bench.Selection()));
}

TEST(ToolStandin, ScenarioAndLogAreFoundWhereTheTestPutsThem)
{
    ToolBench bench(L"tool-places");
    const SampleInstall& install = bench.install;
    const std::vector<Text> preview = {L"sdk-preview", L"--sdk", install.SdkPath()};
    install.SetToolScenario(L"{\"*\":{\"exitCode\":11}}");
    EXPECT_EQ(bench.Run(preview).exitCode, 11u) << "beside the tool";
    testing::WriteFileText(install.SdkPath() + L".scenario.json", L"{\"*\":{\"exitCode\":12}}");
    EXPECT_EQ(bench.Run(preview).exitCode, 12u) << "beside the SDK wins";
    const Text named = bench.scratch / L"named.json";
    testing::WriteFileText(named, L"{\"sdk-preview\":{\"exitCode\":13},\"*\":{\"exitCode\":14}}");
    const Text log = bench.scratch / L"calls\\log.jsonl";
    {
        testing::ScopedVariable scenario(L"KORVANE_STANDIN_TOOL_SCENARIO", named);
        testing::ScopedVariable calls(L"KORVANE_STANDIN_TOOL_LOG", log);
        EXPECT_EQ(bench.Run(preview).exitCode, 13u) << "the named file wins";
        EXPECT_EQ(bench.Run({L"sdk-info", L"--sdk", install.SdkPath(), L"--editor-root", install.EditorRoot()}).exitCode,
            14u)
            << "\"*\" for the other commands";
    }
    const std::vector<JsonValue> logged = testing::ReadJsonLines(log);
    ASSERT_EQ(logged.size(), 2u);
    EXPECT_EQ(LoggedArguments(logged[0]), preview);
    EXPECT_EQ(install.ToolCalls().size(), 2u) << "those two runs went to the named log only";
}

}  // namespace
}  // namespace korvane
