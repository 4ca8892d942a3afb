// The Riot scanner over product settings files as the Riot client writes them (BOM,
// quoted and bare values, patchlines besides live) and the other YAML files of its
// Metadata folder, with and without a known Riot client.
#include "stores/FileStoreTree.hpp"

#include <algorithm>

namespace corvandell {
namespace {

using test::FileStoreTree;

// Riot writes paths with forward slashes, which also need no escaping in its JSON.
std::string forwardSlashes(const std::filesystem::path& path) {
    std::string text = utf8Text(path);
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

TEST(RiotScanner, ReadsProductSettingsAndLaunchesThroughTheRiotClient) {
    FileStoreTree tree;
    tree.variables["ProgramData"] = tree.folder("ProgramData");
    const auto league = tree.folder("Riot Games/League of Legends");
    const auto lor = tree.folder("Riot Games/LoR");
    const auto arena = tree.folder("Riot Games/Lantern Arena");
    const auto client =
        tree.temp.writeFile(tree.temp.path() / "Riot Games" / "Riot Client" / "RiotClientServices.exe", "x");
    auto settings = [&](const std::string& name, const std::string& text) {
        tree.temp.writeFile("ProgramData/Riot Games/Metadata/" + name, text);
    };
    settings("league_of_legends.live/league_of_legends.live.product_settings.yaml",
             "\xEF\xBB\xBFproduct_install_full_path: \"" + utf8Text(league) +
                 "/\"\r\nshortcut_name: x.lnk\r\n");
    settings("bacon.live/bacon.live.product_settings.yaml",
             "product_install_full_path: '" + utf8Text(lor) + "'");
    settings("lor.live/lor.live.product_settings.yaml", "product_install_full_path: " + utf8Text(lor));
    settings("lantern.pbe/lantern.pbe.product_settings.yaml",
             "product_install_root: \"D:/\"\nproduct_install_full_path:  " + test::windowsPath(arena) +
                 "  \nshortcut_name: \"Lantern Arena.lnk\"\n");
    settings("valorant.live/valorant.live.product_settings.yaml", "product_install_full_path: \"D:/Gone\"\n");
    settings("Riot Client/Riot Client.settings.yaml", "user_data_paths: []\n");
    const auto clientJson = R"({ "associated_client": {}, "rc_default": "D:/Gone/RiotClientServices.exe", )"
                            R"("rc_live": ")" +
                            forwardSlashes(client) + "\" }";

    for (const bool isClientKnown : {true, false}) {
        tree.temp.writeFile("ProgramData/Riot Games/RiotClientInstalls.json",
                            isClientKnown ? clientJson : "{}");
        const auto report = tree.scan(scanRiotGames);
        ASSERT_EQ(test::rowTitles(report), (std::vector<std::pair<std::string, std::string>>{
                                               {"riot:bacon", "Legends of Runeterra"},
                                               {"riot:lantern.pbe", "Lantern Arena"},
                                               {"riot:league_of_legends", "League of Legends"},
                                               {"riot:lor", "Legends of Runeterra"}}));
        const std::string launch =
            "\"" + utf8Text(client) + "\" --launch-product=league_of_legends " + "--launch-patchline=live";
        test::expectRow(report.games[2], {"riot:league_of_legends",
                                          "League of Legends",
                                          "Riot Games",
                                          "league_of_legends",
                                          league,
                                          {},
                                          isClientKnown ? launch : ""});
        EXPECT_EQ(report.games[1].installFolder, arena);
        EXPECT_TRUE(report.games[1].launchAddress.ends_with(
            isClientKnown ? "--launch-product=lantern --launch-patchline=pbe" : ""));
        test::expectSkips(report,
                          {{"Riot Client.settings.yaml", "not a product settings file"},
                           {"valorant.live.product_settings.yaml", "the install folder no longer exists"}});
    }
}

} // namespace
} // namespace corvandell
