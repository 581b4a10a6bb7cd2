#include "launch/HostContextReport.h"

#include "foundation/Files.h"

namespace korvane {

Bytes ComposeHostContextReport(TextView gameDirectory, TextView sdk, TextView environment)
{
    Bytes report = "{\"game\":";
    report += TextToUtf8(QuoteJsonText(gameDirectory));
    report += ",\"sdk\":";
    report += TextToUtf8(QuoteJsonText(sdk));
    report += ",\"environment\":";
    report += TextToUtf8(QuoteJsonText(environment));
    report += "}";
    return report;
}

bool WriteHostContextReport(TextView path, BytesView report)
{
    return !path.empty() && WriteWholeFile(path, report);
}

}  // namespace korvane
