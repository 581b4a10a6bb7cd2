#include "CapturedRun.h"

#include "TestSupport.h"

#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"

#include <gtest/gtest.h>

namespace korvane::testing {
namespace {

UniqueFileHandle InheritableFile(TextView path, DWORD access, DWORD disposition)
{
    SECURITY_ATTRIBUTES security{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return UniqueFileHandle(CreateFileW(Text(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &security,
        disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

std::optional<Text> VariableValue(TextView name)
{
    const Text key(name);
    const DWORD needed = GetEnvironmentVariableW(key.c_str(), nullptr, 0);
    if (needed == 0) {
        return GetLastError() == ERROR_ENVVAR_NOT_FOUND ? std::nullopt : std::optional<Text>(Text());
    }
    Text value(needed, L'\0');
    value.resize(GetEnvironmentVariableW(key.c_str(), value.data(), needed));
    return value;
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
        UniqueFileHandle out = InheritableFile(outPath, GENERIC_WRITE, CREATE_ALWAYS);
        UniqueFileHandle err = InheritableFile(errPath, GENERIC_WRITE, CREATE_ALWAYS);
        UniqueFileHandle in = InheritableFile(L"NUL", GENERIC_READ, OPEN_EXISTING);
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;
        startup.wShowWindow = SW_HIDE;
        startup.hStdInput = in.Get();
        startup.hStdOutput = out.Get();
        startup.hStdError = err.Get();
        Text commandLine = BuildCommandLine(executable, arguments);
        const Text directory(currentDirectory);
        PROCESS_INFORMATION information{};
        const auto startProcess = [&] {
            return CreateProcessW(Text(executable).c_str(), commandLine.data(), nullptr, nullptr, TRUE,
                CREATE_NO_WINDOW | CREATE_SUSPENDED, nullptr, directory.empty() ? nullptr : directory.c_str(), &startup,
                &information);
        };
        if (!StartRetryingWineFault(startProcess)) {
            ADD_FAILURE() << "cannot start " << TextToUtf8(executable) << ", error " << GetLastError();
            return run;
        }
        UniqueHandle process(information.hProcess);
        UniqueHandle thread(information.hThread);
        // Whatever the child starts goes with it when the job is closed.
        UniqueHandle job(CreateJobObjectW(nullptr, nullptr));
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof(limits));
        AssignProcessToJobObject(job.Get(), process.Get());
        const ULONGLONG start = GetTickCount64();
        ResumeThread(thread.Get());
        if (WaitForSingleObject(process.Get(), timeoutMs) != WAIT_OBJECT_0) {
            run.timedOut = true;
            TerminateJobObject(job.Get(), 1223);
            WaitForSingleObject(process.Get(), 5000);
        }
        run.elapsedMs = GetTickCount64() - start;
        GetExitCodeProcess(process.Get(), &run.exitCode);
    }
    run.out = ReadFileBytes(outPath);
    run.err = ReadFileBytes(errPath);
    return run;
}

ScopedVariable::ScopedVariable(TextView name, std::optional<Text> value) : name_(name), previous_(VariableValue(name))
{
    SetEnvironmentVariableW(name_.c_str(), value ? value->c_str() : nullptr);
}

ScopedVariable::~ScopedVariable()
{
    SetEnvironmentVariableW(name_.c_str(), previous_ ? previous_->c_str() : nullptr);
}

std::vector<Bytes> SplitLines(BytesView bytes)
{
    std::vector<Bytes> lines;
    size_t start = 0;
    while (start < bytes.size()) {
        size_t end = bytes.find('\n', start);
        if (end == BytesView::npos) {
            end = bytes.size();
        }
        lines.emplace_back(bytes.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

}  // namespace korvane::testing
