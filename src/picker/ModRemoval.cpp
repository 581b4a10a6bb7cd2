#include "picker/ModRemoval.h"

#include "foundation/ComObjects.h"
#include "foundation/Paths.h"
#include "picker/PickerTexts.h"
#include "tool/ToolCommand.h"

#include <shellapi.h>
#include <shobjidl.h>

namespace korvane {
namespace {

// No dialog of the shell's: the picker's question is the only one. Recycled, and undoable.
constexpr DWORD kRecycleFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_NOERRORUI | FOFX_RECYCLEONDELETE |
    FOFX_EARLYFAILURE | FOFX_ADDUNDORECORD;  // 0x20180414

// A plain package: named ".umod", there, and neither a folder nor a link of any kind.
bool IsPlainPackage(const Text& path, DWORD attributes)
{
    return !path.empty() && EndsWithIgnoringCase(path, L".umod") && attributes != INVALID_FILE_ATTRIBUTES &&
        (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) == 0;
}

// Every call of the shell's operation, stopping at the first that fails.
bool RecycleThroughTheShell(HWND owner, const Text& path)
{
    const ComApartment apartment;
    if (!apartment.Started()) {
        return false;
    }
    ComPointer<IFileOperation> operation;
    if (FAILED(CoCreateInstance(
            CLSID_FileOperation, nullptr, CLSCTX_INPROC_SERVER, IID_IFileOperation, operation.PutVoid()))) {
        return false;
    }
    if (FAILED(operation->SetOwnerWindow(owner)) || FAILED(operation->SetOperationFlags(kRecycleFlags))) {
        return false;
    }
    ComPointer<IShellItem> item;
    if (FAILED(SHCreateItemFromParsingName(path.c_str(), nullptr, IID_IShellItem, item.PutVoid())) ||
        FAILED(operation->DeleteItem(item.Get(), nullptr)) || FAILED(operation->PerformOperations())) {
        return false;
    }
    BOOL aborted = FALSE;
    return SUCCEEDED(operation->GetAnyOperationsAborted(&aborted)) && !aborted;
}

}  // namespace

Text BuildImportCommand(TextView modFile, TextView sdk, TextView gameDirectory, TextView editorRoot)
{
    return BuildToolCommand(ToolCommandKind::ImportSource,
        {.sdk = sdk, .gameRoot = gameDirectory, .editorRoot = editorRoot, .modFile = modFile});
}

Text RemovalQuestion(TextView name, TextView modProject)
{
    return kRemoveQuestionStart.Now() + Text(name) + L'\n' + NormalizePath(modProject) + kRemoveQuestionEnd.Now();
}

bool MoveModToRecycleBin(HWND owner, TextView modFile, Text& error)
{
    const Text path = NormalizePath(modFile);
    if (!IsPlainPackage(path, GetFileAttributesW(path.c_str()))) {
        error = kRemoveRefusedMessage.Now();
        return false;
    }
    const bool performed = RecycleThroughTheShell(owner, path);
    // Done only when the file is really gone from its folder.
    const DWORD after = GetFileAttributesW(path.c_str());
    if (!performed || (after != INVALID_FILE_ATTRIBUTES && (after & FILE_ATTRIBUTE_DIRECTORY) == 0)) {
        error = kRemoveFailedMessage.Now();
        return false;
    }
    return true;
}

}  // namespace korvane
