// The text a call throws, so tests can compare the exact message a user would be shown.
#pragma once

#include <exception>
#include <functional>
#include <string>

namespace corvandell::test {

inline std::string thrownText(const std::function<void()>& call) {
    try {
        call();
    } catch (const std::exception& error) {
        return error.what();
    }
    return ""; // nothing thrown
}

} // namespace corvandell::test
