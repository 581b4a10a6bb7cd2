#include "launch/LaunchErrors.h"

#include <windows.h>

namespace korvane {

int ShowLaunchError(TextView text, bool suppress, int code)
{
    if (!suppress) {
        MessageBoxW(nullptr, Text(text).c_str(), kLaunchErrorTitle.Now().c_str(), MB_OK | MB_ICONERROR);
    }
    return code;
}

}  // namespace korvane
