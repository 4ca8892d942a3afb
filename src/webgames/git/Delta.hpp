// Git's delta format: rebuilds an object from its base and a list of copy/insert opcodes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvandell::git {

std::optional<std::string> apply_delta(std::string_view base, std::string_view delta);

} // namespace corvandell::git
