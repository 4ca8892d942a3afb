// library.json through a real file: the exact line layout, 64-bit times and awkward texts.
#include "app/LibraryCache.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <cstdint>

namespace corvandell {
namespace {

TEST(LibraryCache, SavedRecordsKeepTheLineLayoutAndLoadBackUnchanged) {
    const std::vector<LibraryRecord> records = {
        {"t-1", "Quote \"Quest\"", "C:\\Games\\Quest", "C:\\Games\\Quest\\bin\\q{1}.exe", true, 4102444800,
         INT64_MAX},
        {"t-2", "J\xC3\xA4ger\r\nII", "", "", false, -1, 0},
    };
    const test::TempFolder temp;
    const auto data = temp.path() / "Corvandell";
    GuardedFile file = libraryFileIn(data);
    EXPECT_TRUE(loadLibrary(file).empty());
    saveLibrary(file, records);
    EXPECT_EQ(test::readTestFile(data / "library.json"),
              "[\n"
              R"({"titleId":"t-1","name":"Quote \"Quest\"","installPath":"C:\\Games\\Quest",)"
              R"("executablePath":"C:\\Games\\Quest\\bin\\q{1}.exe","favorite":true,)"
              R"("installedAtUnix":4102444800,"lastPlayedAtUnix":9223372036854775807})"
              ",\n"
              "{\"titleId\":\"t-2\",\"name\":\"J\xC3\xA4ger\r\\nII\",\"installPath\":\"\","
              R"("executablePath":"","favorite":false,"installedAtUnix":-1,"lastPlayedAtUnix":0})"
              "\n]\n");
    GuardedFile again = libraryFileIn(data);
    EXPECT_EQ(loadLibrary(again), records);
}

} // namespace
} // namespace corvandell
