#include "foundation/Process.h"

#include <algorithm>
#include <vector>

namespace korvane {
namespace {

// The attribute list that limits inheritance to the given handles; deleted when it goes.
class InheritedHandleList {
public:
    explicit InheritedHandleList(std::vector<HANDLE> handles) : handles_(std::move(handles))
    {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        storage_.resize(size);
        auto* list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(storage_.data());
        if (!InitializeProcThreadAttributeList(list, 1, 0, &size)) {
            return;
        }
        list_ = list;
        if (!UpdateProcThreadAttribute(list_, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(),
                handles_.size() * sizeof(HANDLE), nullptr, nullptr)) {
            DeleteProcThreadAttributeList(list_);
            list_ = nullptr;
        }
    }
    ~InheritedHandleList()
    {
        if (list_ != nullptr) {
            DeleteProcThreadAttributeList(list_);
        }
    }
    InheritedHandleList(const InheritedHandleList&) = delete;
    InheritedHandleList& operator=(const InheritedHandleList&) = delete;

    LPPROC_THREAD_ATTRIBUTE_LIST Get() const noexcept { return list_; }

private:
    std::vector<HANDLE> handles_;  // the attribute points into this, so it lives as long
    std::vector<unsigned char> storage_;
    LPPROC_THREAD_ATTRIBUTE_LIST list_ = nullptr;
};

std::vector<HANDLE> HandlesToInherit(const ProcessLaunchOptions& options)
{
    std::vector<HANDLE> handles;
    for (HANDLE handle : {options.standard.input, options.standard.output, options.standard.error}) {
        if (handle != nullptr && handle != INVALID_HANDLE_VALUE) {
            handles.push_back(handle);
        }
    }
    handles.insert(handles.end(), options.inherit.begin(), options.inherit.end());
    // The list refuses a handle named twice.
    std::sort(handles.begin(), handles.end());
    handles.erase(std::unique(handles.begin(), handles.end()), handles.end());
    return handles;
}

}  // namespace

void StartedProcess::Reset() noexcept
{
    thread_.Reset();
    process_.Reset();
    processId_ = 0;
    threadId_ = 0;
    inJob_ = false;
}

UniqueHandle MakeKillOnCloseJob()
{
    UniqueHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (!job || !SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof(limits))) {
        return {};
    }
    return job;
}

bool StartProcess(const ProcessLaunchOptions& options, StartedProcess& started)
{
    started.Reset();
    const Text application(options.application);
    const Text directory(options.directory);
    std::vector<wchar_t> commandLine(options.commandLine.begin(), options.commandLine.end());
    commandLine.push_back(L'\0');  // CreateProcessW may write into it

    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof(startup);
    if (options.show) {
        startup.StartupInfo.dwFlags |= STARTF_USESHOWWINDOW;
        startup.StartupInfo.wShowWindow = *options.show;
    }
    const StandardHandles& standard = options.standard;
    if (standard.input != nullptr || standard.output != nullptr || standard.error != nullptr) {
        startup.StartupInfo.dwFlags |= STARTF_USESTDHANDLES;
        startup.StartupInfo.hStdInput = standard.input;
        startup.StartupInfo.hStdOutput = standard.output;
        startup.StartupInfo.hStdError = standard.error;
    }

    DWORD flags = options.creationFlags;
    // Only the handles of the list cross over, so that a handle another thread made
    // inheritable at the same moment does not leak into this child.
    std::vector<HANDLE> handles = HandlesToInherit(options);
    for (HANDLE handle : handles) {
        if (!SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT)) {
            return false;
        }
    }
    const bool inherits = !handles.empty();
    const InheritedHandleList inherited(inherits ? std::move(handles) : std::vector<HANDLE>{});
    if (inherits) {
        if (inherited.Get() == nullptr) {
            return false;
        }
        startup.lpAttributeList = inherited.Get();
        flags |= EXTENDED_STARTUPINFO_PRESENT;
    }
    // Suspended until it is in its job, so that nothing it starts escapes the job.
    const bool resumeAfterJob = options.job != nullptr && (options.creationFlags & CREATE_SUSPENDED) == 0;
    if (options.job != nullptr) {
        flags |= CREATE_SUSPENDED;
    }
    if (options.environment != nullptr) {
        flags |= CREATE_UNICODE_ENVIRONMENT;
    }

    PROCESS_INFORMATION information{};
    if (!CreateProcessW(application.empty() ? nullptr : application.c_str(), commandLine.data(), nullptr, nullptr,
            inherits ? TRUE : FALSE, flags, const_cast<wchar_t*>(options.environment),
            directory.empty() ? nullptr : directory.c_str(), &startup.StartupInfo, &information)) {
        return false;
    }
    started.process_.Reset(information.hProcess);
    started.thread_.Reset(information.hThread);
    started.processId_ = information.dwProcessId;
    started.threadId_ = information.dwThreadId;
    if (options.job != nullptr) {
        started.inJob_ = AssignProcessToJobObject(options.job, information.hProcess) != FALSE;
    }
    if (resumeAfterJob) {
        ResumeThread(information.hThread);
    }
    return true;
}

}  // namespace korvane
