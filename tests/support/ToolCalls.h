#pragma once
// What tests look at after tool runs: the calls a sample install's tool logged, the
// processes they name, and the launcher's temporary files.

#include "TestSupport.h"

#include "foundation/Json.h"
#include "foundation/Paths.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <vector>

namespace korvane::testing {

// The logged argv of one run, the program path first.
inline std::vector<Text> Argv(const JsonValue& call)
{
    std::vector<Text> words;
    for (const JsonValue& word : FindJsonMember(call, L"argv").items) {
        words.push_back(word.text);
    }
    return words;
}

// The tools the calls name and the grandchildren they started.
inline std::vector<DWORD> ProcessIdsOf(const std::vector<JsonValue>& calls)
{
    std::vector<DWORD> ids;
    for (const JsonValue& call : calls) {
        for (const wchar_t* key : {L"pid", L"grandchildPid"}) {
            if (const Text& id = FindJsonMember(call, key).text; !id.empty()) {
                ids.push_back(static_cast<DWORD>(std::stoul(id)));
            }
        }
    }
    return ids;
}

// None of the tools the calls name, nor their grandchildren, still runs (checked by id: other
// test programs may run tools of their own meanwhile).
inline void ExpectNoToolRunning(const std::vector<JsonValue>& calls)
{
    const std::vector<DWORD> running = ProcessesNamed(L"KorvaneTool.exe");
    for (const DWORD id : ProcessIdsOf(calls)) {
        EXPECT_EQ(std::count(running.begin(), running.end(), id), 0) << "outlived its run: " << id;
    }
}

// Temporary files of the launcher ("KVL" and "KVD" names) now in the temporary folder.
inline std::vector<Text> LauncherTempFiles()
{
    wchar_t folder[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, folder);
    std::vector<Text> files = FilesMatching(folder, L"KVL*.tmp");
    const std::vector<Text> kvd = FilesMatching(folder, L"KVD*.tmp");
    files.insert(files.end(), kvd.begin(), kvd.end());
    return files;
}

}  // namespace korvane::testing
