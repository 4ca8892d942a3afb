// GDI+ for the span of one object's life. Startup and shutdown are counted by GDI+, so each
// user holds its own session; every GDI+ object must be gone before its session ends.
#pragma once

#include <windows.h>

#include <objidl.h>

#include <algorithm>

// GDI+'s headers use min and max unqualified, which NOMINMAX takes away.
namespace Gdiplus {
using std::max;
using std::min;
} // namespace Gdiplus
#include <gdiplus.h>

namespace corvandell::win {

class GdiplusSession {
public:
    GdiplusSession() noexcept {
        const Gdiplus::GdiplusStartupInput input;
        isStarted_ = Gdiplus::GdiplusStartup(&token_, &input, nullptr) == Gdiplus::Ok;
    }
    ~GdiplusSession() {
        if (isStarted_) {
            Gdiplus::GdiplusShutdown(token_);
        }
    }
    GdiplusSession(const GdiplusSession&) = delete;
    GdiplusSession& operator=(const GdiplusSession&) = delete;
    bool isStarted() const noexcept { return isStarted_; }

private:
    ULONG_PTR token_ = 0;
    bool isStarted_ = false;
};

} // namespace corvandell::win
