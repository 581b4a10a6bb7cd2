#include "StartupChild.h"

#include "foundation/Paths.h"

#include <gtest/gtest.h>

#include <atomic>

namespace korvane::testing {
namespace {

std::atomic<unsigned> eventCounter{0};

}  // namespace

Text StartupChildPath()
{
    return JoinPath(BinaryDirectory(), L"startup_child.exe");
}

NamedEvent::NamedEvent()
    : name_(L"Local\\KorvaneStartupTest-" + DecimalText(GetCurrentProcessId()) + L"-" +
          DecimalText(eventCounter.fetch_add(1)) + L"-" + DecimalText(GetTickCount64())),
      event_(CreateEventW(nullptr, TRUE, FALSE, name_.c_str()))
{
    EXPECT_TRUE(event_.IsValid());
}

ChildProcess StartChild(const std::vector<Text>& steps)
{
    ProcessOptions options;
    options.hidden = false;
    ChildProcess child = ChildProcess::Start(StartupChildPath(), steps, options);
    EXPECT_TRUE(child.IsStarted());
    return child;
}

}  // namespace korvane::testing
