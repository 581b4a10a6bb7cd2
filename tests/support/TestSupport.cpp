#include "TestSupport.h"

#include "context/UiLanguage.h"
#include "foundation/Files.h"
#include "foundation/Paths.h"
#include "foundation/Process.h"

#include <gtest/gtest.h>

#include <tlhelp32.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <system_error>

namespace korvane::testing {

Text BinaryDirectory()
{
    wchar_t buffer[32768] = {};
    const DWORD length = GetModuleFileNameW(nullptr, buffer, static_cast<DWORD>(std::size(buffer)));
    return ParentPath(TextView(buffer, length));
}

Text BuiltLauncherPath()
{
    return JoinPath(BinaryDirectory(), L"KorvaneEditor.exe");
}

Text StandinPath(TextView fileName)
{
    return JoinPath(JoinPath(BinaryDirectory(), L"standins"), fileName);
}

ScopedUiLanguage::ScopedUiLanguage(TextView languageCode) : previous_(UiLanguageFlag.load())
{
    SetUiLanguage(languageCode);
}

ScopedUiLanguage::~ScopedUiLanguage()
{
    UiLanguageFlag.exchange(previous_);
}

std::optional<Text> EnvironmentValue(TextView name)
{
    std::vector<wchar_t> buffer(32768, L'\0');
    const DWORD length = GetEnvironmentVariableW(Text(name).c_str(), buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length == 0 && GetLastError() == ERROR_ENVVAR_NOT_FOUND) {
        return std::nullopt;
    }
    return Text(buffer.data(), length);
}

ScopedEnvironmentVariable::ScopedEnvironmentVariable(TextView name, TextView value)
    : name_(name), previous_(EnvironmentValue(name))
{
    SetEnvironmentVariableW(name_.c_str(), Text(value).c_str());
}

ScopedEnvironmentVariable::~ScopedEnvironmentVariable()
{
    SetEnvironmentVariableW(name_.c_str(), previous_ ? previous_->c_str() : nullptr);
}

namespace {

std::atomic<unsigned> scratchCounter{0};

Text TempFolder()
{
    wchar_t buffer[MAX_PATH + 1] = {};
    const DWORD length = GetTempPathW(static_cast<DWORD>(std::size(buffer)), buffer);
    return NormalizePath(TextView(buffer, length));
}

}  // namespace

ScratchDirectory::ScratchDirectory(TextView label)
{
    const Text base = JoinPath(TempFolder(), L"korvane-tests");
    path_ = JoinPath(base, Text(label) + L"-" + DecimalText(GetCurrentProcessId()) + L"-" +
        DecimalText(GetTickCount64()) + L"-" + DecimalText(scratchCounter.fetch_add(1)));
    std::error_code error;
    std::filesystem::remove_all(path_, error);
    MakeDirectories(path_);
}

ScratchDirectory::~ScratchDirectory()
{
    std::error_code error;
    std::filesystem::remove_all(path_, error);
}

Text ScratchDirectory::operator/(TextView relative) const
{
    return JoinPath(path_, relative);
}

void MakeDirectories(TextView path)
{
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(Text(path)), error);
    ASSERT_TRUE(IsDirectory(path)) << "cannot create folder";
}

void WriteFileBytes(TextView path, BytesView bytes)
{
    MakeDirectories(ParentPath(path));
    ASSERT_TRUE(WriteWholeFile(path, bytes)) << "cannot write file";
}

void WriteFileText(TextView path, TextView text)
{
    WriteFileBytes(path, TextToUtf8(text));
}

Bytes ReadFileBytes(TextView path)
{
    return ReadWholeFile(path, 0x7FFFFFFF);
}

bool FileExists(TextView path)
{
    return GetFileAttributesW(Text(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::vector<Text> FilesMatching(TextView folder, TextView pattern)
{
    std::vector<Text> files;
    WIN32_FIND_DATAW found{};
    const UniqueFindHandle search(FindFirstFileW(JoinPath(folder, pattern).c_str(), &found));
    for (bool more = bool(search); more; more = FindNextFileW(search.Get(), &found) != FALSE) {
        files.push_back(JoinPath(folder, found.cFileName));
    }
    std::sort(files.begin(), files.end());
    return files;
}

void CopyFileTo(TextView from, TextView to)
{
    MakeDirectories(ParentPath(to));
    ASSERT_TRUE(CopyFileW(Text(from).c_str(), Text(to).c_str(), FALSE)) << "cannot copy file";
}

Bytes ReadRealData(TextView relativePath)
{
    const Bytes bytes = ReadFileBytes(JoinPath(JoinPath(BinaryDirectory(), L"testdata\\realdata"), relativePath));
    EXPECT_FALSE(bytes.empty()) << "real-data sample missing";
    return bytes;
}

Text BuildCommandLine(TextView executable, const std::vector<Text>& arguments)
{
    Text commandLine = QuoteCommandArgument(executable);
    for (const Text& argument : arguments) {
        commandLine += L' ';
        commandLine += QuoteCommandArgument(argument);
    }
    return commandLine;
}

ChildProcess ChildProcess::Start(TextView executable, const std::vector<Text>& arguments, const ProcessOptions& options)
{
    ChildProcess child;
    const Text commandLine = BuildCommandLine(executable, arguments);
    // The job lets a test end whatever the child left running; it does not kill on close, so
    // that a process the child started can outlive the child within the test.
    child.job_.Reset(CreateJobObjectW(nullptr, nullptr));
    const ProcessLaunchOptions launch{
        .application = executable,
        .commandLine = commandLine,
        .directory = options.currentDirectory,
        .show = options.hidden ? std::optional<WORD>(SW_HIDE) : std::nullopt,
        .job = child.job_.Get(),
    };
    StartedProcess started;
    if (!StartRetryingWineFault([&] { return StartProcess(launch, started); })) {
        ADD_FAILURE() << "cannot start child process, error " << GetLastError();
        return child;
    }
    if (!started.InJob()) {
        child.job_.Reset();
    }
    child.id_ = started.Id();
    child.process_ = std::move(started);
    return child;
}

ChildProcess::~ChildProcess()
{
    // Also when the child itself has ended: an editor it left running would hold the session
    // event and the test program's output, and take later tests down with this one.
    if (IsStarted()) {
        Kill();
    }
}

bool ChildProcess::Wait(DWORD timeoutMs)
{
    return IsStarted() && WaitForSingleObject(Handle(), timeoutMs) == WAIT_OBJECT_0;
}

DWORD ChildProcess::ExitCode() const
{
    DWORD code = 0xFFFFFFFF;
    if (IsStarted()) {
        GetExitCodeProcess(Handle(), &code);
    }
    return code;
}

void ChildProcess::Kill()
{
    if (job_) {
        TerminateJobObject(job_.Get(), 0xDEAD);
    }
    if (IsStarted()) {
        TerminateProcess(Handle(), 0xDEAD);
        WaitForSingleObject(Handle(), 5000);
    }
}

bool WaitUntil(HANDLE process, const std::function<bool()>& ready, DWORD timeoutMs)
{
    const ULONGLONG deadline = GetTickCount64() + timeoutMs;
    while (!ready()) {
        const bool ended = process != nullptr ? WaitForSingleObject(process, 20) == WAIT_OBJECT_0 : (Sleep(20), false);
        if (ended || GetTickCount64() >= deadline) {
            return ready();
        }
    }
    return true;
}

ProcessResult RunProcess(TextView executable, const std::vector<Text>& arguments, const ProcessOptions& options)
{
    ProcessResult result;
    ChildProcess child = ChildProcess::Start(executable, arguments, options);
    if (!child.IsStarted()) {
        result.exitCode = 0xFFFFFFFF;
        return result;
    }
    if (!child.Wait(options.timeoutMs)) {
        result.timedOut = true;
        ADD_FAILURE() << "child process did not end in time";
        child.Kill();
    }
    result.exitCode = child.ExitCode();
    return result;
}

LauncherInstall::LauncherInstall(TextView label, TextView installRelative)
    : scratch_(label), root_(scratch_ / installRelative)
{
    CopyFileTo(BuiltLauncherPath(), Launcher());
    WriteFileBytes(Editor(), "MZ");
}

Text LauncherInstall::Launcher() const
{
    return JoinPath(root_, L"KorvaneEditor.exe");
}

Text LauncherInstall::Editor() const
{
    return JoinPath(root_, L"Engine\\Binaries\\Win64\\UnrealEditor.exe");
}

ChildProcess LauncherInstall::Start(const std::vector<Text>& arguments) const
{
    return ChildProcess::Start(Launcher(), arguments, {.currentDirectory = root_});
}

DWORD LauncherInstall::Run(const std::vector<Text>& arguments) const
{
    const ProcessResult result = RunProcess(Launcher(), arguments, {.currentDirectory = root_});
    EXPECT_FALSE(result.timedOut);
    return result.exitCode;
}

std::vector<DWORD> ProcessesNamed(TextView fileName, std::optional<DWORD> parentId)
{
    std::vector<DWORD> ids;
    UniqueSnapshotHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot) {
        return ids;
    }
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more; more = Process32NextW(snapshot.Get(), &entry)) {
        if (EqualsIgnoringCase(entry.szExeFile, fileName) && (!parentId || entry.th32ParentProcessID == *parentId)) {
            ids.push_back(entry.th32ProcessID);
        }
    }
    return ids;
}

}  // namespace korvane::testing
