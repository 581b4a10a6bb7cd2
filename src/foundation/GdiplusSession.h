#pragma once
// GDI+ for the lifetime of a scope. Shutdown happens only when startup gave a token.

#include <cstdint>

namespace korvane {

class GdiplusSession {
public:
    GdiplusSession();
    ~GdiplusSession();
    GdiplusSession(const GdiplusSession&) = delete;
    GdiplusSession& operator=(const GdiplusSession&) = delete;

    bool IsActive() const noexcept { return token_ != 0; }

private:
    std::uintptr_t token_ = 0;
};

}  // namespace korvane
