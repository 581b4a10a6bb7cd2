// Drives one Interactive launch for the demo, as an author would: waits for the Mods, searches,
// selects the first row found and presses Start editing. Prints each step and ends with the
// launcher's exit code (1 when a step did not come about).
//   picker_demo_drive.exe <launcher> <report folder> <search text>
#include "PickerDriver.h"

#include <cstdio>

namespace {

using namespace korvane;

bool Step(const char* what, bool done)
{
    std::printf("  %-26s %s\n", what, done ? "done" : "did not happen");
    return done;
}

}  // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc != 4) {
        std::fputs("usage: picker_demo_drive <launcher> <report folder> <search text>\n", stderr);
        return 2;
    }
    // The launcher leaves its report in the folder too; the drive reads the window only, since a
    // read of the report at the moment the launcher rewrites it would make that write fail.
    testing::PickerProcess picker(argv[1], {}, argv[2]);
    const auto until = [&](auto ready) { return testing::WaitUntil(picker.Process(), ready); };
    const auto rows = [&] { return SendMessageW(picker.Control(1009), LB_GETCOUNT, 0, 0); };
    if (!Step("picker window", picker.WaitForWindow()) || !Step("Mods listed", until([&] { return rows() > 0; }))) {
        return 1;
    }
    const LRESULT all = rows();
    picker.Type(1008, argv[3]);
    if (!Step("search narrowed the list", until([&] { return rows() > 0 && rows() < all; }))) {
        return 1;
    }
    picker.ClickRow(0);
    if (!Step("row selected", until([&] { return IsWindowEnabled(picker.Control(1003)) != FALSE; }))) {
        return 1;
    }
    picker.Click(1003);
    Step("Start editing pressed", true);
    const DWORD exitCode = picker.WaitForExit(600000);
    std::printf("launcher exit code %lu\n", exitCode);
    return static_cast<int>(exitCode);
}
