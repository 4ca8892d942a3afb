// A real, empty folder under the system temp folder for one test, removed afterwards. Tests
// use the real file system, and the random name keeps parallel ctest runs apart.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell::test {

class TempFolder {
public:
    // A name already taken fails the test rather than sharing another run's folder.
    TempFolder()
        : path_(std::filesystem::temp_directory_path() /
                ("corvandell-test-" + std::to_string(std::random_device()()))) {
        if (!std::filesystem::create_directory(path_)) {
            throw std::runtime_error("could not create a temporary test folder");
        }
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    // Writes the bytes exactly, creating parent folders; returns the file's path.
    std::filesystem::path writeFile(const std::filesystem::path& relative, std::string_view bytes) const {
        const auto file = path_ / relative;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        if (!out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()))) {
            throw std::runtime_error("could not write a test file");
        }
        return file;
    }

    // Names of the entries directly in `relative` (the folder itself by default), sorted.
    std::vector<std::string> entryNames(const std::filesystem::path& relative = {}) const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_ / relative)) {
            const auto name = entry.path().filename().u8string();
            names.emplace_back(name.begin(), name.end());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path path_;
};

// The whole file, read independently of the code under test; "" when it cannot be read.
inline std::string readTestFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

} // namespace corvandell::test
