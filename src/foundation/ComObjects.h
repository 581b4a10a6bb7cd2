#pragma once
// COM for one thread for the length of a scope, and the owner of one interface pointer.

#include <objbase.h>

namespace korvane {

// COM in an apartment of this thread; uninitialised at the end only when the start succeeded.
class ComApartment {
public:
    ComApartment() : started_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
    ~ComApartment()
    {
        if (started_) {
            CoUninitialize();
        }
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

    bool Started() const noexcept { return started_; }

private:
    bool started_;
};

// Releases its interface when it goes; moved, never copied.
template <typename Interface>
class ComPointer {
public:
    ComPointer() = default;
    ~ComPointer() { Reset(); }
    ComPointer(ComPointer&& other) noexcept : pointer_(other.pointer_) { other.pointer_ = nullptr; }
    ComPointer& operator=(ComPointer&& other) noexcept
    {
        if (this != &other) {
            Reset();
            pointer_ = other.pointer_;
            other.pointer_ = nullptr;
        }
        return *this;
    }
    ComPointer(const ComPointer&) = delete;
    ComPointer& operator=(const ComPointer&) = delete;

    Interface* operator->() const noexcept { return pointer_; }
    Interface* Get() const noexcept { return pointer_; }
    explicit operator bool() const noexcept { return pointer_ != nullptr; }
    // The slot for a creating call, as its untyped out-parameter or its typed one.
    void** PutVoid() noexcept
    {
        Reset();
        return reinterpret_cast<void**>(&pointer_);
    }
    Interface** Put() noexcept
    {
        Reset();
        return &pointer_;
    }
    void Reset() noexcept
    {
        if (pointer_ != nullptr) {
            pointer_->Release();
            pointer_ = nullptr;
        }
    }

private:
    Interface* pointer_ = nullptr;
};

}  // namespace korvane
