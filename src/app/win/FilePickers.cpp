// COM is initialised for the call (apartment-threaded, as the shell's dialogs need) and
// released after it; every COM pointer is released by its holder before that.
#include <windows.h>

#include <shobjidl.h>

#include "app/win/FilePickers.hpp"

#include <memory>

namespace corvandell::win {
namespace {

struct ComRelease {
    void operator()(IUnknown* object) const noexcept { object->Release(); }
};
template <class Interface> using ComPtr = std::unique_ptr<Interface, ComRelease>;

class ComApartment {
public:
    ComApartment() noexcept
        : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
    ~ComApartment() {
        if (SUCCEEDED(result_)) {
            CoUninitialize();
        }
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    HRESULT result_;
};

ComPtr<IFileOpenDialog> newOpenDialog() {
    IFileOpenDialog* dialog = nullptr;
    if (FAILED(
            CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&dialog)))) {
        return nullptr;
    }
    return ComPtr<IFileOpenDialog>(dialog);
}

std::wstring runAndTakePath(IFileOpenDialog& dialog, HWND owner) {
    if (FAILED(dialog.Show(owner))) {
        return {}; // cancelled, or the dialog could not be shown
    }
    IShellItem* item = nullptr;
    if (FAILED(dialog.GetResult(&item))) {
        return {};
    }
    const ComPtr<IShellItem> result(item);
    PWSTR path = nullptr;
    if (FAILED(result->GetDisplayName(SIGDN_FILESYSPATH, &path))) {
        return {};
    }
    std::wstring chosen(path);
    CoTaskMemFree(path);
    return chosen;
}

} // namespace

std::wstring pickFolder(HWND owner, const std::wstring& startFolder, const wchar_t* title) {
    const ComApartment apartment;
    const ComPtr<IFileOpenDialog> dialog = newOpenDialog();
    if (!dialog) {
        return {};
    }
    FILEOPENDIALOGOPTIONS options = 0;
    dialog->GetOptions(&options);
    dialog->SetOptions(options | FOS_PICKFOLDERS | FOS_FORCEFILESYSTEM | FOS_PATHMUSTEXIST);
    dialog->SetTitle(title);
    IShellItem* start = nullptr;
    if (!startFolder.empty() &&
        SUCCEEDED(SHCreateItemFromParsingName(startFolder.c_str(), nullptr, IID_PPV_ARGS(&start)))) {
        const ComPtr<IShellItem> startItem(start);
        dialog->SetFolder(startItem.get());
    }
    return runAndTakePath(*dialog, owner);
}

std::wstring pickPictureFile(HWND owner, const wchar_t* title) {
    const ComApartment apartment;
    const ComPtr<IFileOpenDialog> dialog = newOpenDialog();
    if (!dialog) {
        return {};
    }
    const COMDLG_FILTERSPEC filters[] = {
        {L"Pictures (PNG, JPEG, GIF, BMP)", L"*.png;*.jpg;*.jpeg;*.gif;*.bmp"},
        {L"All files", L"*.*"},
    };
    dialog->SetFileTypes(2, filters);
    FILEOPENDIALOGOPTIONS options = 0;
    dialog->GetOptions(&options);
    dialog->SetOptions(options | FOS_FORCEFILESYSTEM | FOS_FILEMUSTEXIST);
    dialog->SetTitle(title);
    return runAndTakePath(*dialog, owner);
}

} // namespace corvandell::win
