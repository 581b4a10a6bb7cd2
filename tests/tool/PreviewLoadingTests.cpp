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
    // `modules` null: the real list.
    struct Row { const char* label; const wchar_t* modules; const wchar_t* receipt; const char* document; bool matches; };
    const Row rows[] = {
        {"the same build", nullptr, LR"({"engineBuild":"5.1.1"})", R"({"engineVersion":"5.1.0","editorBuildId":"23058290"})", true},
        {"another build id", nullptr, LR"({"engineBuild":"5.1"})", R"({"engineVersion":"5.1","editorBuildId":"23058291"})", false},
        {"binding off by string", nullptr, LR"({"engineBuild":"5.1"})",
            R"({"engineVersion":"5.1","editorBuildId":"1","requiresEditorBuildBinding":"false"})", true},
        {"binding False is on", nullptr, LR"({"engineBuild":"5.1"})",
            R"({"engineVersion":"5.1","editorBuildId":"1","requiresEditorBuildBinding":"False"})", false},
        {"another engine minor", nullptr, LR"({"engineBuild":"5.2"})",
            R"({"engineVersion":"5.1","editorBuildId":"23058290","requiresEditorBuildBinding":false})", false},
        {"empty build id", LR"({"BuildId":""})", LR"({"engineBuild":"5.1"})",
            R"({"engineVersion":"5.1","requiresEditorBuildBinding":false})", false},
        {"no receipt", nullptr, nullptr, R"({"editorBuildId":"23058290"})", false},  // refused for the receipt alone
    };
    for (const Row& row : rows) {
        testing::WriteFileBytes(modules, row.modules == nullptr ? realModules : TextToUtf8(row.modules));
        DeleteFileW((root / L"KorvaneEditor.receipt.json").c_str());
        if (row.receipt != nullptr) {
            testing::WriteFileText(root / L"KorvaneEditor.receipt.json", row.receipt);
        }
        EXPECT_EQ(EditorBuildMatches(root.Path(), ParseJson(row.document)), row.matches) << row.label;
    }
}

TEST(LoadSdkPreview, StoresTheSelectionOnlyWhenTheBuildFitsOutsideAPreviewAndTellsToolFailures)
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
    EXPECT_TRUE(loaded.covers.begin()->second) << "the sample Mods bring PNG covers";
    EXPECT_TRUE(testing::FileExists(selection));
    const std::vector<JsonValue> calls = install.ToolCalls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(testing::Argv(calls[1]), (std::vector<Text>{install.ToolPath(), L"sdk-preview", L"--sdk",
                                            install.SdkPath(), L"--game-root", install.GameDirectory()}));

    // A Mod command ends in a fresh preview that selects the fallback when the tool's answer names no
    // Mod, as the preview's does (the Mod it names, and a refusal, are seen through the picker's commands).
    const Text command = L"sdk-preview --sdk " + QuoteCommandArgument(install.SdkPath());
    const WorkResult imported = RunModCommand(RequestFor(install), command, L"C:\\Chosen\\Import.umod");
    EXPECT_TRUE(imported.previewLoaded);
    EXPECT_EQ(imported.selectedModProject, L"C:\\Chosen\\Import.umod");

    DeleteFileW(selection.c_str());
    install.SetToolScenario(LR"({"sdk-preview":{"exitCode":0,"stdout":"{\"engineVersion\":\"5.6\",\"editorBuildId\":\"x\",\"mods\":[]}"}})");
    WorkResult mismatch = LoadSdkPreview(RequestFor(install));
    EXPECT_TRUE(mismatch.previewLoaded) << "the user still sees the Mods and the mismatch";
    EXPECT_FALSE(mismatch.editorBuildMatches);
    EXPECT_FALSE(testing::FileExists(selection));

    // A tool failure is told; documents of another shape throw, as the reader does on one that is no JSON.
    install.SetToolScenario(LR"({"sdk-preview":{"exitCode":9,"stderr":"KV4300: the SDK is locked"}})");
    const WorkResult failed = LoadSdkPreview(RequestFor(install));
    EXPECT_FALSE(failed.previewLoaded);
    EXPECT_EQ(failed.errorText, L"KV4300: the SDK is locked");

    for (const wchar_t* stdoutText : {LR"([])", LR"({\"mods\":{}})"}) {
        install.SetToolScenario(LR"({"sdk-preview":{"stdout":")" + Text(stdoutText) + LR"("}})");
        EXPECT_THROW(LoadSdkPreview(RequestFor(install)), std::runtime_error) << TextToUtf8(stdoutText);
    }
}

TEST(LoadInitialPreview, AFixtureReplacesTheToolOnlyInAPreviewAndNoSdkIsNoFailure)
{
    const GdiplusSession gdiplus;
    SampleInstall install(L"initial-load");
    testing::ScratchDirectory scratch(L"initial-load-fixture");
    testing::WriteImageFile(scratch / L"wide.png", 40, 20);
    testing::WriteImageFile(scratch / L"tall.png", 20, 40);
    const Text wide = QuoteJsonText(scratch / L"wide.png");
    const Text tall = QuoteJsonText(scratch / L"tall.png");
    const Text fixture = scratch / L"fixture.json";
    testing::WriteFileText(fixture, L"{\"editorBuildId\":\"nothing like it\",\"iconPath\":" + tall +
                                        L",\"mods\":[{\"modProject\":\"A\",\"coverPath\":" + wide +
                                        L"},{\"modProject\":\"A\",\"coverPath\":" + tall +
                                        L"},{\"modProject\":\"B\"},{\"modProject\":\"B\",\"coverPath\":" + tall + L"}]}");

    const WorkResult fromFixture = LoadInitialPreview(RequestFor(install, true), fixture);
    EXPECT_TRUE(fromFixture.previewLoaded);
    EXPECT_TRUE(fromFixture.editorBuildMatches) << "a fixture is not compared with the editor";
    EXPECT_TRUE(install.ToolCalls().empty());
    // Its images: the game icon and the first cover of each package.
    EXPECT_EQ(BitmapSize(fromFixture.gameIcon.Get()).height, 40u);
    ASSERT_EQ(fromFixture.covers.size(), 2u);
    EXPECT_EQ(BitmapSize(fromFixture.covers.at(L"A").Get()).width, 40u) << "the first cover stays";
    EXPECT_FALSE(fromFixture.covers.at(L"B")) << "a package's first Mod without a cover keeps it without one";

    const WorkResult ordinary = LoadInitialPreview(RequestFor(install), fixture);
    EXPECT_TRUE(ordinary.previewLoaded);
    EXPECT_EQ(FindJsonMember(ordinary.preview, L"mods").items.size(), install.ModCount()) << "the fixture is ignored";
    EXPECT_EQ(ordinary.gameDirectory, install.GameDirectory());

    testing::ScratchDirectory emptyGame(L"initial-load-no-sdk");
    const WorkResult none = LoadInitialPreview({install.EditorRoot(), L"", emptyGame.Path(), nullptr, false}, L"");
    EXPECT_EQ(none.gameDirectory, emptyGame.Path()) << "an otherwise empty result: the picker asks for an SDK";
    EXPECT_EQ(install.ToolCalls().size(), 1u) << "no tool run without an SDK";
}

TEST(LoadThumbnail, RefusesWhatItCannotUseAndScalesTheRestDownOnly)
{
    const GdiplusSession gdiplus;
    testing::ScratchDirectory scratch(L"thumbnails");
    // `thumbnail` 0 by 0: none.
    struct Row { const wchar_t* name; unsigned width, height; testing::ImageFormat format; ImageSize thumbnail; };
    const Row rows[] = {
        {L"limit.png", 4096, 8, testing::ImageFormat::Png, {512, 1}},
        {L"wide.png", 4097, 8, testing::ImageFormat::Png, {}},
        {L"tall.png", 8, 4097, testing::ImageFormat::Png, {}},
        {L"tiny.png", 3, 2, testing::ImageFormat::Png, {3, 2}},
        {L"thin.png", 1000, 1, testing::ImageFormat::Png, {512, 1}},
        {L"photo-named.png", 700, 1400, testing::ImageFormat::Jpeg, {256, 512}},
    };
    for (const Row& row : rows) {
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
}

}  // namespace
}  // namespace korvane
