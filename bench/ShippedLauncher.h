#pragma once
// The launcher as shipped, stripped of its debug information. Wine reads the build tree's
// launcher with its 15 MB of debug sections into memory at every start, which no user pays, so
// the benchmarks time and weigh the stripped copy made beside the build.

#include "TestSupport.h"

#include "foundation/Paths.h"

#include <cstdio>
#include <cstdlib>

namespace korvane::bench {

inline Text ShippedLauncherPath()
{
    return JoinPath(JoinPath(testing::BinaryDirectory(), L"shipped"), L"KorvaneEditor.exe");
}

// Puts the shipped launcher in place of an install's launcher; a benchmark that cannot would
// time the wrong program, so it ends.
inline void UseShippedLauncher(TextView launcher)
{
    if (!CopyFileW(ShippedLauncherPath().c_str(), Text(launcher).c_str(), FALSE)) {
        std::fprintf(stderr, "cannot put the shipped launcher in place (error %lu)\n", GetLastError());
        std::exit(1);
    }
}

}  // namespace korvane::bench
