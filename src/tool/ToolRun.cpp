#include "tool/ToolRun.h"

#include "context/SharedConstants.h"
#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "foundation/Process.h"
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

// A handle for the child's standard input, output or error.
UniqueFileHandle OpenForChild(const Text& path, DWORD access, DWORD disposition, DWORD attributes)
{
    return UniqueFileHandle(CreateFileW(
        path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition, attributes, nullptr));
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

ToolResult RunTool(const ToolInvocation& invocation, std::uint64_t timeLimitMs)
{
    ToolResult result;
    const Text toolPath = ResolveToolPath(invocation.editorRoot);
    if (IsSet(invocation.cancelFlag)) {
        result.exitCode = kCancelledExitCode;
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

    // Made before the start, so that the child is in it before it can start anything of its
    // own. A tool that cannot be held in a job still runs; only its leftovers outlive it then.
    UniqueHandle job = MakeKillOnCloseJob();
    StartedProcess child;
    {
        // Closed in the parent as soon as the child has them (or has failed to start).
        const UniqueFileHandle output =
            OpenForChild(outputFile.Path(), GENERIC_WRITE, CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY);
        const UniqueFileHandle error =
            OpenForChild(errorFile.Path(), GENERIC_WRITE, CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY);
        const UniqueFileHandle input = OpenForChild(L"NUL", GENERIC_READ, OPEN_EXISTING, 0);
        if (!output || !error || !input) {
            result.error = kToolOutputOpenMessage.Now();
            return result;
        }
        const Text commandLine = QuoteCommandArgument(toolPath) + L" " + invocation.arguments;
        const bool started = StartProcess(
            {
                .application = toolPath,
                .commandLine = commandLine,
                .directory = invocation.editorRoot,
                .creationFlags = CREATE_NO_WINDOW,
                .show = SW_HIDE,
                .standard = {.input = input.Get(), .output = output.Get(), .error = error.Get()},
                .job = job.Get(),
            },
            child);
        if (!started) {
            result.error = ToolStartFailedText(GetLastError());
            return result;
        }
    }
    if (!child.InJob()) {
        job.Reset();
    }

    const ULONGLONG startTick = GetTickCount64();
    const bool followProgress = !invocation.progressFile.empty() && invocation.progressCallback != nullptr;
    ProgressFileFollower progress;

    bool kill = false;
    for (;;) {
        if (WaitForSingleObject(child.Process(), kPollMs) != WAIT_TIMEOUT) {
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
            TerminateJobObject(job.Get(), kCancelledExitCode);
        } else {
            TerminateProcess(child.Process(), kCancelledExitCode);
        }
        WaitForSingleObject(child.Process(), kKillWaitMs);
        result.error = IsSet(invocation.cancelFlag) ? kToolCancelledMessage.Now() : kToolTimedOutMessage.Now();
    }

    DWORD exitCode = 1;
    GetExitCodeProcess(child.Process(), &exitCode);
    result.exitCode = exitCode;
    child.Reset();
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
