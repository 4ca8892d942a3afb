// TempFolder: creation with a random name, and plain std::fstream helpers for tests.
#include "support/TempFolder.hpp"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <system_error>

namespace corvandell::test {

TempFolder::TempFolder() {
    std::random_device device;
    for (int attempt = 0; attempt < 16; ++attempt) {
        const auto candidate =
            std::filesystem::temp_directory_path() / ("corvandell-test-" + std::to_string(device()));
        if (std::filesystem::create_directory(candidate)) {
            path_ = candidate;
            return;
        }
    }
    throw std::runtime_error("could not create a temporary test folder");
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TempFolder::writeFile(const std::filesystem::path& relative,
                                            std::string_view bytes) const {
    const auto file = path_ / relative;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out) {
        throw std::runtime_error("could not write a test file");
    }
    return file;
}

std::vector<std::string> TempFolder::entryNames(const std::filesystem::path& relative) const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_ / relative)) {
        const auto name = entry.path().filename().u8string();
        names.emplace_back(name.begin(), name.end());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string readTestFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

} // namespace corvandell::test
