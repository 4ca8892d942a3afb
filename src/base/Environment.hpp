// Where the client reads folder variables (APPDATA, HOME, ...) from.
//
// Paths from the environment must stay wide on Windows (a user name with non-ASCII
// letters breaks the narrow ANSI view), so the lookup returns a path and each platform
// supplies its own reader. Tests hand in a map.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace corvandell {

class Environment {
public:
    virtual ~Environment() = default;
    // The variable's value as a path; nothing when it is unset or empty.
    virtual std::optional<std::filesystem::path> folderVariable(std::string_view name) const = 0;
};

// The process environment through std::getenv (UTF-8 on the platforms that use it).
class StdEnvironment final : public Environment {
public:
    std::optional<std::filesystem::path> folderVariable(std::string_view name) const override;
};

// A fixed set of variables, for tests and for child processes we configure.
class MapEnvironment final : public Environment {
public:
    MapEnvironment() = default;
    explicit MapEnvironment(std::map<std::string, std::filesystem::path, std::less<>> variables)
        : variables_(std::move(variables)) {}
    std::optional<std::filesystem::path> folderVariable(std::string_view name) const override;

private:
    std::map<std::string, std::filesystem::path, std::less<>> variables_;
};

} // namespace corvandell
