#pragma once
// The program that plays a starting editor in these tests (built beside them), and named
// events to step it.

#include "TestSupport.h"

#include "foundation/UniqueResource.h"

namespace korvane::testing {

Text StartupChildPath();

// A fresh named event (manual reset, not signalled) that the child can open by name.
class NamedEvent {
public:
    NamedEvent();
    const Text& Name() const noexcept { return name_; }
    HANDLE Handle() const noexcept { return event_.Get(); }
    bool Wait(DWORD timeoutMs) const { return WaitForSingleObject(event_.Get(), timeoutMs) == WAIT_OBJECT_0; }
    void Set() const { SetEvent(event_.Get()); }

private:
    Text name_;
    UniqueHandle event_;
};

// Starts the child with its steps, shown (its windows must be seen).
ChildProcess StartChild(const std::vector<Text>& steps);

}  // namespace korvane::testing
