#pragma once
// The whole life of the launcher process: language, command line, host steps, session
// gate, install checks and the run mode. Gives the process exit code.

namespace korvane {

int RunLauncher();

}  // namespace korvane
