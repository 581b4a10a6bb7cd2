// The programs are built with -municode, so the test runner starts from wmain.
#include "UserSettingsFile.h"
#include "common/SampleLayout.h"

#include <gtest/gtest.h>

int wmain(int argc, wchar_t** argv)
{
    testing::InitGoogleTest(&argc, argv);
    // A sample install's launcher starts in the language saved in the profile for its engine
    // version, which a person at the demo's picker may have changed. The tests start with none
    // saved, and what was there comes back when they end.
    const korvane::testing::UserSettingsFile settings(korvane::standins::SampleInstallOptions{}.engineVersion);
    settings.Set(std::nullopt);
    return RUN_ALL_TESTS();
}
