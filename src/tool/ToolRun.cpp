#include "tool/ToolRun.h"

#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"
#include "host/AuthoringLayout.h"
#include "tool/ProgressFile.h"
#include "tool/ToolMessages.h"
#include "tool/ToolOutcome.h"

#include <windows.h>

#include <vector>

namespace korvane {
namespace {

constexpr DWORD kPollMs = 100;
constexpr DWORD kKillWaitMs = 5000;

bool IsSet(const std::atomic<bool>* flag) noexcept
{
    return flag != nullptr && flag->load();
}

// A handle the child inherits as one of its standard handles.
UniqueFileHandle OpenInheritable(const Text& path, DWORD access, DWORD disposition, DWORD attributes)
{
    SECURITY_ATTRIBUTES security{};
    security.nLength = sizeof(security);
    security.bInheritHandle = TRUE;
    return UniqueFileHandle(CreateFileW(
        path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &security, disposition, attributes, nullptr));
}

// A job that kills whatever is in it when its last handle closes; null when any step fails,
// and the run then goes on without one.
UniqueHandle PutIntoKillOnCloseJob(HANDLE process)
{
    UniqueHandle job(CreateJobObjectW(nullptr, nullptr));
    if (!job) {
        return {};
    }
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (!SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof(limits))
        || !AssignProcessToJobObject(job.Get(), process)) {
        return {};
    }
    return job;
}

// The processes still in the job, opened so that their end can be awaited once the job is
// closed: a grandchild may still hold the output files open, which would keep them from
// being deleted.
std::vector<UniqueHandle> OpenJobMembers(HANDLE job)
{
    constexpr std::size_t kMaxMembers = 64;
    // The list's header followed by room for the ids, aligned as the ids are.
    std::vector<ULONG_PTR> buffer(sizeof(JOBOBJECT_BASIC_PROCESS_ID_LIST) / sizeof(ULONG_PTR) + kMaxMembers);
    auto* list = reinterpret_cast<JOBOBJECT_BASIC_PROCESS_ID_LIST*>(buffer.data());
    std::vector<UniqueHandle> members;
    if (!QueryInformationJobObject(job, JobObjectBasicProcessIdList, list,
            static_cast<DWORD>(buffer.size() * sizeof(ULONG_PTR)), nullptr)) {
        return members;
    }
    for (DWORD index = 0; index < list->NumberOfProcessIdsInList && index < kMaxMembers; ++index) {
        if (HANDLE member = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(list->ProcessIdList[index]))) {
            members.emplace_back(member);
        }
    }
    return members;
}

void WaitForAll(const std::vector<UniqueHandle>& processes, DWORD timeoutMs)
{
    const ULONGLONG deadline = GetTickCount64() + timeoutMs;
    for (const UniqueHandle& process : processes) {
        const ULONGLONG now = GetTickCount64();
        WaitForSingleObject(process.Get(), now < deadline ? static_cast<DWORD>(deadline - now) : 0);
    }
}

}  // namespace

Text BuildSdkArguments(TextView sdk, TextView gameDirectory)
{
    Text arguments = L" --sdk " + QuoteCommandArgument(sdk);
    if (!gameDirectory.empty()) {
        arguments += L" --game-root " + QuoteCommandArgument(gameDirectory);
    }
    return arguments;
}

ToolResult RunTool(const ToolInvocation& invocation, std::uint64_t timeLimitMs)
{
    ToolResult result;
    const Text toolPath = ResolveToolPath(invocation.editorRoot);
    if (IsSet(invocation.cancelFlag)) {
        result.exitCode = kToolCancelledExitCode;
        result.error = kToolCancelledMessage.Now();
        return result;
    }
    if (toolPath.empty() || !IsRegularFile(toolPath)) {
        result.error = kToolMissingMessage.Now();
        return result;
    }

    TemporaryFile outputFile(CreateLauncherTempFile());
    TemporaryFile errorFile(CreateLauncherTempFile());
    if (outputFile.IsEmpty() || errorFile.IsEmpty()) {
        result.error = kToolOutputFilesMessage.Now();
        return result;
    }

    PROCESS_INFORMATION started{};
    BOOL startedOk = FALSE;
    DWORD startError = 0;
    {
        // Closed in the parent as soon as the child has them (or has failed to start).
        UniqueFileHandle output = OpenInheritable(
            outputFile.Path(), GENERIC_WRITE, CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY);
        UniqueFileHandle error = OpenInheritable(
            errorFile.Path(), GENERIC_WRITE, CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY);
        UniqueFileHandle input = OpenInheritable(L"NUL", GENERIC_READ, OPEN_EXISTING, 0);
        if (!output || !error || !input) {
            result.error = kToolOutputOpenMessage.Now();
            return result;
        }

        Text commandLine = QuoteCommandArgument(toolPath) + L" " + invocation.arguments;
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;
        startup.wShowWindow = SW_HIDE;
        startup.hStdInput = input.Get();
        startup.hStdOutput = output.Get();
        startup.hStdError = error.Get();
        // Suspended, so that the child is in its job before it can start anything of its own.
        startedOk = CreateProcessW(toolPath.c_str(), commandLine.data(), nullptr, nullptr, TRUE,
            CREATE_NO_WINDOW | CREATE_SUSPENDED, nullptr, invocation.editorRoot.c_str(), &startup, &started);
        startError = GetLastError();
    }
    if (!startedOk) {
        result.error = ToolStartFailedText(startError);
        return result;
    }
    UniqueHandle process(started.hProcess);
    UniqueHandle thread(started.hThread);
    UniqueHandle job = PutIntoKillOnCloseJob(process.Get());

    ResumeThread(thread.Get());
    const ULONGLONG startTick = GetTickCount64();
    const bool followProgress = !invocation.progressFile.empty() && invocation.progressCallback != nullptr;
    ProgressFileFollower progress;

    bool kill = false;
    for (;;) {
        if (WaitForSingleObject(process.Get(), kPollMs) != WAIT_TIMEOUT) {
            break;
        }
        if (IsSet(invocation.cancelFlag) || GetTickCount64() - startTick > timeLimitMs) {
            kill = true;
            break;
        }
        if (followProgress) {
            if (auto line = progress.Take(ReadWholeFile(invocation.progressFile, kProgressFileLimit), result.cacheHit)) {
                invocation.progressCallback(*line);
            }
        }
    }

    if (kill) {
        if (job) {
            TerminateJobObject(job.Get(), kToolCancelledExitCode);
        } else {
            TerminateProcess(process.Get(), kToolCancelledExitCode);
        }
        WaitForSingleObject(process.Get(), kKillWaitMs);
        result.error = IsSet(invocation.cancelFlag) ? kToolCancelledMessage.Now() : kToolTimedOutMessage.Now();
    }

    DWORD exitCode = 1;
    GetExitCodeProcess(process.Get(), &exitCode);
    result.exitCode = exitCode;
    thread.Reset();
    process.Reset();
    if (job) {
        // Closing the job ends whatever the tool left running.
        const std::vector<UniqueHandle> leftovers = OpenJobMembers(job.Get());
        job.Reset();
        WaitForAll(leftovers, kKillWaitMs);
    }

    result.output = ReadWholeFile(outputFile.Path(), kLargeFileLimit);
    const Bytes standardError = ReadWholeFile(errorFile.Path(), kLargeFileLimit);
    CompleteToolError(result.exitCode, result.output, standardError, result.error);

    if (!invocation.timingReport.empty()) {
        ApplyTimingReport(ReadWholeFile(invocation.timingReport, kReportFileLimit), result.cacheHit);
    }
    return result;
}

}  // namespace korvane
