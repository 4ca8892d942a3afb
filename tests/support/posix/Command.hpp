// Running real programs (git, gzip, tar) from native tests through the shell.
#pragma once

#include <string>

namespace corvandell::test {

// Runs `commandLine` with /bin/sh and returns its standard output byte for byte; standard
// error is inherited. `exitCode` receives the exit status, -1 if the shell did not exit.
std::string run_shell(const std::string& commandLine, int& exitCode);

} // namespace corvandell::test
