#pragma once
// The one way a child process is started: what to start and how, and the owner of the started
// process's two handles. The child inherits exactly the handles it is given and nothing else.

#include "foundation/Text.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

#include <optional>
#include <span>

namespace korvane {

// The child's standard input, output and error. Setting any of them hands over all three
// (STARTF_USESTDHANDLES); each one set is inherited.
struct StandardHandles {
    HANDLE input = nullptr;
    HANDLE output = nullptr;
    HANDLE error = nullptr;
};

struct ProcessLaunchOptions {
    TextView application{};                  // full path of the program
    TextView commandLine{};                  // the whole command line, the program's own word first
    TextView directory{};                    // the child's current directory; empty: the caller's
    DWORD creationFlags = 0;
    std::optional<WORD> show{};              // STARTF_USESHOWWINDOW with this state; none: the child's own
    StandardHandles standard{};
    std::span<const HANDLE> inherit{};       // further handles to inherit; they are made inheritable
    const wchar_t* environment = nullptr;  // a UTF-16 environment block; null: the caller's
    // A job the child joins before it runs: it is started suspended and resumed once assigned,
    // unless creationFlags ask for a suspended child themselves.
    HANDLE job = nullptr;
};

// A started process: both handles owned, closed together.
class StartedProcess {
public:
    StartedProcess() = default;
    StartedProcess(StartedProcess&&) noexcept = default;
    StartedProcess& operator=(StartedProcess&&) noexcept = default;
    StartedProcess(const StartedProcess&) = delete;
    StartedProcess& operator=(const StartedProcess&) = delete;

    bool IsStarted() const noexcept { return process_.IsValid(); }
    HANDLE Process() const noexcept { return process_.Get(); }
    HANDLE Thread() const noexcept { return thread_.Get(); }
    DWORD Id() const noexcept { return processId_; }
    DWORD ThreadId() const noexcept { return threadId_; }
    // Whether the child joined the job of its options; false when none was given.
    bool InJob() const noexcept { return inJob_; }

    // Closes both handles; the process itself runs on.
    void Reset() noexcept;

private:
    friend bool StartProcess(const ProcessLaunchOptions& options, StartedProcess& started);

    UniqueHandle process_;
    UniqueHandle thread_;
    DWORD processId_ = 0;
    DWORD threadId_ = 0;
    bool inJob_ = false;
};

// An unnamed job whose processes are all killed when its last handle closes; null when the
// job could not be made or limited.
UniqueHandle MakeKillOnCloseJob();

// CreateProcessW with the options. False, with GetLastError telling why and `started` empty,
// when the child could not be made. A child that cannot join its job still runs; InJob says so.
bool StartProcess(const ProcessLaunchOptions& options, StartedProcess& started);

}  // namespace korvane
