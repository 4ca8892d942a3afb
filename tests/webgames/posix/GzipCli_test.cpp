// gunzip on files written by the real gzip: file names in the header, every level, and
// members joined with cat, as receipts may arrive.
#include "webgames/Gzip.hpp"

#include "support/TempFolder.hpp"
#include "support/posix/Command.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace corvandell::git {
namespace {

std::string gzip_file(const test::TempFolder& folder, const std::string& name, const std::string& content,
                      const std::string& options) {
    const auto source = folder.writeFile(name, content);
    int exitCode = -1;
    const std::string gzipped =
        test::run_shell("gzip -c " + options + " '" + source.string() + "'", exitCode);
    EXPECT_EQ(exitCode, 0) << options;
    return gzipped;
}

TEST(GzipCli, ReadsWhatTheRealGzipWrites) {
    test::TempFolder folder;
    std::mt19937 random(9);
    std::string receipt;
    while (receipt.size() < 200000) {
        receipt += "{\"game\":\"" + std::to_string(random() % 500) + "\",\"owned\":true},\n";
    }
    std::string noise(50000, '\0');
    for (char& byte : noise) {
        byte = static_cast<char>(random());
    }
    for (const char* options : {"-1", "-6", "-9", "-n -9"}) {
        for (const std::string* content : {&receipt, &noise}) {
            const std::string file = gzip_file(folder, "receipt.json", *content, options);
            EXPECT_EQ(gunzip(file), *content) << options;
        }
    }
    const std::string first = gzip_file(folder, "a.txt", "first member\n", "-9");
    const std::string second = gzip_file(folder, "b.txt", "", "-1");
    const std::string third = gzip_file(folder, "c.txt", receipt, "-6");
    EXPECT_EQ(gunzip(first + second + third), "first member\n" + receipt);
}

} // namespace
} // namespace corvandell::git
