#include "ToolProcess.h"

#include "foundation/Json.h"
#include "foundation/Paths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace korvane::testing {

ToolInstall::ToolInstall(TextView label) : scratch_(label), root_(scratch_ / L"install")
{
    MakeDirectories(ParentPath(ToolPath()));
    CopyFileTo(StandinPath(L"KorvaneTool.exe"), ToolPath());
    SetEnvironmentVariableW(L"KORVANE_STANDIN_TOOL_LOG", Path(L"calls.jsonl").c_str());
    SetEnvironmentVariableW(L"KORVANE_STANDIN_TOOL_SCENARIO", Path(L"scenario.json").c_str());
    WriteFileBytes(Path(L"scenario.json"), "{}");
}

ToolInstall::~ToolInstall()
{
    SetEnvironmentVariableW(L"KORVANE_STANDIN_TOOL_LOG", nullptr);
    SetEnvironmentVariableW(L"KORVANE_STANDIN_TOOL_SCENARIO", nullptr);
}

Text ToolInstall::ToolPath() const
{
    return JoinPath(root_, L"Plugins\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe");
}

void ToolInstall::SetScenario(BytesView json) const
{
    WriteFileBytes(Path(L"scenario.json"), json);
}

std::vector<ToolCallSeen> ToolInstall::Calls() const
{
    std::vector<ToolCallSeen> calls;
    const Bytes log = ReadFileBytes(Path(L"calls.jsonl"));
    std::size_t begin = 0;
    while (begin < log.size()) {
        std::size_t end = log.find('\n', begin);
        if (end == Bytes::npos) {
            end = log.size();
        }
        const BytesView line(log.data() + begin, end - begin);
        begin = end + 1;
        if (line.empty()) {
            continue;
        }
        try {
            const JsonValue entry = ParseJson(line);
            ToolCallSeen call;
            for (const JsonValue& word : FindJsonMember(entry, L"argv").items) {
                call.argv.push_back(word.text);
            }
            call.cwd = FindJsonMember(entry, L"cwd").text;
            call.pid = static_cast<DWORD>(std::stoul(FindJsonMember(entry, L"pid").text));
            if (const Text& grandchild = FindJsonMember(entry, L"grandchildPid").text; !grandchild.empty()) {
                call.grandchildPid = static_cast<DWORD>(std::stoul(grandchild));
            }
            calls.push_back(std::move(call));
        } catch (const std::exception&) {
            ADD_FAILURE() << "unreadable call log line";
        }
    }
    return calls;
}

bool AnyAlive(const std::vector<DWORD>& processIds)
{
    return !WaitUntilGone(processIds, 0);
}

bool WaitUntilGone(const std::vector<DWORD>& processIds, DWORD timeoutMs)
{
    const ULONGLONG deadline = GetTickCount64() + timeoutMs;
    for (const DWORD id : processIds) {
        const UniqueHandle process(OpenProcess(SYNCHRONIZE, FALSE, id));
        if (!process) {
            continue;  // already gone
        }
        const ULONGLONG now = GetTickCount64();
        if (WaitForSingleObject(process.Get(), now < deadline ? static_cast<DWORD>(deadline - now) : 0) != WAIT_OBJECT_0) {
            return false;
        }
    }
    return true;
}

std::vector<Text> LauncherTempFiles()
{
    wchar_t folder[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, folder);
    std::vector<Text> files;
    for (const wchar_t* pattern : {L"KVL*.tmp", L"KVD*.tmp"}) {
        WIN32_FIND_DATAW found{};
        const UniqueFindHandle search(FindFirstFileW(JoinPath(folder, pattern).c_str(), &found));
        if (!search) {
            continue;
        }
        do {
            files.push_back(JoinPath(folder, found.cFileName));
        } while (FindNextFileW(search.Get(), &found));
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace korvane::testing
