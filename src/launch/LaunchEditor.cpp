#include "launch/LaunchEditor.h"

#include "launch/LaunchContext.h"
#include "launch/UiLanguage.h"

namespace korvane {

bool LaunchEditor(LaunchContext& /*context*/, Text& error)
{
    error = LocalizedText{L"The official Unreal Editor could not be started.", L"无法启动 Unreal Editor。"}.Now();
    return false;
}

}  // namespace korvane
