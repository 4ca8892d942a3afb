// gunzip on files written by the real gzip: file names in the header, every level, members
// joined with cat, as receipts may arrive, the optional header fields gzip itself never
// writes, damaged or padded files, which must be refused whole, and a content limit that
// holds across members.
#include "webgames/git/Gzip.hpp"

#include "support/TempFolder.hpp"
#include "support/posix/Command.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace corvandell::git {
namespace {

TEST(GzipCli, ReadsWhatTheRealGzipWritesAndRefusesDamagedFiles) {
    test::TempFolder folder;
    const auto gzip = [&](const std::string& content, const std::string& options) {
        return test::run_shell("gzip -c " + options + " '" + folder.writeFile("r.json", content).string() +
                               "'");
    };
    std::mt19937 random(9);
    std::string receipt;
    while (receipt.size() < 200000) {
        receipt += "{\"game\":\"" + std::to_string(random() % 500) + "\",\"owned\":true},\n";
    }
    for (const char* options : {"-1", "-6", "-9", "-n -9"}) {
        EXPECT_EQ(gunzip(gzip(receipt, options)), receipt) << options;
    }
    EXPECT_EQ(gunzip(gzip("first member\n", "-9") + gzip("", "-1") + gzip(receipt, "-6")),
              "first member\n" + receipt);
    const std::string twoMembers = gzip("a", "-9") + gzip(receipt, "-9");
    EXPECT_EQ(gunzip(twoMembers, receipt.size() + 1), "a" + receipt);
    EXPECT_EQ(gunzip(twoMembers, receipt.size()), std::nullopt);

    const std::string plain = gzip("hello", "-n"); // flags 0: no name
    const std::string fields = std::string("\x03\x00xyz", 5) + "level.sav" + '\0' + "receipt" + '\0';
    EXPECT_EQ(gunzip(plain.substr(0, 3) + '\x1d' + plain.substr(4, 6) + fields + plain.substr(10)), "hello");
    const std::size_t trailer = plain.size() - 8;
    const std::string damaged[] = {
        plain.substr(0, 3) + '\x20' + plain.substr(4),                                    // reserved flag
        std::string(plain).replace(trailer, 1, 1, static_cast<char>(plain[trailer] ^ 1)), // CRC-32
        std::string(plain).replace(trailer + 4, 1, 1, '\x06'),                            // length
        plain.substr(0, plain.size() - 1),
        plain + '\0',
        "hello",
    };
    for (const std::string& file : damaged) {
        EXPECT_EQ(gunzip(file), std::nullopt) << file.size();
    }
}

} // namespace
} // namespace corvandell::git
