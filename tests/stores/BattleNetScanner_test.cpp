// The Battle.net scanner over product.db files in the agent's protocol buffers layout:
// games titled by their uninstall entry or their folder, the client's own products, stale
// installs, fields of types the scanner does not read, and a file cut short.
#include "stores/FileStoreTree.hpp"

namespace corvandell {
namespace {

using test::FileStoreTree;
constexpr auto kMachine = RegistryHive::LocalMachine;

// A length-delimited field: tag, varint length, bytes.
std::string field(int number, const std::string& bytes) {
    std::string out(1, static_cast<char>(number << 3 | 2));
    for (size_t length = bytes.size();; length >>= 7) {
        out += static_cast<char>((length & 0x7F) | (length > 0x7F ? 0x80 : 0));
        if (length <= 0x7F) {
            break;
        }
    }
    return out + bytes;
}

std::string productInstall(const std::string& uid, const std::string& code, const std::string& path) {
    const std::string settings = field(1, path) + field(2, "eu") + field(6, "enUS");
    // Field 4 as a varint and field 5 as fixed32 stand for the state the scanner skips.
    return field(1, field(1, uid) + field(2, code) + std::string("\x20\x96\x01", 3) + field(3, settings) +
                        std::string("\x2D\x01\x02\x03\x04", 5));
}

TEST(BattleNetScanner, ReadsInstallsFromProductDbAndKeepsThoseBeforeDamage) {
    FileStoreTree tree;
    const auto quest = tree.folder("Games/Example Quest");
    const auto questExe = tree.temp.writeFile("Games/Example Quest/ExampleQuest.exe", "x");
    const auto mystery = tree.folder("Games/Mystery Game");
    const std::string uninstall = "SOFTWARE\\WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
    auto uninstallEntry = [&](const std::string& key, const std::string& uid, const std::string& title) {
        tree.registry.set(
            kMachine, uninstall + key, "UninstallString",
            "\"C:\\ProgramData\\Battle.net\\Agent\\Blizzard Uninstaller.exe\" --lang=enUS --uid=" + uid +
                " --displayname=\"" + title + "\"");
        tree.registry.set(kMachine, uninstall + key, "DisplayName", title);
    };
    uninstallEntry("Beta of Example Quest", "quest_beta", "Example Quest Beta");
    uninstallEntry("Example Quest", "quest", "Example Quest");
    const std::string database = productInstall("agent", "agent", test::windowsPath(tree.temp.path())) +
                                 productInstall("quest", "pro", test::windowsPath(quest)) +
                                 productInstall("gone", "wow", "D:/Games/Gone") +
                                 productInstall("mystery", "newgame", utf8Text(mystery) + "/");
    tree.variables["ProgramData"] = tree.folder("ProgramData");
    const auto file = tree.temp.path() / "ProgramData" / "Battle.net" / "Agent" / "product.db";

    const struct {
        std::string bytes;
        std::vector<std::pair<std::string, std::string>> rows, skips;
    } cases[] = {
        {database,
         {{"battlenet:quest", "Example Quest"}, {"battlenet:mystery", "Mystery Game"}},
         {{"agent", "part of the Battle.net client, not a game"},
          {"gone", "the install folder no longer exists"}}},
        {database.substr(0, database.size() - 9),
         {{"battlenet:quest", "Example Quest"}},
         {{"agent", "part of the Battle.net client, not a game"},
          {"gone", "the install folder no longer exists"},
          {utf8Text(file), "the file is damaged; installs after the damage were not read"}}},
    };
    for (const auto& [bytes, rows, skips] : cases) {
        tree.temp.writeFile(file, bytes);
        const auto report = tree.scan(scanBattleNetGames);
        ASSERT_EQ(test::rowTitles(report), rows) << bytes.size();
        test::expectRow(report.games[0], {"battlenet:quest", "Example Quest", "Battle.net", "quest", quest,
                                          questExe, "battlenet://Pro"});
        if (rows.size() > 1) {
            EXPECT_EQ(report.games[1].launchAddress, "");
        }
        test::expectSkips(report, skips);
    }
}

} // namespace
} // namespace corvandell
