#include "launch/EditorEnvironment.h"

#include "foundation/Files.h"
#include "foundation/Json.h"
#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"

#include <windows.h>

#include <vector>

namespace korvane {

void RemoveSdksRootFromEnvironment()
{
    SetEnvironmentVariableW(kSdksRootVariable, nullptr);
}

Text ReadReceiptMajorMinor(TextView editorRoot)
{
    const Bytes receipt = ReadWholeFile(JoinPath(editorRoot, L"KorvaneEditor.receipt.json"), kReportFileLimit);
    const JsonValue document = ParseJson(receipt);
    return MajorMinor(FindJsonMember(document, L"engineBuild").text);
}

Text PrepareLocalDataCache(TextView majorMinor)
{
    const Text localAppData = LocalAppDataFolder();
    if (localAppData.empty()) {
        return {};
    }
    Text cacheDirectory = JoinPath(localAppData, Text(L"Korvane\\DerivedDataCache\\").append(majorMinor));
    const int created = CreateFolderTree(cacheDirectory);
    if (created != ERROR_SUCCESS && created != ERROR_ALREADY_EXISTS) {
        return {};
    }
    std::vector<wchar_t> shortForm(32768, L'\0');
    const DWORD length =
        GetShortPathNameW(cacheDirectory.c_str(), shortForm.data(), static_cast<DWORD>(shortForm.size()));
    if (length >= 1 && length < shortForm.size()) {
        cacheDirectory.assign(shortForm.data(), length);
    }
    SetEnvironmentVariableW(kLocalDataCacheVariable, cacheDirectory.c_str());
    return cacheDirectory;
}

}  // namespace korvane
