// Reaching the Linux side of a Wine test run: its paths and its programs.
//
// Some things a Windows test must meet can only be made from Linux: Wine cannot create a
// symbolic link (its CreateSymbolicLinkW succeeds and makes nothing), but it shows one made
// by `ln -s` as a reparse point. Wine starts Linux programs through CreateProcessW, so the
// test runs them itself rather than relying on a fixture prepared earlier.
#pragma once

#include <filesystem>
#include <string>

namespace corvandell::test {

// The Linux path Wine maps `path` to; empty when there is none.
std::string linuxPathOf(const std::filesystem::path& path);

// Runs `command` with the Linux /bin/sh; true when it exits with 0.
bool runLinuxShell(const std::string& command);

} // namespace corvandell::test
