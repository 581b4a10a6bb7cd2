// The picker's loads against a sample install with the stand-in tool: the SDK preview with its
// build check, stored selection and images, the first load of a run, the Mod commands, and the
// thumbnails decoded from real image files.
#include "ImageFiles.h"
#include "SampleInstall.h"
#include "TestSupport.h"
#include "ToolCalls.h"

#include "foundation/GdiplusSession.h"
#include "foundation/Paths.h"
#include "host/LaunchSelection.h"
#include "tool/PreviewLoading.h"
#include "tool/ToolCommand.h"

#include <objidl.h>
#include <gdiplus.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace korvane {
namespace {

using testing::SampleInstall;

PreviewRequest RequestFor(const SampleInstall& install, bool pickerPreview = false)
{
    return {install.EditorRoot(), install.SdkPath(), install.GameDirectory(), nullptr, pickerPreview};
}

TEST(EditorBuildMatches, ModulesReceiptAndDocumentDecideTogether)
{
    testing::ScratchDirectory root(L"build-check");
    const Text modules = root / L"Engine\\Binaries\\Win64\\UnrealEditor.modules";
    // A module list an engine wrote: its BuildId is 23058290.
    const Bytes realModules = testing::ReadRealData(L"modules\\ue5.1_project_99GBVertex__SampleCode\\UnrealEditor.modules");
    const struct {
        const char* label;
        const wchar_t* modules;  // null: the real list
        const wchar_t* receipt;
        const char* document;
        bool matches;
    } rows[] = {
        {"the same build", nullptr, LR"({"engineBuild":"5.1.1"})", R"({"engineVersion":"5.1.0","editorBuildId":"23058290"})", true},
        {"another build id", nullptr, LR"({"engineBuild":"5.1"})", R"({"engineVersion":"5.1","editorBuildId":"23058291"})", false},
        {"binding off by string", nullptr, LR"({"engineBuild":"5.1"})",
            R"({"engineVersion":"5.1","editorBuildId":"1","requiresEditorBuildBinding":"false"})", true},
        {"binding off by literal", nullptr, LR"({"engineBuild":"5.1"})",
            R"({"engineVersion":"5.1","editorBuildId":"1","requiresEditorBuildBinding":false})", true},
        {"binding False is on", nullptr, LR"({"engineBuild":"5.1"})",
            R"({"engineVersion":"5.1","editorBuildId":"1","requiresEditorBuildBinding":"False"})", false},
        {"another engine minor", nullptr, LR"({"engineBuild":"5.2"})",
            R"({"engineVersion":"5.1","editorBuildId":"23058290","requiresEditorBuildBinding":false})", false},
        {"empty build id", LR"({"BuildId":""})", LR"({"engineBuild":"5.1"})",
            R"({"engineVersion":"5.1","requiresEditorBuildBinding":false})", false},
        {"modules no JSON", L"BuildId=1", LR"({"engineBuild":"5.1"})",
            R"({"engineVersion":"5.1","requiresEditorBuildBinding":false})", false},
        {"no receipt", nullptr, nullptr, R"({"engineVersion":"5.1","editorBuildId":"23058290"})", false},
    };
    for (const auto& row : rows) {
        testing::WriteFileBytes(modules, row.modules == nullptr ? realModules : TextToUtf8(row.modules));
        DeleteFileW((root / L"KorvaneEditor.receipt.json").c_str());
        if (row.receipt != nullptr) {
            testing::WriteFileText(root / L"KorvaneEditor.receipt.json", row.receipt);
        }
        EXPECT_EQ(EditorBuildMatches(root.Path(), ParseJson(row.document)), row.matches) << row.label;
    }
}

TEST(LoadSdkPreview, LoadsTheCatalogueAndStoresTheSelectionOnlyWhenTheBuildFitsOutsideAPreview)
{
    const GdiplusSession gdiplus;
    SampleInstall install(L"preview-load");
    const Text selection = LaunchSelectionPath(install.EditorRoot());

    WorkResult preview = LoadSdkPreview(RequestFor(install, true));
    ASSERT_TRUE(preview.previewLoaded) << TextToUtf8(preview.errorText);
    EXPECT_FALSE(testing::FileExists(selection)) << "a preview run stores nothing";

    WorkResult loaded = LoadSdkPreview(RequestFor(install));
    ASSERT_TRUE(loaded.previewLoaded);
    EXPECT_TRUE(loaded.editorBuildMatches);
    EXPECT_TRUE(loaded.errorText.empty());
    EXPECT_EQ(FindJsonMember(loaded.preview, L"mods").items.size(), install.ModCount());
    EXPECT_EQ(loaded.covers.size(), install.ModCount());
    EXPECT_TRUE(loaded.covers.begin()->second) << "the sample Mods bring PNG covers";
    EXPECT_TRUE(testing::FileExists(selection));
    const std::vector<JsonValue> calls = install.ToolCalls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(testing::Argv(calls[1]), (std::vector<Text>{install.ToolPath(), L"sdk-preview", L"--sdk",
                                            install.SdkPath(), L"--game-root", install.GameDirectory()}));

    DeleteFileW(selection.c_str());
    install.SetToolScenario(LR"({"sdk-preview":{"exitCode":0,"stdout":"{\"engineVersion\":\"5.6\",\"editorBuildId\":\"x\",\"mods\":[]}"}})");
    WorkResult mismatch = LoadSdkPreview(RequestFor(install));
    EXPECT_TRUE(mismatch.previewLoaded) << "the user still sees the Mods and the mismatch";
    EXPECT_FALSE(mismatch.editorBuildMatches);
    EXPECT_FALSE(testing::FileExists(selection));
}

TEST(LoadSdkPreview, ToolFailuresAreToldAndDocumentsOfAnotherShapeThrow)
{
    SampleInstall install(L"preview-refusals");
    install.SetToolScenario(LR"({"sdk-preview":{"exitCode":9,"stderr":"KV4300: the SDK is locked"}})");
    const WorkResult failed = LoadSdkPreview(RequestFor(install));
    EXPECT_FALSE(failed.previewLoaded);
    EXPECT_EQ(failed.errorText, L"KV4300: the SDK is locked");
    EXPECT_FALSE(testing::FileExists(LaunchSelectionPath(install.EditorRoot())));

    for (const wchar_t* stdoutText : {LR"([])", LR"({\"mods\":{}})", LR"({\"name\":\"x\"})", LR"(not json)"}) {
        install.SetToolScenario(LR"({"sdk-preview":{"stdout":")" + Text(stdoutText) + LR"("}})");
        EXPECT_THROW(LoadSdkPreview(RequestFor(install)), std::runtime_error) << TextToUtf8(stdoutText);
    }

    std::atomic<bool> cancel{true};
    PreviewRequest cancelled = RequestFor(install);
    cancelled.cancelFlag = &cancel;
    install.SetToolScenario(LR"({})");
    const WorkResult stopped = LoadSdkPreview(cancelled);
    EXPECT_FALSE(stopped.previewLoaded);
    EXPECT_FALSE(stopped.errorText.empty());
    EXPECT_FALSE(testing::FileExists(LaunchSelectionPath(install.EditorRoot())));
}

TEST(LoadInitialPreview, AFixtureReplacesTheToolOnlyInAPreviewAndNoSdkIsNoFailure)
{
    const GdiplusSession gdiplus;
    SampleInstall install(L"initial-load");
    testing::ScratchDirectory scratch(L"initial-load-fixture");
    const Text cover = scratch / L"cover.png";
    testing::WriteImageFile(cover, 100, 50);
    const Text fixture = scratch / L"fixture.json";
    testing::WriteFileText(fixture, LR"({"editorBuildId":"nothing like it","mods":[{"modProject":"C:\\A.umod","coverPath":)" +
                                        QuoteJsonText(cover) + L"}]}");

    const WorkResult fromFixture = LoadInitialPreview(RequestFor(install, true), fixture);
    EXPECT_TRUE(fromFixture.previewLoaded);
    EXPECT_TRUE(fromFixture.editorBuildMatches) << "a fixture is not compared with the editor";
    EXPECT_EQ(BitmapSize(fromFixture.covers.at(L"C:\\A.umod").Get()).width, 100u);
    EXPECT_TRUE(install.ToolCalls().empty());

    const WorkResult ordinary = LoadInitialPreview(RequestFor(install), fixture);
    EXPECT_TRUE(ordinary.previewLoaded);
    EXPECT_EQ(FindJsonMember(ordinary.preview, L"mods").items.size(), install.ModCount()) << "the fixture is ignored";
    EXPECT_EQ(ordinary.gameDirectory, install.GameDirectory());

    testing::ScratchDirectory emptyGame(L"initial-load-no-sdk");
    const WorkResult none = LoadInitialPreview({install.EditorRoot(), L"", emptyGame.Path(), nullptr, false}, L"");
    EXPECT_FALSE(none.previewLoaded);
    EXPECT_TRUE(none.errorText.empty());
    EXPECT_EQ(none.gameDirectory, emptyGame.Path());
    EXPECT_EQ(install.ToolCalls().size(), 1u) << "no tool run without an SDK";

    testing::WriteFileText(fixture, L"{\"mods\":");
    EXPECT_THROW(LoadInitialPreview(RequestFor(install, true), fixture), std::runtime_error);
}

TEST(RunModCommand, SelectsTheModTheToolNamedOrTheFallbackAndLeavesTheListOnFailure)
{
    SampleInstall install(L"mod-command");
    const Text fallback = L"C:\\Chosen\\Import.umod";
    install.SetToolScenario(LR"({"import-source":{"exitCode":0,"stdout":"{\"modProject\":\"C:\\\\Named.umod\"}"}})");
    const Text import = BuildToolCommand(ToolCommandKind::ImportSource,
        {.sdk = install.SdkPath(), .gameRoot = install.GameDirectory(), .editorRoot = install.EditorRoot(), .modFile = fallback});
    const WorkResult named = RunModCommand(RequestFor(install), import, fallback);
    EXPECT_TRUE(named.previewLoaded);
    EXPECT_EQ(named.selectedModProject, L"C:\\Named.umod");

    install.SetToolScenario(LR"({"import-source":{"exitCode":0,"stdout":"{}"}})");
    EXPECT_EQ(RunModCommand(RequestFor(install), import, fallback).selectedModProject, fallback);

    install.SetToolScenario(LR"({"import-source":{"exitCode":4,"stderr":"KV2210: not a Mod package"}})");
    const std::size_t callsBefore = install.ToolCalls().size();
    const WorkResult refused = RunModCommand(RequestFor(install), import, fallback);
    EXPECT_FALSE(refused.previewLoaded);
    EXPECT_EQ(refused.errorText, L"KV2210: not a Mod package");
    EXPECT_EQ(install.ToolCalls().size(), callsBefore + 1) << "no reload after a refusal";
}

TEST(LoadThumbnail, RefusesWhatItCannotUseAndScalesTheRestDownOnly)
{
    const GdiplusSession gdiplus;
    testing::ScratchDirectory scratch(L"thumbnails");
    const struct {
        const wchar_t* name;
        unsigned width, height;
        testing::ImageFormat format;
        ImageSize thumbnail;  // 0 by 0: none
    } rows[] = {
        {L"limit.png", 4096, 8, testing::ImageFormat::Png, {512, 1}},
        {L"wide.png", 4097, 8, testing::ImageFormat::Png, {}},
        {L"tall.png", 8, 4097, testing::ImageFormat::Png, {}},
        {L"tiny.png", 3, 2, testing::ImageFormat::Png, {3, 2}},
        {L"thin.png", 1000, 1, testing::ImageFormat::Png, {512, 1}},
        {L"photo.jpg", 2048, 1000, testing::ImageFormat::Jpeg, {512, 250}},
        {L"photo-named.png", 700, 1400, testing::ImageFormat::Jpeg, {256, 512}},
    };
    for (const auto& row : rows) {
        const Text path = scratch / row.name;
        testing::WriteImageFile(path, row.width, row.height, row.format);
        const UniqueGdiplusBitmap thumbnail = LoadThumbnail(path);
        const ImageSize size = BitmapSize(thumbnail.Get());
        EXPECT_EQ(size.width, row.thumbnail.width) << TextToUtf8(row.name);
        EXPECT_EQ(size.height, row.thumbnail.height) << TextToUtf8(row.name);
        if (thumbnail) {
            Gdiplus::PixelFormat format = 0;
            Gdiplus::DllExports::GdipGetImagePixelFormat(thumbnail.Get(), &format);
            EXPECT_EQ(format, PixelFormat32bppPARGB) << TextToUtf8(row.name);
        }
    }
    testing::WriteFileText(scratch / L"broken.png", L"\x89PNG but nothing else");
    EXPECT_FALSE(LoadThumbnail(scratch / L"broken.png"));
    EXPECT_FALSE(LoadThumbnail(scratch.Path())) << "a folder";
    EXPECT_FALSE(LoadThumbnail(scratch / L"missing.png"));
    EXPECT_FALSE(LoadThumbnail(L""));
}

TEST(LoadPreviewImages, KeepsTheFirstCoverOfEachPackage)
{
    const GdiplusSession gdiplus;
    testing::ScratchDirectory scratch(L"preview-images");
    testing::WriteImageFile(scratch / L"wide.png", 40, 20);
    testing::WriteImageFile(scratch / L"tall.png", 20, 40);
    WorkResult result;
    const Text wide = QuoteJsonText(scratch / L"wide.png");
    const Text tall = QuoteJsonText(scratch / L"tall.png");
    result.preview = ParseJson(TextToUtf8(L"{\"iconPath\":" + tall + L",\"mods\":[{\"modProject\":\"A\",\"coverPath\":" + wide +
                                          L"},{\"modProject\":\"A\",\"coverPath\":" + tall +
                                          L"},{\"modProject\":\"B\"},{\"modProject\":\"B\",\"coverPath\":" + tall + L"}]}"));
    LoadPreviewImages(result);
    EXPECT_EQ(BitmapSize(result.gameIcon.Get()).height, 40u);
    ASSERT_EQ(result.covers.size(), 2u);
    EXPECT_EQ(BitmapSize(result.covers.at(L"A").Get()).width, 40u) << "the first cover stays";
    EXPECT_FALSE(result.covers.at(L"B")) << "a package's first Mod without a cover keeps it without one";
}

}  // namespace
}  // namespace korvane
