#include "launch/ProcessImage.hpp"

namespace corvandell {
namespace {

wchar_t folded(wchar_t c) {
    if (c == L'/') {
        return L'\\';
    }
    if (c >= L'A' && c <= L'Z') {
        return static_cast<wchar_t>(c - L'A' + L'a');
    }
    return c;
}

} // namespace

bool isImageUnderFolder(std::wstring_view image, std::wstring_view folder) {
    while (!folder.empty() && folded(folder.back()) == L'\\') {
        folder.remove_suffix(1);
    }
    if (folder.empty() || image.size() <= folder.size() + 1) {
        return false;
    }
    for (size_t i = 0; i < folder.size(); ++i) {
        if (folded(image[i]) != folded(folder[i])) {
            return false;
        }
    }
    return folded(image[folder.size()]) == L'\\';
}

} // namespace corvandell
