#include <windows.h>

#include "base/win/WideText.hpp"
#include "base/win/WindowsEnvironment.hpp"

#include <string>

namespace corvandell::win {

std::optional<std::filesystem::path> WindowsEnvironment::folderVariable(std::string_view name) const {
    const std::wstring wideName = widen(name);
    const DWORD needed = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0);
    if (needed <= 1) {
        return std::nullopt;
    }
    std::wstring value(needed, L'\0');
    const DWORD written = GetEnvironmentVariableW(wideName.c_str(), value.data(), needed);
    if (written == 0 || written >= needed) {
        return std::nullopt;
    }
    value.resize(written);
    return std::filesystem::path(value);
}

} // namespace corvandell::win
