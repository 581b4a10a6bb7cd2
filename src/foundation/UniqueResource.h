#pragma once
// One move-only owner for every kind of Windows resource. The invalid value is part of
// the traits, so a process handle (null when absent) and a file handle
// (INVALID_HANDLE_VALUE when absent) cannot be confused.

#include <windows.h>

#include <utility>

namespace korvane {

template <typename Traits>
class UniqueResource {
public:
    using Value = typename Traits::Value;

    UniqueResource() noexcept = default;
    explicit UniqueResource(Value value) noexcept : value_(value) {}
    ~UniqueResource() { Reset(); }

    UniqueResource(UniqueResource&& other) noexcept : value_(other.Release()) {}
    UniqueResource& operator=(UniqueResource&& other) noexcept
    {
        if (this != &other) {
            Reset(other.Release());
        }
        return *this;
    }
    UniqueResource(const UniqueResource&) = delete;
    UniqueResource& operator=(const UniqueResource&) = delete;

    Value Get() const noexcept { return value_; }
    bool IsValid() const noexcept { return value_ != Traits::Invalid(); }
    explicit operator bool() const noexcept { return IsValid(); }

    // Gives up ownership; the caller becomes responsible for closing.
    [[nodiscard]] Value Release() noexcept { return std::exchange(value_, Traits::Invalid()); }

    // Closing keeps the caller's last error, so a failure can be reported after cleanup.
    void Reset(Value value = Traits::Invalid()) noexcept
    {
        const Value old = std::exchange(value_, value);
        if (old != Traits::Invalid()) {
            const DWORD lastError = GetLastError();
            Traits::Close(old);
            SetLastError(lastError);
        }
    }

    // For out-parameters of acquiring calls: releases what is held and gives its slot.
    Value* Put() noexcept
    {
        Reset();
        return &value_;
    }

private:
    Value value_ = Traits::Invalid();
};

struct KernelHandleTraits {
    using Value = HANDLE;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { CloseHandle(value); }
};

struct FileHandleTraits {
    using Value = HANDLE;
    static Value Invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Value value) noexcept { CloseHandle(value); }
};

struct FindHandleTraits {
    using Value = HANDLE;
    static Value Invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Value value) noexcept { FindClose(value); }
};

template <typename GdiObject>
struct GdiObjectTraits {
    using Value = GdiObject;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { DeleteObject(value); }
};

struct IconTraits {
    using Value = HICON;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { DestroyIcon(value); }
};

struct MemoryDcTraits {
    using Value = HDC;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { DeleteDC(value); }
};

// A window owned by the thread that made it; destroy it on that thread alone.
struct WindowTraits {
    using Value = HWND;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { DestroyWindow(value); }
};

struct LocalMemoryTraits {
    using Value = HLOCAL;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { LocalFree(value); }
};

// Process, thread, job and event handles: absent when null.
using UniqueHandle = UniqueResource<KernelHandleTraits>;
// Handles from CreateFileW: absent when INVALID_HANDLE_VALUE.
using UniqueFileHandle = UniqueResource<FileHandleTraits>;
// Toolhelp snapshots: absent when INVALID_HANDLE_VALUE, like files.
using UniqueSnapshotHandle = UniqueResource<FileHandleTraits>;
// Directory listings from FindFirstFileW.
using UniqueFindHandle = UniqueResource<FindHandleTraits>;
using UniqueBitmap = UniqueResource<GdiObjectTraits<HBITMAP>>;
using UniqueFont = UniqueResource<GdiObjectTraits<HFONT>>;
using UniqueBrush = UniqueResource<GdiObjectTraits<HBRUSH>>;
using UniquePen = UniqueResource<GdiObjectTraits<HPEN>>;
using UniqueIcon = UniqueResource<IconTraits>;
// A DC made by CreateCompatibleDC; never one from GetDC or BeginPaint.
using UniqueMemoryDc = UniqueResource<MemoryDcTraits>;
using UniqueLocalMemory = UniqueResource<LocalMemoryTraits>;
// A top-level window; release it at WM_NCDESTROY so that a window already gone is not destroyed twice.
using UniqueWindow = UniqueResource<WindowTraits>;

}  // namespace korvane
