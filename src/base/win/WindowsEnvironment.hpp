// The process environment read as UTF-16, so folders under a non-ASCII user name survive.
#pragma once

#include "base/Environment.hpp"

namespace corvandell::win {

class WindowsEnvironment final : public Environment {
public:
    std::optional<std::filesystem::path> folderVariable(std::string_view name) const override;
};

} // namespace corvandell::win
