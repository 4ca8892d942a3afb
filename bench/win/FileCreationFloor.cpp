// How long Wine takes just to create a checkout's files: every regular file under SOURCE
// is read into memory first, then written under DEST exactly as the clone's checkout
// writes them (its writer threads, one create-write-close per file), with no pack to read.
// bench/git-clone-wine prints it beside the clone as the floor the file system sets.
//
//   file-creation-floor.exe SOURCE DEST
#include <windows.h>

#include "webgames/git/FileWriters.hpp"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace fs = std::filesystem;

int wmain(int argc, wchar_t** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: file-creation-floor SOURCE DEST\n");
        return 2;
    }
    const fs::path source = argv[1];
    const fs::path destination = argv[2];
    std::vector<std::pair<fs::path, std::shared_ptr<const std::string>>> files;
    std::vector<fs::path> folders;
    for (const auto& entry : fs::recursive_directory_iterator(source)) {
        const fs::path relative = entry.path().lexically_relative(source);
        if (entry.is_directory()) {
            folders.push_back(relative);
        } else if (entry.is_regular_file()) {
            std::ifstream in(entry.path(), std::ios::binary);
            files.emplace_back(relative,
                               std::make_shared<const std::string>(std::istreambuf_iterator<char>(in),
                                                                   std::istreambuf_iterator<char>()));
        }
    }
    const auto start = std::chrono::steady_clock::now();
    fs::create_directories(destination);
    for (const fs::path& folder : folders) {
        fs::create_directories(destination / folder);
    }
    corvandell::git::FileWriters writers(4, std::uint64_t{8} << 20);
    for (const auto& [relative, content] : files) {
        writers.write(destination / relative, content);
    }
    writers.finish();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("%zu files in %zu folders: %.3f s\n", files.size(), folders.size(), seconds.count());
    return 0;
}
