// library.json: the exact line layout, 64-bit times, and round trips through a real file.
#include "app/LibraryCache.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <cstdint>

namespace corvandell {
namespace {

const std::vector<LibraryRecord> kRecords = {
    {"t-1", "Quote \"Quest\"", "C:\\Games\\Quest", "C:\\Games\\Quest\\bin\\q{1}.exe", true, 4102444800,
     INT64_MAX},
    {"t-2", "J\xC3\xA4ger\r\nII", "", "", false, -1, 0},
};

TEST(LibraryCache, FormatWritesOneFixedLinePerRecord) {
    EXPECT_EQ(formatLibrary({}), "[\n\n]\n");
    EXPECT_EQ(formatLibrary(kRecords),
              "[\n"
              R"({"titleId":"t-1","name":"Quote \"Quest\"","installPath":"C:\\Games\\Quest",)"
              R"("executablePath":"C:\\Games\\Quest\\bin\\q{1}.exe","favorite":true,)"
              R"("installedAtUnix":4102444800,"lastPlayedAtUnix":9223372036854775807})"
              ",\n"
              "{\"titleId\":\"t-2\",\"name\":\"J\xC3\xA4ger\r\\nII\",\"installPath\":\"\","
              R"("executablePath":"","favorite":false,"installedAtUnix":-1,"lastPlayedAtUnix":0})"
              "\n]\n");
}

TEST(LibraryCache, SavedRecordsLoadBackUnchanged) {
    const test::TempFolder temp;
    const auto data = temp.path() / "Corvandell";
    EXPECT_TRUE(loadLibrary(data).empty());
    saveLibrary(data, kRecords);
    EXPECT_EQ(loadLibrary(data), kRecords);
    saveLibrary(data, {});
    EXPECT_TRUE(loadLibrary(data).empty());
}

TEST(LibraryCache, ParseDefaultsMissingFieldsAndSkipsNonObjects) {
    const auto records = parseLibrary(R"([{"name":"Bare"}, 42, "x", {"titleId":"t","favorite":"yes"}])");
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0], (LibraryRecord{"", "Bare", "", "", false, 0, 0}));
    EXPECT_EQ(records[1], (LibraryRecord{"t", "", "", "", false, 0, 0}));
    EXPECT_TRUE(parseLibrary("not json at all").empty());
}

} // namespace
} // namespace corvandell
