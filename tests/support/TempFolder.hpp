// A real, empty folder under the system temp folder for one test, removed afterwards.
//
// Tests exercise the file code against the real file system rather than a fake one; the
// random folder name keeps parallel ctest runs from seeing each other's files.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell::test {

class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    // Writes the bytes exactly (binary), creating parent folders; returns the file's path.
    std::filesystem::path writeFile(const std::filesystem::path& relative, std::string_view bytes) const;

    // Names of the entries directly in `folder` (the temp folder itself by default), sorted.
    std::vector<std::string> entryNames(const std::filesystem::path& relative = {}) const;

private:
    std::filesystem::path path_;
};

// The whole file read independently of the code under test; "" when it cannot be read.
std::string readTestFile(const std::filesystem::path& file);

} // namespace corvandell::test
