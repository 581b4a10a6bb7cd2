#include "CapturedRun.h"

#include "TestSupport.h"

#include "foundation/Paths.h"
#include "foundation/Process.h"
#include "foundation/UniqueResource.h"

#include <gtest/gtest.h>

namespace korvane::testing {
namespace {

UniqueFileHandle OpenForChild(TextView path, DWORD access, DWORD disposition)
{
    return UniqueFileHandle(CreateFileW(Text(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
        disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

}  // namespace

CapturedRun RunCaptured(TextView executable, const std::vector<Text>& arguments, TextView currentDirectory,
    DWORD timeoutMs)
{
    CapturedRun run;
    ScratchDirectory scratch(L"captured");
    const Text outPath = scratch / L"out.bin";
    const Text errPath = scratch / L"err.bin";
    {
        const UniqueFileHandle out = OpenForChild(outPath, GENERIC_WRITE, CREATE_ALWAYS);
        const UniqueFileHandle err = OpenForChild(errPath, GENERIC_WRITE, CREATE_ALWAYS);
        const UniqueFileHandle in = OpenForChild(L"NUL", GENERIC_READ, OPEN_EXISTING);
        const Text commandLine = BuildCommandLine(executable, arguments);
        // Whatever the child starts goes with it when the job is closed.
        const UniqueHandle job = MakeKillOnCloseJob();
        StartedProcess child;
        const auto startChild = [&] {
            return StartProcess(
                {
                    .application = executable,
                    .commandLine = commandLine,
                    .directory = currentDirectory,
                    .creationFlags = CREATE_NO_WINDOW,
                    .show = SW_HIDE,
                    .standard = {.input = in.Get(), .output = out.Get(), .error = err.Get()},
                    .job = job.Get(),
                },
                child);
        };
        if (!StartRetryingWineFault(startChild)) {
            ADD_FAILURE() << "cannot start " << TextToUtf8(executable) << ", error " << GetLastError();
            return run;
        }
        if (WaitForSingleObject(child.Process(), timeoutMs) != WAIT_OBJECT_0) {
            run.timedOut = true;
            TerminateJobObject(job.Get(), 1223);
            WaitForSingleObject(child.Process(), 5000);
        }
        GetExitCodeProcess(child.Process(), &run.exitCode);
    }
    run.out = ReadFileBytes(outPath);
    run.err = ReadFileBytes(errPath);
    return run;
}

}  // namespace korvane::testing
