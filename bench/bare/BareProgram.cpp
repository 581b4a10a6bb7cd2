// A Windows GUI program that does nothing: the baseline for whole-process timings.
#include <windows.h>

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int)
{
    return 0;
}
