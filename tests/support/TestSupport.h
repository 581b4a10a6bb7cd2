#pragma once
// Helpers shared by the test programs: scratch folders that clean up after themselves,
// files, and real child processes (the launcher and the stand-ins) with their exit codes.

#include "foundation/Process.h"
#include "foundation/Text.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace korvane::testing {

// Folder of the running test program; the launcher and the stand-ins are built beside it.
Text BinaryDirectory();
// The launcher as built: bin\KorvaneEditor.exe.
Text BuiltLauncherPath();
// A stand-in program: bin\standins\<name>.
Text StandinPath(TextView fileName);

// Sets the process-wide UI language for a scope and puts the earlier one back on every way out,
// so that a failing test leaves no Chinese behind for the next one.
class ScopedUiLanguage {
public:
    explicit ScopedUiLanguage(TextView languageCode);
    ~ScopedUiLanguage();
    ScopedUiLanguage(const ScopedUiLanguage&) = delete;
    ScopedUiLanguage& operator=(const ScopedUiLanguage&) = delete;

private:
    std::int32_t previous_;
};

// The value of a variable of this process's environment; nullopt when it is not set.
std::optional<Text> EnvironmentValue(TextView name);

// Sets a variable of this process's environment, which children inherit, for a scope, and puts
// the earlier value back (or removes it) on every way out.
class ScopedEnvironmentVariable {
public:
    ScopedEnvironmentVariable(TextView name, TextView value);
    ~ScopedEnvironmentVariable();
    ScopedEnvironmentVariable(const ScopedEnvironmentVariable&) = delete;
    ScopedEnvironmentVariable& operator=(const ScopedEnvironmentVariable&) = delete;

private:
    Text name_;
    std::optional<Text> previous_;
};

// A fresh, empty folder below %TEMP%\korvane-tests, removed with everything in it when the
// object goes. `label` makes the name readable; the process id and a counter make it unique.
class ScratchDirectory {
public:
    explicit ScratchDirectory(TextView label = L"scratch");
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    const Text& Path() const noexcept { return path_; }
    // Path() joined with a relative path.
    Text operator/(TextView relative) const;

private:
    Text path_;
};

// Creates the folder and all missing parents; fails the test when it cannot.
void MakeDirectories(TextView path);
// Writes the bytes, creating missing parent folders.
void WriteFileBytes(TextView path, BytesView bytes);
void WriteFileText(TextView path, TextView text);  // as UTF-8, no byte-order mark
// All bytes of a file; empty for a missing file.
Bytes ReadFileBytes(TextView path);
bool FileExists(TextView path);
// The paths of the files in `folder` whose names match `pattern` ("*.umod"), sorted.
std::vector<Text> FilesMatching(TextView folder, TextView pattern);
void CopyFileTo(TextView from, TextView to);
// Contents of a real-data sample file (../shared/realdata relative to the source tree).
Bytes ReadRealData(TextView relativePath);

struct ProcessOptions {
    Text currentDirectory;                      // empty: the caller's
    DWORD timeoutMs = 120000;                   // a hung child fails the test, then is killed
    bool hidden = true;
};

struct ProcessResult {
    DWORD exitCode = 0;
    bool timedOut = false;
};

// A started child. Killed with whatever it started (through a job) when the object goes, so
// that a failing test leaves no process behind.
class ChildProcess {
public:
    ChildProcess() = default;
    ChildProcess(ChildProcess&&) noexcept = default;
    ChildProcess& operator=(ChildProcess&&) noexcept = default;
    ~ChildProcess();

    static ChildProcess Start(TextView executable, const std::vector<Text>& arguments,
        const ProcessOptions& options = {});

    bool IsStarted() const noexcept { return process_.IsStarted(); }
    DWORD Id() const noexcept { return id_; }
    HANDLE Handle() const noexcept { return process_.Process(); }
    // True when it ended within `timeoutMs`.
    bool Wait(DWORD timeoutMs);
    DWORD ExitCode() const;
    void Kill();

private:
    StartedProcess process_;
    UniqueHandle job_;
    DWORD id_ = 0;
};

// The built launcher copied into `installRelative` of a scratch folder of its own, with a file
// where it looks for the editor, so that a test can shape the folders around it. Its runs start
// in the install root.
class LauncherInstall {
public:
    explicit LauncherInstall(TextView label, TextView installRelative = L"install");

    const Text& Root() const noexcept { return root_; }
    Text Launcher() const;  // Root()\KorvaneEditor.exe
    Text Editor() const;    // Root()\Engine\Binaries\Win64\UnrealEditor.exe
    const Text& ScratchPath() const noexcept { return scratch_.Path(); }
    Text operator/(TextView relative) const { return scratch_ / relative; }
    ChildProcess Start(const std::vector<Text>& arguments) const;
    // Runs to the end and gives the exit code; a run that outlasts two minutes fails the test.
    DWORD Run(const std::vector<Text>& arguments) const;

private:
    ScratchDirectory scratch_;
    Text root_;
};

// Calls `start` (a StartProcess) again while it fails with ERROR_INTERNAL_ERROR, a few times:
// Wine now and then refuses to start an image whose previous process was just terminated.
template <typename Start>
bool StartRetryingWineFault(Start start)
{
    for (int attempt = 0;; ++attempt) {
        if (start()) {
            return true;
        }
        if (GetLastError() != ERROR_INTERNAL_ERROR || attempt == 4) {
            return false;
        }
        Sleep(100);  // nothing to wait on: the fault clears once Wine has let the old image go
    }
}

// Polls until `ready` holds or `timeoutMs` pass, or `process` (may be null) ends: what another
// process does to its windows and files signals nothing to wait on. True when it held.
bool WaitUntil(HANDLE process, const std::function<bool()>& ready, DWORD timeoutMs = 60000);
inline bool WaitUntil(const ChildProcess& process, const std::function<bool()>& ready, DWORD timeoutMs = 60000)
{
    return WaitUntil(process.Handle(), ready, timeoutMs);
}

// Starts, waits up to options.timeoutMs, kills on time-out.
ProcessResult RunProcess(TextView executable, const std::vector<Text>& arguments, const ProcessOptions& options = {});

// The command line that CommandLineToArgvW splits back into `executable` and `arguments`.
Text BuildCommandLine(TextView executable, const std::vector<Text>& arguments);

// Process ids of all running processes whose image file name equals `fileName` (case ignored),
// and only the children of `parentId` when one is given, from a toolhelp snapshot.
std::vector<DWORD> ProcessesNamed(TextView fileName, std::optional<DWORD> parentId = std::nullopt);

}  // namespace korvane::testing
