#include <windows.h>

#include "base/FileWrite.hpp"
#include "base/win/UniqueHandle.hpp"

#include <algorithm>

namespace corvandell {

bool writeWholeFile(const std::filesystem::path& path, std::string_view bytes) {
    win::UniqueKernelHandle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return false;
    }
    constexpr std::size_t kMostAtOnce = std::size_t{1} << 30; // WriteFile counts in a DWORD
    while (!bytes.empty()) {
        DWORD written = 0;
        const auto count = static_cast<DWORD>(std::min(bytes.size(), kMostAtOnce));
        if (!WriteFile(file.get(), bytes.data(), count, &written, nullptr) || written == 0) {
            return false;
        }
        bytes.remove_prefix(written);
    }
    return CloseHandle(file.release()) != 0;
}

} // namespace corvandell
