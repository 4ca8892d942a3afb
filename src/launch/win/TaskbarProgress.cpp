#include "launch/win/TaskbarProgress.hpp"

namespace corvandell::win {

TaskbarProgress::TaskbarProgress(HWND window) noexcept : window_(window) {
    ownsCom_ = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    void* object = nullptr;
    if (SUCCEEDED(
            CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskbarList3, &object))) {
        taskbar_ = static_cast<ITaskbarList3*>(object);
        if (FAILED(taskbar_->HrInit())) {
            taskbar_->Release();
            taskbar_ = nullptr;
        }
    }
}

TaskbarProgress::~TaskbarProgress() {
    if (taskbar_ != nullptr) {
        taskbar_->SetProgressState(window_, TBPF_NOPROGRESS);
        taskbar_->Release();
    }
    if (ownsCom_) {
        CoUninitialize();
    }
}

void TaskbarProgress::show(std::uint64_t done, std::uint64_t total) noexcept {
    if (taskbar_ == nullptr) {
        return;
    }
    if (total == 0) {
        taskbar_->SetProgressState(window_, TBPF_INDETERMINATE);
        return;
    }
    taskbar_->SetProgressState(window_, TBPF_NORMAL);
    taskbar_->SetProgressValue(window_, done < total ? done : total, total);
}

void TaskbarProgress::showFailure() noexcept {
    if (taskbar_ == nullptr) {
        return;
    }
    taskbar_->SetProgressState(window_, TBPF_ERROR);
    taskbar_->SetProgressValue(window_, 1, 1);
}

void TaskbarProgress::clear() noexcept {
    if (taskbar_ != nullptr) {
        taskbar_->SetProgressState(window_, TBPF_NOPROGRESS);
    }
}

} // namespace corvandell::win
