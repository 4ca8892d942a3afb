// The itch.io scanner over app folders whose receipts the real gzip compressed, an older
// plain receipt, a receipt for something that is not a game, and receipts that only claim
// to be gzip.
#include "stores/FileStoreTree.hpp"
#include "support/posix/Command.hpp"

namespace corvandell {
namespace {

using test::FileStoreTree;

std::string receipt(const std::string& game) {
    return R"({ "owner": { "id": 5, "title": "not the game" },
  "game": )" +
           game +
           R"(,
  "upload": { "id": 900002, "filename": "lantern-win.zip", "platforms": { "windows": "all" } },
  "files": [ "Lantern.exe", "data/level1.pak" ], "installerName": "archive" })";
}

TEST(ItchScanner, ReadsGzipAndPlainReceiptsAndSkipsOtherKindsAndDamage) {
    FileStoreTree tree;
    tree.variables["APPDATA"] = tree.folder("Roaming");
    const auto apps = tree.temp.path() / "Roaming" / "itch" / "apps";
    auto gzipReceipt = [&](const std::string& app, const std::string& json) {
        const auto plain = tree.temp.writeFile(apps / app / ".itch" / "receipt.json", json);
        test::run_shell("gzip -9 '" + plain.string() + "'");
    };
    gzipReceipt("lantern-harbor", receipt(R"({ "id": 900001, "title": "Lantern &amp; Harbor",
        "classification": "game", "type": "default", "url": "https://example.itch.io/lantern-harbor" })"));
    const auto lanternExe = tree.temp.writeFile(apps / "lantern-harbor" / "Lantern.exe", "x");
    tree.temp.writeFile(apps / "old-game" / ".itch" / "receipt.json",
                        receipt(R"({"id":42,"title":"Old \"Game\""})"));
    gzipReceipt("soundtrack",
                receipt(R"({ "id": 7, "title": "Lantern OST", "classification": "soundtrack" })"));
    tree.temp.writeFile(apps / "plain-in-disguise" / ".itch" / "receipt.json.gz", receipt(R"({"id": 8})"));
    gzipReceipt("cut-short", receipt(R"({ "id": 9, "title": "Cut" })"));
    const auto cut = apps / "cut-short" / ".itch" / "receipt.json.gz";
    std::filesystem::resize_file(cut, std::filesystem::file_size(cut) - 3);
    gzipReceipt("no-id", receipt(R"({ "title": "Nameless" })"));
    tree.folder("Roaming/itch/apps/downloads");

    const auto report = tree.scan(scanItchGames);
    ASSERT_EQ(test::rowTitles(report),
              (std::vector<std::pair<std::string, std::string>>{{"itch:900001", "Lantern &amp; Harbor"},
                                                                {"itch:42", "Old \"Game\""}}));
    test::expectRow(report.games[0], {"itch:900001", "Lantern &amp; Harbor", "itch.io", "900001",
                                      apps / "lantern-harbor", lanternExe, ""});
    test::expectSkips(report, {{"cut-short", "receipt.json.gz is damaged"},
                               {"downloads", "no .itch receipt"},
                               {"no-id", "the receipt names no game id"},
                               {"plain-in-disguise", "receipt.json.gz is not a gzip file"},
                               {"soundtrack", "classified as \"soundtrack\", not a game"}});
}

} // namespace
} // namespace corvandell
