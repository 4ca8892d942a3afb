// The bounded read against real files, folders and links.
#include "base/BoundedFileRead.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

namespace fs = std::filesystem;

TEST(BoundedFileRead, TellsMissingUnreadableTooLargeAndReadApart) {
    const test::TempFolder temp;
    const std::string bigger(70 * 1024, 'x'); // more than one read chunk
    temp.writeFile("three.txt", std::string_view("a\0c", 3));
    temp.writeFile("big.txt", bigger);
    fs::create_directory(temp.path() / "folder.json");
    bool hasLink = true;
    try {
        fs::create_symlink(temp.path() / "unmounted" / "settings.json", temp.path() / "dangling.json");
    } catch (const fs::filesystem_error&) {
        hasLink = false; // Wine without symbolic link support
    }

    struct Case {
        fs::path name;
        std::size_t maxBytes;
        FileReadStatus status;
        std::string bytes;
    };
    std::vector<Case> cases = {
        {"three.txt", 2, FileReadStatus::TooLarge, ""},
        {"big.txt", bigger.size(), FileReadStatus::Ok, bigger},
        {"big.txt", bigger.size() - 1, FileReadStatus::TooLarge, ""},
        {"missing.json", 10, FileReadStatus::Missing, ""},
        {fs::path("three.txt") / "settings.json", 10, FileReadStatus::Missing, ""},
        {"folder.json", 10, FileReadStatus::Unreadable, ""},
    };
    if (hasLink) {
        cases.push_back({"dangling.json", 10, FileReadStatus::Unreadable, ""});
    }
    for (const Case& c : cases) {
        const FileRead read = readFileBounded(temp.path() / c.name, c.maxBytes);
        EXPECT_EQ(read.status, c.status) << c.name << " capped at " << c.maxBytes;
        EXPECT_EQ(read.bytes, c.bytes) << c.name << " capped at " << c.maxBytes;
    }
}

} // namespace
} // namespace corvandell
