// Paths meet the UTF-8 text of our files and protocols only through these two calls: on
// Windows a path is wide, and its narrow string() would use the ANSI code page.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace corvandell {

std::string pathToUtf8(const std::filesystem::path& path);
std::filesystem::path pathFromUtf8(std::string_view text);

} // namespace corvandell
