// A program without the launcher's guard on the DLL search: loads each DLL named on its command
// line by name, so the search looks beside the program first. Copied beside planted DLLs under the
// launcher's name, it shows that a plant there is taken when nothing guards the search.
#include <windows.h>

int wmain(int argc, wchar_t** argv)
{
    for (int index = 1; index < argc; ++index) {
        LoadLibraryW(argv[index]);
    }
    return 0;
}
