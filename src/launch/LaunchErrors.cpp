#include "launch/LaunchErrors.h"

#include <windows.h>

namespace korvane {

Text StartFailureText(std::uint32_t exitCode, TextView logPath)
{
    constexpr LocalizedText kBefore{L"Editor startup failed (exit code ", L"编辑器启动失败（退出码 "};
    constexpr LocalizedText kAfter{L"). Check the startup log in Saved/Logs.", L"）。请查看 Saved/Logs 中的启动日志。"};
    Text text = kBefore.Now() + DecimalText(exitCode) + kAfter.Now();
    if (!logPath.empty()) {
        text += L'\n';
        text += logPath;
    }
    return text;
}

int ShowLaunchError(TextView text, bool suppress, int code)
{
    if (!suppress) {
        MessageBoxW(nullptr, Text(text).c_str(), kLaunchErrorTitle.Now().c_str(), MB_OK | MB_ICONERROR);
    }
    return code;
}

}  // namespace korvane
