// UTF-8 protocol text to UTF-16 window text and back, at the Windows calls only.
#pragma once

#include <string>
#include <string_view>

namespace corvandell::win {

std::wstring widen(std::string_view utf8);
std::string narrow(std::wstring_view wide);

} // namespace corvandell::win
