#include "foundation/GdiplusSession.h"

#include <windows.h>
#include <objidl.h>
#include <gdiplus.h>

namespace korvane {

GdiplusSession::GdiplusSession()
{
    Gdiplus::GdiplusStartupInput input;  // version 1, every other field zero
    ULONG_PTR token = 0;
    if (Gdiplus::GdiplusStartup(&token, &input, nullptr) == Gdiplus::Ok) {
        token_ = token;
    }
}

GdiplusSession::~GdiplusSession()
{
    if (token_ != 0) {
        Gdiplus::GdiplusShutdown(token_);
    }
}

}  // namespace korvane
