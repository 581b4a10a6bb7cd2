#include "picker/FileChoosers.h"

#include "foundation/ComObjects.h"

#include <shobjidl.h>

namespace korvane {
namespace {

// The chosen item's file-system path, or empty.
Text ShowAndTake(IFileDialog& dialog, HWND owner)
{
    if (FAILED(dialog.Show(owner))) {
        return {};  // cancelled, among others
    }
    ComPointer<IShellItem> item;
    if (FAILED(dialog.GetResult(item.Put()))) {
        return {};
    }
    PWSTR path = nullptr;
    Text chosen;
    if (SUCCEEDED(item->GetDisplayName(SIGDN_FILESYSPATH, &path)) && path != nullptr) {
        chosen = path;
    }
    CoTaskMemFree(path);
    return chosen;
}

}  // namespace

Text ChooseFilePath(HWND owner, TextView title, TextView filterName, TextView filterPattern, TextView defaultExtension,
    bool save, TextView presetName)
{
    const ComApartment apartment;
    if (!apartment.Started()) {
        return {};
    }
    ComPointer<IFileDialog> dialog;
    if (FAILED(CoCreateInstance(save ? CLSID_FileSaveDialog : CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER,
            IID_IFileDialog, dialog.PutVoid()))) {
        return {};
    }
    FILEOPENDIALOGOPTIONS options = 0;
    dialog->GetOptions(&options);
    options |= FOS_FORCEFILESYSTEM | (save ? FOS_OVERWRITEPROMPT : FOS_FILEMUSTEXIST);
    dialog->SetOptions(options);
    const Text titleText(title);
    const Text name(filterName);
    const Text pattern(filterPattern);
    const Text extension(defaultExtension);
    const COMDLG_FILTERSPEC filter{name.c_str(), pattern.c_str()};
    dialog->SetTitle(titleText.c_str());
    dialog->SetFileTypes(1, &filter);
    dialog->SetDefaultExtension(extension.c_str());
    if (!presetName.empty()) {
        dialog->SetFileName(Text(presetName).c_str());
    }
    return ShowAndTake(*dialog.Get(), owner);
}

Text ChooseGameFolder(HWND owner)
{
    const ComApartment apartment;
    if (!apartment.Started()) {
        return {};
    }
    ComPointer<IFileOpenDialog> dialog;
    if (FAILED(CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER, IID_IFileOpenDialog, dialog.PutVoid()))) {
        return {};
    }
    FILEOPENDIALOGOPTIONS options = 0;
    dialog->GetOptions(&options);
    dialog->SetOptions(options | FOS_PICKFOLDERS | FOS_FORCEFILESYSTEM);
    dialog->SetTitle(L"Korvane - Select Packaged Game Directory");
    return ShowAndTake(*dialog.Get(), owner);
}

}  // namespace korvane
