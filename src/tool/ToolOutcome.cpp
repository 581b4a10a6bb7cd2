#include "tool/ToolOutcome.h"

#include "tool/ToolMessages.h"

namespace korvane {

void CompleteToolError(std::uint32_t exitCode, BytesView standardOutput, BytesView standardError, Text& error)
{
    if (exitCode != 0 && error.empty()) {
        error = Utf8ToText(standardError);
        if (error.empty()) {
            error = Utf8ToText(standardOutput);
        }
    }
    if (exitCode != 0 && error.empty()) {
        error = ToolFailedText(exitCode);
    }
    if (error.size() > kToolErrorLimit) {
        error.resize(kToolErrorLimit);
    }
}

Text ToolFailedText(std::uint32_t exitCode)
{
    return kToolFailedMessage.Now() + DecimalText(exitCode) + kNumberedMessageEnd;
}

Text ToolStartFailedText(std::uint32_t windowsError)
{
    return kToolStartMessage.Now() + DecimalText(windowsError) + kNumberedMessageEnd;
}

}  // namespace korvane
