#pragma once
// The Create Mod form: a modal window in which the author names a new Mod, says who wrote it,
// picks its kind, and may give a cover and a file to save to. It creates nothing itself: the
// picker builds a tool command from what it gives back.

#include "context/PickerState.h"
#include "foundation/GdiplusImage.h"
#include "foundation/Text.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

#include <cstdint>

namespace korvane {

struct LaunchContext;

inline constexpr wchar_t kFormWindowClass[] = L"KorvaneLauncherForm";
inline constexpr int kFormClientWidth = 720;
inline constexpr int kFormClientHeight = 488;
inline constexpr std::size_t kModTextLimit = 100;
inline constexpr std::uint64_t kCoverByteLimit = 2097152;
inline constexpr unsigned kCoverPixelLimit = 2048;

enum FormControlId : int {
    kFormCreateId = 1,
    kFormCancelId = 2,
    kFormNameEditId = 2101,
    kFormAuthorEditId = 2102,
    kFormTargetEditId = 2104,
    kFormChooseImageId = 2203,
    kFormChooseTargetId = 2204,
    kFormTypeComboId = 2300,
    kFormRemoveCoverId = 2301,
    kFormCoverTileId = 2302,
};

// Set up by the picker on its stack for one New Mod command; it owns the form's fonts and
// thumbnail.
struct CreateModRequest {
    explicit CreateModRequest(LaunchContext& context);

    LaunchContext& owner;
    Text title;
    Text modName;
    Text authorName;
    Text coverFile;
    Text targetFile;
    HWND edits[3] = {};  // name, author, target file
    HWND form = nullptr;  // null again once the form is gone: that ends the modal loop
    bool accepted = false;
    HWND typeCombo = nullptr;
    bool translation = false;
    std::uint32_t dpi = 96;
    UniqueFont formFont;
    UniqueFont formTitleFont;
    UniqueGdiplusBitmap coverThumbnail;
    Text coverError;
};

// Runs the form in a message loop of its own on the window thread, with the picker disabled;
// gives whether the author accepted it.
bool RunCreateModDialog(CreateModRequest& request);

// Name and author, trimmed, are both given.
bool CreateFormComplete(const CreateModRequest& request);

// Lets the author choose a cover and checks it by its content: a PNG of at most 2 MiB and at
// most 2048 pixels on each side. A bad choice leaves an earlier good cover in place.
void LoadCoverChoice(CreateModRequest& request);

// Whether a cover file is acceptable, judged by its content.
bool IsAcceptableCover(TextView path);

// create (or translations create) with the request's values, each quoted once.
Text BuildCreateCommand(const CreateModRequest& request, TextView sdk, TextView gameDirectory, TextView editorRoot);

}  // namespace korvane
