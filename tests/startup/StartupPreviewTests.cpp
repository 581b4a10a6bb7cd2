// -KorvaneStartupPreview run by the real launcher: its window and its two reports.
#include "TestSupport.h"
#include "WindowCapture.h"

#include "foundation/Json.h"
#include "startup/StartupWindow.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace korvane {
namespace {

using testing::ScratchDirectory;

constexpr const char* kReportKeys[] = {"firstPaintMs", "assetLoadMs", "windowCreateMs", "firstDrawMs", "paintCount",
    "dpi", "language", "editorCulture", "width", "height", "backgroundLoaded", "logoLoaded", "phase",
    "observedPhases", "cacheStatus", "cacheHit", "cacheVerified"};

// Parses the report and checks that it holds exactly the keys, in their order, as one line.
JsonValue ParseReport(const Bytes& report)
{
    EXPECT_EQ(report.find_first_of("\r\n"), Bytes::npos) << report;
    EXPECT_EQ(report.rfind("{\"", 0), 0u) << "no byte-order mark or blank before the object";
    EXPECT_EQ(report.find("\": "), Bytes::npos) << report;
    std::size_t previous = 0;
    for (const char* key : kReportKeys) {
        const std::size_t at = report.find("\"" + Bytes(key) + "\":");
        EXPECT_NE(at, Bytes::npos) << key;
        EXPECT_GT(at, previous) << key << " out of order";
        previous = at;
    }
    const JsonValue value = ParseJson(report);
    EXPECT_EQ(value.members.size(), std::size(kReportKeys));
    return value;
}

std::uint64_t Number(const JsonValue& report, const wchar_t* key)
{
    const JsonValue& member = FindJsonMember(report, key);
    EXPECT_EQ(member.kind, JsonKind::Scalar) << TextToUtf8(key);
    return std::wcstoull(member.text.c_str(), nullptr, 10);
}

const Text& Word(const JsonValue& report, const wchar_t* key)
{
    return FindJsonMember(report, key).text;
}

testing::ChildProcess StartPreview(const std::vector<Text>& options)
{
    std::vector<Text> arguments{L"-KorvaneStartupPreview"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    testing::ProcessOptions processOptions;
    processOptions.hidden = false;
    return testing::ChildProcess::Start(testing::BuiltLauncherPath(), arguments, processOptions);
}

struct WindowOfProcess {
    DWORD processId;
    HWND window;
};

// The preview's start-up window, once it stands; the report's first version is written
// right after that. Nothing signals it to another process, so this looks every 10 ms.
HWND WaitForStartupWindow(const testing::ChildProcess& child)
{
    for (int round = 0; round < 1000; ++round) {
        WindowOfProcess search{child.Id(), nullptr};
        EnumWindows(
            [](HWND window, LPARAM context) -> BOOL {
                auto& found = *reinterpret_cast<WindowOfProcess*>(context);
                wchar_t className[64] = {};
                DWORD owner = 0;
                GetWindowThreadProcessId(window, &owner);
                if (owner == found.processId && GetClassNameW(window, className, 64) > 0 &&
                    TextView(className) == kStartupWindowClass && IsWindowVisible(window)) {
                    found.window = window;
                    return FALSE;
                }
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&search));
        if (search.window != nullptr || WaitForSingleObject(child.Handle(), 10) != WAIT_TIMEOUT) {
            return search.window;
        }
    }
    return nullptr;
}

// The report once it holds a whole object: the launcher writes it in one call, but a reader
// may come between the creation and the write.
Bytes WaitForReport(TextView path)
{
    for (int round = 0; round < 500; ++round) {
        const Bytes report = testing::ReadFileBytes(path);
        if (!report.empty() && report.back() == '}') {
            return report;
        }
        Sleep(10);
    }
    return {};
}

TEST(StartupPreview, FirstReportHasAPaintAndTheSecondTheAnimation)
{
    ScratchDirectory scratch(L"preview");
    const Text report = scratch / L"startup.json";
    testing::ChildProcess preview = StartPreview({L"-KorvaneStartupPreviewMs=2500", L"-KorvaneStartupPreviewDpi=144",
        L"-KorvaneStartupPreviewLanguage=ZH-hans", L"-KorvaneStartupPreviewNoBackground",
        L"-KorvaneStartupPhase=say \"hi\" \\ \x01\x1F\ttab", L"-KorvaneStartupReport=" + report});
    ASSERT_TRUE(preview.IsStarted());
    const HWND window = WaitForStartupWindow(preview);
    ASSERT_NE(window, nullptr);
    const JsonValue first = ParseReport(WaitForReport(report));
    EXPECT_GE(Number(first, L"paintCount"), 1u) << "the window paints before construction returns";
    EXPECT_GT(Number(first, L"firstPaintMs") + 1, Number(first, L"firstDrawMs"));
    EXPECT_GE(Number(first, L"firstPaintMs"), Number(first, L"assetLoadMs"));

    RECT bounds{};
    GetWindowRect(window, &bounds);
    EXPECT_EQ(bounds.right - bounds.left, 1080);
    EXPECT_EQ(bounds.bottom - bounds.top, 555);
    const testing::ScreenImage image = testing::ScreenImage::OfWindowOnceShown(
        window, [](const testing::ScreenImage& shown) { return shown.At(8, 8) == testing::Colour{7, 17, 31}; });
    EXPECT_EQ(image.At(8, 8), (testing::Colour{7, 17, 31})) << "no art: the base fill";
    EXPECT_EQ(image.At(MulDiv(640, 144, 96), MulDiv(324, 144, 96)), (testing::Colour{7, 17, 31}))
        << "no Cancel button in the preview";

    ASSERT_TRUE(preview.Wait(30000));
    EXPECT_EQ(preview.ExitCode(), 0u);
    const JsonValue last = ParseReport(testing::ReadFileBytes(report));
    EXPECT_GT(Number(last, L"paintCount"), Number(first, L"paintCount") + 10) << "about 16 paints a second";
    EXPECT_EQ(Number(last, L"firstPaintMs"), Number(first, L"firstPaintMs"));
    EXPECT_EQ(Number(last, L"dpi"), 144u);
    EXPECT_EQ(Number(last, L"width"), 1080u);
    EXPECT_EQ(Number(last, L"height"), 555u);
    EXPECT_EQ(Word(last, L"language"), L"zh-Hans");
    EXPECT_EQ(Word(last, L"editorCulture"), L"");
    EXPECT_EQ(Word(last, L"backgroundLoaded"), L"false");
    EXPECT_EQ(Word(last, L"logoLoaded"), L"true");
    EXPECT_EQ(Word(last, L"phase"), L"say \"hi\" \\ \ttab") << "other control characters are dropped";
    const JsonValue& observed = FindJsonMember(last, L"observedPhases");
    ASSERT_EQ(observed.items.size(), 1u);
    EXPECT_EQ(observed.items[0].text, L"say \"hi\" \\ \ttab");
    EXPECT_EQ(Word(last, L"cacheStatus"), L"");
    EXPECT_EQ(FindJsonMember(last, L"cacheHit").kind, JsonKind::Null);
    EXPECT_EQ(Word(last, L"cacheVerified"), L"false");
}

TEST(StartupPreview, DefaultsAndIgnoredValues)
{
    ScratchDirectory scratch(L"preview-defaults");
    const Text report = scratch / L"startup.json";
    // 120 DPI and 249 ms are no allowed values: the defaults stand, with art and in English.
    testing::ChildProcess preview = StartPreview({L"-KorvaneStartupPreviewDpi=120", L"-KorvaneStartupPreviewMs=249",
        L"-KorvaneStartupPreviewMs=250", L"-KorvaneStartupPreviewLanguage=zh_CN", L"-KorvaneStartupReport=" + report});
    ASSERT_TRUE(preview.Wait(30000));
    EXPECT_EQ(preview.ExitCode(), 0u);
    const JsonValue last = ParseReport(testing::ReadFileBytes(report));
    EXPECT_EQ(Number(last, L"dpi"), 96u);
    EXPECT_EQ(Number(last, L"width"), 720u);
    EXPECT_EQ(Number(last, L"height"), 370u);
    EXPECT_EQ(Word(last, L"language"), L"en");
    EXPECT_EQ(Word(last, L"backgroundLoaded"), L"true");
    EXPECT_EQ(Word(last, L"logoLoaded"), L"true");
    EXPECT_EQ(Word(last, L"phase"), L"Opening the editor…");
    EXPECT_TRUE(FindJsonMember(last, L"observedPhases").items.empty()) << "the construction line is not observed";
    EXPECT_EQ(FindJsonMember(last, L"observedPhases").kind, JsonKind::Array);
}

TEST(StartupPreview, WithoutReportNothingIsWrittenAndACloseEndsOnlyTheWindow)
{
    ScratchDirectory scratch(L"preview-quiet");
    testing::ProcessOptions options;
    options.hidden = false;
    options.currentDirectory = scratch.Path();
    testing::ChildProcess preview = testing::ChildProcess::Start(testing::BuiltLauncherPath(),
        {L"-KorvaneStartupPreview", L"-KorvaneStartupPreviewMs=1500", L"-KorvaneStartupReport=" + (scratch / L"no\\r.json")},
        options);
    const HWND window = WaitForStartupWindow(preview);
    ASSERT_NE(window, nullptr);
    // No cancel flag: a close destroys the window, and the preview still ends normally.
    PostMessageW(window, WM_CLOSE, 0, 0);
    ASSERT_TRUE(preview.Wait(30000));
    EXPECT_EQ(preview.ExitCode(), 0u);
    EXPECT_TRUE(std::filesystem::is_empty(std::filesystem::path(scratch.Path())))
        << "a report in a missing folder gives no file";
}

}  // namespace
}  // namespace korvane
