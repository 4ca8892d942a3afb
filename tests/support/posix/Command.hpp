// Running real programs (git, gzip, tar) from native tests through the shell.
#pragma once

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace corvandell::test {

// Runs `commandLine` with /bin/sh and returns its standard output byte for byte; standard
// error is inherited. Throws, with the output, when the command does not exit with 0.
inline std::string run_shell(const std::string& commandLine) {
    FILE* pipe = popen(commandLine.c_str(), "r");
    std::string output;
    std::array<char, 65536> chunk{};
    for (std::size_t count;
         pipe != nullptr && (count = std::fread(chunk.data(), 1, chunk.size(), pipe)) > 0;) {
        output.append(chunk.data(), count);
    }
    if (pipe == nullptr || pclose(pipe) != 0) {
        throw std::runtime_error("failed: " + commandLine + "\n" + output);
    }
    return output;
}

} // namespace corvandell::test
