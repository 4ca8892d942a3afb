// Receipts compressed by the real gzip, beside damaged ones and ones that only claim to be gzip.
#include "stores/StoreTree.hpp"
#include "support/posix/Command.hpp"

namespace corvandell {
namespace {

using namespace test;

// The owner and the upload carry ids and titles too; only the game's count.
std::string receipt(const std::string& game) {
    return R"({ "owner": { "id": 5, "title": "not the game" }, "game": )" + game +
           R"(, "upload": { "id": 900002, "filename": "lantern-win.zip" }, "files": [ "Lantern.exe" ] })";
}

TEST(ItchScanner, ReadsGzipAndPlainReceiptsAndSkipsOtherKindsAndDamage) {
    StoreTree tree;
    tree.variables["APPDATA"] = tree.folder("Roaming");
    const auto apps = tree.temp.path() / "Roaming" / "itch" / "apps";
    auto gzipReceipt = [&](const std::string& app, const std::string& json) {
        const auto plain = tree.temp.writeFile(apps / app / ".itch" / "receipt.json", json);
        run_shell("gzip -9 '" + plain.string() + "'");
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
    ASSERT_EQ(rowTitles(report),
              (Rows{{"itch:900001", "Lantern &amp; Harbor"}, {"itch:42", "Old \"Game\""}}));
    expectRow(report.games[0], "itch:900001", "Lantern &amp; Harbor", apps / "lantern-harbor", lanternExe,
              "");
    expectSkips(report, {{"cut-short", "receipt.json.gz is damaged"},
                         {"downloads", "no .itch receipt"},
                         {"no-id", "the receipt names no game id"},
                         {"plain-in-disguise", "receipt.json.gz is not a gzip file"},
                         {"soundtrack", "classified as \"soundtrack\", not a game"}});
}

} // namespace
} // namespace corvandell
