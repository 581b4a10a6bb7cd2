// Plays an editor that a launcher comes from: optionally starts the launcher as its own
// child, tells the test the launcher's process id, and stays until the test releases it.
//
//   ParentEditor.exe <ready event> <release event> <pid file> [<launcher> <argument>...]
//
// The launcher's id goes to <pid file> as decimal text before <ready event> is set. Exit
// codes: 0 released, 2 bad arguments, 3 an event cannot be opened, 4 the launcher cannot be
// started, 5 the pid file cannot be written.
#include "foundation/Files.h"
#include "foundation/Process.h"
#include "foundation/Text.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

int wmain(int argc, wchar_t** argv)
{
    using namespace korvane;
    if (argc < 4) {
        return 2;
    }
    const UniqueHandle ready(OpenEventW(EVENT_MODIFY_STATE, FALSE, argv[1]));
    const UniqueHandle release(OpenEventW(SYNCHRONIZE, FALSE, argv[2]));
    if (!ready || !release) {
        return 3;
    }
    if (argc > 4) {
        Text commandLine = QuoteCommandArgument(argv[4]);
        for (int index = 5; index < argc; ++index) {
            commandLine.append(L" ").append(QuoteCommandArgument(argv[index]));
        }
        StartedProcess launcher;
        if (!StartProcess({.application = argv[4], .commandLine = commandLine}, launcher)) {
            return 4;
        }
        if (!WriteWholeFile(argv[3], TextToUtf8(DecimalText(launcher.Id())))) {
            return 5;
        }
    }
    SetEvent(ready.Get());
    WaitForSingleObject(release.Get(), INFINITE);
    return 0;
}
