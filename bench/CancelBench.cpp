// Cancel during the preparation of a Direct edit, as an author meets it: the progress window is
// closed while the tool runs, and the time runs until the launcher's error box stands and then
// until the launcher has ended. Once with a tool that only hangs, once with a tool that has also
// left a process of its own running, which the launcher ends with the tool's job.
#include "BenchTiming.h"
#include "ShippedLauncher.h"
#include "MessageBoxes.h"
#include "SampleInstall.h"
#include "TestSupport.h"

#include "foundation/Text.h"

#include <windows.h>

#include <cstdio>
#include <vector>

namespace {

using korvane::bench::Median;
using korvane::bench::NowMs;

using namespace korvane;

constexpr int kRounds = 5;

struct Search {
    DWORD processId;
    HWND found;
};

HWND ProgressWindow(DWORD processId)
{
    Search search{processId, nullptr};
    EnumWindows(
        [](HWND window, LPARAM parameter) -> BOOL {
            auto& wanted = *reinterpret_cast<Search*>(parameter);
            DWORD owner = 0;
            GetWindowThreadProcessId(window, &owner);
            wchar_t name[64] = {};
            GetClassNameW(window, name, 64);
            if (owner == wanted.processId && lstrcmpW(name, L"KorvaneStartupProgress") == 0) {
                wanted.found = window;
                return FALSE;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

// One cancelled launch: milliseconds from the close to the box, and from the close to the end.
bool CancelOnce(const testing::SampleInstall& install, double& toBox, double& toExit)
{
    const std::size_t callsBefore = install.ToolCalls().size();
    testing::ProcessOptions options;
    options.currentDirectory = install.EditorRoot();
    options.hidden = false;
    testing::ChildProcess launcher = testing::ChildProcess::Start(install.Launcher(),
        {L"-sdk=" + install.SdkPath(), L"-KorvaneModFile=" + install.ModPackage(0)}, options);
    HWND progress = nullptr;
    for (int attempt = 0; attempt < 1200 && (progress == nullptr || install.ToolCalls().size() == callsBefore);
         ++attempt) {
        progress = ProgressWindow(launcher.Id());
        if (WaitForSingleObject(launcher.Handle(), 25) == WAIT_OBJECT_0) {
            return false;
        }
    }
    Sleep(300);  // the tool is well into its run; nothing to wait on
    const double closed = NowMs();
    PostMessageW(progress, WM_CLOSE, 0, 0);
    const auto box = testing::WaitForMessageBox(launcher.Id(), launcher.Handle(), 60000);
    if (!box) {
        return false;
    }
    toBox = NowMs() - closed;
    testing::PressMessageBoxButton(box->window, IDOK);
    launcher.Wait(60000);
    toExit = NowMs() - closed;
    return launcher.ExitCode() == 6;
}

}  // namespace

int wmain()
{
    testing::SampleInstall install(L"cancel-bench");
    bench::UseShippedLauncher(install.Launcher());
    const struct {
        const char* name;
        const wchar_t* scenario;
    } cases[] = {
        {"tool hangs", LR"({"prepare":{"hang":true}})"},
        {"tool hangs, its own process too", LR"({"prepare":{"hang":true,"grandchild":true}})"},
    };
    for (const auto& run : cases) {
        install.SetToolScenario(run.scenario);
        std::vector<double> toBox;
        std::vector<double> toExit;
        for (int round = 0; round < kRounds; ++round) {
            double box = 0;
            double exit = 0;
            if (!CancelOnce(install, box, exit)) {
                std::fprintf(stderr, "%s: the cancelled launch did not end as expected\n", run.name);
                return 1;
            }
            toBox.push_back(box);
            toExit.push_back(exit);
        }
        std::printf("cancel during preparation, %s: close to box %.0f ms, close to exit %.0f ms (median of %d)\n",
            run.name, Median(toBox), Median(toExit), kRounds);
    }
    return 0;
}
