// Every text a static control (a status line) is given, as the user would have seen it,
// however quickly the next one followed: the control is subclassed while this lives.
#pragma once

#include <windows.h>

#include "base/win/WideText.hpp"

#include <algorithm>
#include <string>
#include <vector>

namespace corvandell::test {

class StatusTexts {
public:
    explicit StatusTexts(HWND status) : status_(status) {
        SetPropW(status_, kProp, this);
        previous_ = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(status_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&StatusTexts::procedure)));
    }
    ~StatusTexts() {
        if (IsWindow(status_)) {
            SetWindowLongPtrW(status_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous_));
            RemovePropW(status_, kProp);
        }
    }
    StatusTexts(const StatusTexts&) = delete;
    StatusTexts& operator=(const StatusTexts&) = delete;

    const std::vector<std::wstring>& texts() const { return texts_; }
    bool saw(const std::wstring& text) const {
        return std::find(texts_.begin(), texts_.end(), text) != texts_.end();
    }
    bool sawStart(const std::wstring& prefix) const {
        return std::any_of(texts_.begin(), texts_.end(),
                           [&](const std::wstring& text) { return text.starts_with(prefix); });
    }
    void clear() { texts_.clear(); }
    // "[first] [second] ..." for a failure message.
    std::string joined() const {
        std::string all;
        for (const std::wstring& text : texts_) {
            all += "[" + win::narrow(text) + "] ";
        }
        return all;
    }

private:
    static constexpr wchar_t kProp[] = L"CorvandellTestStatusTexts";
    static LRESULT CALLBACK procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* self = static_cast<StatusTexts*>(GetPropW(hwnd, kProp));
        if (message == WM_SETTEXT && lParam != 0) {
            self->texts_.emplace_back(reinterpret_cast<const wchar_t*>(lParam));
        }
        return CallWindowProcW(self->previous_, hwnd, message, wParam, lParam);
    }

    HWND status_;
    WNDPROC previous_ = nullptr;
    std::vector<std::wstring> texts_;
};

} // namespace corvandell::test
