// KorvaneEditor.exe: a GUI-subsystem program without a console.
#include "launch/EntryPoint.h"

#include <windows.h>

int WINAPI wWinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, PWSTR /*commandLine*/, int /*show*/)
{
    return korvane::RunLauncher();
}
