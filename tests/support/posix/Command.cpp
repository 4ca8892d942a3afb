// run_shell: popen, read to the end, pclose.
#include "support/posix/Command.hpp"

#include <sys/wait.h>

#include <array>
#include <cstdio>

namespace corvandell::test {

std::string run_shell(const std::string& commandLine, int& exitCode) {
    exitCode = -1;
    FILE* pipe = popen(commandLine.c_str(), "r");
    if (pipe == nullptr) {
        return {};
    }
    std::string output;
    std::array<char, 65536> chunk{};
    for (std::size_t count; (count = std::fread(chunk.data(), 1, chunk.size(), pipe)) > 0;) {
        output.append(chunk.data(), count);
    }
    const int status = pclose(pipe);
    exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return output;
}

} // namespace corvandell::test
