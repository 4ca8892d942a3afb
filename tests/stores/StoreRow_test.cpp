#include "base/Utf8Path.hpp"
#include "stores/StoreRow.hpp"
#include "stores/StoreTree.hpp"

namespace corvandell {
namespace {

using test::Rows;

TEST(StoreRow, DecodesNamedAndNumericEntitiesAndLeavesTheRest) {
    const Rows cases = {
        {"Tom &amp; Jerry &lt;3&gt; &quot;x&quot; &apos;y&apos;", "Tom & Jerry <3> \"x\" 'y'"},
        {"&#x2122;&#X41;&#65;&#x1F3AE;", "\xE2\x84\xA2"
                                         "AA\xF0\x9F\x8E\xAE"},
        {"&amp;amp;", "&amp;"},
        {"&nbsp; &#xD800; &#x110000; &#; &#12a; & alone &amp",
         "&nbsp; &#xD800; &#x110000; &#; &#12a; & alone &amp"},
    };
    for (const auto& [input, expected] : cases) {
        EXPECT_EQ(decodeXmlEntities(input), expected) << input;
    }
}

// Regression: every "&" used to search the rest of the text for its ";", so a title of a
// few megabytes of bare ampersands took hours; a linear decoder takes milliseconds, and
// ctest's time-out fails the quadratic one.
TEST(StoreRow, EntityDecodingStaysLinearInTheNumberOfAmpersands) {
    const std::string bare(4 << 20, '&');
    EXPECT_EQ(decodeXmlEntities(bare), bare);
    EXPECT_EQ(decodeXmlEntities(bare + "&amp;"), bare + "&");
}

TEST(StoreRow, BuildsTheCommonRowFromTheStoresKey) {
    const auto row = makeStoreRow("gog", "1400000001", "Lantern Harbor", {}, "named.exe", "");
    EXPECT_EQ(std::tie(row.key, row.storeKey, row.storeName, row.externalId, row.platform, row.executable),
              std::make_tuple("gog:1400000001", "gog", "GOG Galaxy", "1400000001", "windows", "named.exe"));
    EXPECT_EQ(row.description,
              "Detected in your local GOG Galaxy library. Installs and updates are managed by GOG Galaxy.");
}

TEST(StoreFiles, DecodesEveryEncodingStoresWrite) {
    using namespace std::string_literals;
    const Rows cases = {
        {"\xEF\xBB\xBFplain", "plain"},
        {"\xFF\xFEL\0\xE9\0"s, "L\xC3\xA9"},
        {"<\0x\0>\0"s, "<x>"},
        {"\xFF\xFE\x3C\xD8\xAE\xDF"s, "\xF0\x9F\x8E\xAE"},
        {"\xFF\xFE\x00\xD8x\0"s, "\xEF\xBF\xBDx"},
        {"\xFF\xFEodd"s, "\xE6\x91\xAF"},
    };
    for (const auto& [bytes, expected] : cases) {
        EXPECT_EQ(decodeStoreText(bytes), expected) << bytes;
    }
}

TEST(StoreFiles, FolderTextsWrittenAnyWayNameTheSameFolder) {
    const auto sep = std::string(1, static_cast<char>(std::filesystem::path::preferred_separator));
    EXPECT_EQ(storePath(" \"D:/Games/Lantern Harbor/\" "),
              pathFromUtf8("D:" + sep + "Games" + sep + "Lantern Harbor"));
    EXPECT_EQ(storePath("\\\\?\\D:\\XboxGames\\"), pathFromUtf8("D:" + sep + "XboxGames"));
    EXPECT_TRUE(storePath("\"\"").empty());
    EXPECT_TRUE(isSameFolder(storePath("D:/Games/Lantern/"), storePath("d:\\GAMES\\lantern")));
    EXPECT_TRUE(isSameFolder(storePath("D:\\Games\\.\\Lantern"), storePath("D:\\Games\\Lantern")));
    EXPECT_FALSE(isSameFolder(storePath("D:\\Games\\Lantern"), storePath("D:\\Games\\Lantern 2")));
}

TEST(StoreFiles, RefusesWhatIsNotARegularFile) {
    test::TempFolder temp;
    EXPECT_EQ(readStoreFile(temp.writeFile("a.txt", "abc")), "abc");
    EXPECT_FALSE(readStoreFile(temp.path()));
    EXPECT_FALSE(readStoreFile(temp.path() / "missing.txt"));
}

} // namespace
} // namespace corvandell
