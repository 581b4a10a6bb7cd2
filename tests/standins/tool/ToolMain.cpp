// Stand-in for KorvaneTool.exe, the command-line program that knows SDKs, Mod sources and
// workspaces. It takes exactly the commands and argument orders the launcher may issue and
// refuses anything else with a message on standard error and exit code 2. Every run appends
// one line {"argv":[...],"cwd":"...","pid":N} (and "grandchildPid" when it started one) to the
// file named by KORVANE_STANDIN_TOOL_LOG, or else to "KorvaneTool.calls.jsonl" beside the tool;
// "argv" holds the program path first. How a test steers a run: see tool/ToolScenario.h.
#include "tool/ToolArguments.h"
#include "tool/ToolCommands.h"
#include "tool/ToolScenario.h"

#include "common/StandinSupport.h"

#include "foundation/Paths.h"
#include "foundation/Process.h"

#include <windows.h>

namespace korvane::standins {
namespace {

// The argument that makes a copy of the tool wait until it is killed.
constexpr wchar_t kHangArgument[] = L"--standin-hang-until-killed";

DWORD StartHangingCopy()
{
    wchar_t path[32768] = {};
    GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
    const Text commandLine = QuoteCommandArgument(path) + L" " + kHangArgument;
    StartedProcess copy;
    // No handles are inherited: the copy must not keep the caller's output files open.
    if (!StartProcess({.application = path, .commandLine = commandLine, .creationFlags = CREATE_NO_WINDOW}, copy)) {
        return 0;
    }
    return copy.Id();
}

void LogCall(const std::vector<Text>& arguments, DWORD grandchild)
{
    const std::optional<Text> named = EnvironmentValue(L"KORVANE_STANDIN_TOOL_LOG");
    const Text log = named && !named->empty() ? *named : JoinPath(ExecutableFolder(), L"KorvaneTool.calls.jsonl");
    Text line = L"{\"argv\":" + JsonStringArray(arguments) + L",\"cwd\":" + QuoteJsonText(CurrentFolder()) +
        L",\"pid\":" + DecimalText(GetCurrentProcessId());
    if (grandchild != 0) {
        line += L",\"grandchildPid\":" + DecimalText(grandchild);
    }
    AppendLine(log, TextToUtf8(line + L"}"));
}

DWORD Run()
{
    const std::vector<Text> arguments = CommandLineArguments();
    if (arguments.size() == 2 && arguments[1] == kHangArgument) {
        Sleep(INFINITE);
    }
    ToolCall call;
    Text refusal;
    const bool accepted =
        ParseToolArguments(std::vector<Text>(arguments.begin() + (arguments.empty() ? 0 : 1), arguments.end()), call, refusal);
    ToolScenario scenario;
    DWORD grandchild = 0;
    if (accepted) {
        scenario = LoadToolScenario(call.command, OptionValue(call, L"sdk"));
        if (scenario.IsTrue(L"grandchild")) {
            grandchild = StartHangingCopy();
        }
    }
    LogCall(arguments, grandchild);

    const HANDLE out = GetStdHandle(STD_OUTPUT_HANDLE);
    const HANDLE err = GetStdHandle(STD_ERROR_HANDLE);
    if (!accepted) {
        WriteAll(err, TextToUtf8(L"KorvaneTool: " + refusal + L"\n" + ToolUsage()));
        return 2;
    }
    if (const std::uint64_t sleepMs = scenario.Number(L"sleepMs", 0); sleepMs > 0) {
        Sleep(static_cast<DWORD>(sleepMs));
    }
    if (scenario.IsTrue(L"hang")) {
        Sleep(INFINITE);
    }
    CommandOutcome outcome = RunToolCommand(call, scenario);
    if (!outcome.settled) {
        if (const std::optional<DWORD> code = scenario.ExitCode()) {
            outcome.exitCode = *code;
        }
        if (std::optional<Bytes> replaced = ScenarioStream(scenario, L"stdout")) {
            outcome.out = std::move(*replaced);
        }
        if (std::optional<Bytes> replaced = ScenarioStream(scenario, L"stderr")) {
            outcome.err = std::move(*replaced);
        }
    }
    WriteAll(out, outcome.out);
    WriteAll(err, outcome.err);
    return outcome.exitCode;
}

}  // namespace
}  // namespace korvane::standins

int wmain()
{
    // ExitProcess takes the code as unsigned, so codes with the top bit set pass unchanged.
    ExitProcess(korvane::standins::Run());
}
