// Starting the programs built beside the test executable, and reaching files the Linux
// side of a test run prepared (fixtures pass their folders as Linux paths).
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>

namespace corvandell::test {

// A program in the test executable's own folder, e.g. L"corvandell.exe".
std::filesystem::path siblingExecutable(const wchar_t* fileName);

struct ChildResult {
    DWORD exitCode = 0;
    std::string output; // stdout and stderr together
};

// Runs the command line to its end (killed after `timeoutMs`), capturing its output.
ChildResult runAndCapture(const std::wstring& commandLine, DWORD timeoutMs);

// The folder a fixture named in the environment variable (a Linux path), as seen from
// Wine's Z: drive; empty when the variable is not set.
std::filesystem::path fixtureFolder(const wchar_t* variable);

} // namespace corvandell::test
