// settings.json through real files: the exact writer layout, the reader's field rules,
// round trips of awkward values, and files damaged the way crashes and editors damage them.
#include "app/Settings.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace corvandell {
namespace {

namespace fs = std::filesystem;

const fs::path kGames = pathFromUtf8("/srv/CorvandellGames");

Settings defaultsWith(const std::function<void(Settings&)>& change) {
    Settings settings = defaultSettings(kGames);
    change(settings);
    return settings;
}

TEST(Settings, LoadRewritesABareObjectCompleteInWriterOrder) {
    const test::TempFolder temp;
    temp.writeFile("settings.json", "{}");
    const Settings loaded = loadSettings(DataPaths{temp.path(), kGames});
    EXPECT_EQ(loaded, defaultSettings(kGames));
    const std::string expected = "{\n\"apiBaseUrl\":\"" + std::string(kProductionApiBaseUrl) +
                                 "\",\n"
                                 "\"bearerToken\":\"\",\n"
                                 "\"refreshToken\":\"\",\n"
                                 "\"username\":\"\",\n"
                                 "\"libraryPath\":\"/srv/CorvandellGames\",\n"
                                 "\"downloadLimitKbps\":0,\n"
                                 "\"voiceEnabled\":true,\n"
                                 "\"voiceMuteByDefault\":false,\n"
                                 "\"voiceInputVolume\":100,\n"
                                 "\"voiceOutputVolume\":100,\n"
                                 "\"voiceInputDevice\":\"\",\n"
                                 "\"voiceOutputDevice\":\"\",\n"
                                 "\"skinId\":\"dark\",\n"
                                 "\"overlayHintShown\":false,\n"
                                 "\"webGameBrowsers\":{}\n"
                                 "}\n";
    EXPECT_EQ(test::readTestFile(temp.path() / "settings.json"), expected);
}

TEST(Settings, LoadCreatesAMissingFileAndItsFolder) {
    const test::TempFolder temp;
    const fs::path data = temp.path() / "Roaming" / "Corvandell";
    EXPECT_EQ(loadSettings(DataPaths{data, kGames}), defaultSettings(kGames));
    EXPECT_EQ(test::readTestFile(data / "settings.json"), formatSettings(defaultSettings(kGames)));
}

TEST(Settings, AwkwardValuesSurviveSaveAndLoad) {
    const std::vector<Settings> cases = {
        defaultsWith([](Settings& s) {
            s.bearerToken = "ey\"J\\hb";
            s.refreshToken = "line\r\nnext\tcol";
            s.libraryPath = pathFromUtf8("C:\\Games\\Corvandell");
            s.webGameBrowsers = {{"owner/\"game\"", "fire\"fox"}, {"a\\b", ""}, {"z", "chromium"}};
        }),
        defaultsWith([](Settings& s) {
            s.apiBaseUrl = "http://127.0.0.1:8080";
            s.username = "J\xC3\xBCrgen";
            s.libraryPath = pathFromUtf8("/home/j\xC3\xBCrgen/\xE3\x82\xB2\xE3\x83\xBC\xE3\x83\xA0");
            s.downloadLimitKbps = -1;
            s.voiceEnabled = false;
            s.voiceMuteByDefault = true;
            s.voiceInputVolume = 0;
            s.voiceOutputVolume = 250;
            s.voiceInputDevice = "Mikrofon (USB) {2}";
            s.voiceOutputDevice = "Speakers";
            s.skinId = "";
            s.overlayHintShown = true;
        }),
    };
    for (const Settings& settings : cases) {
        const test::TempFolder temp;
        saveSettings(temp.path(), settings);
        EXPECT_EQ(loadSettings(DataPaths{temp.path(), kGames}), settings) << formatSettings(settings);
    }
}

TEST(Settings, ParseKeepsDefaultsForAbsentKeysAndAssignsPresentOnesAsRead) {
    struct Case {
        std::string text;
        Settings expected;
    };
    const std::vector<Case> cases = {
        {R"({"apiBaseUrl":"","skinId":""})", defaultsWith([](Settings& s) { s.skinId = ""; })},
        {R"({"libraryPath":"","username":""})", defaultSettings(kGames)},
        {R"({"bearerToken":"\u0041"})", defaultsWith([](Settings& s) { s.bearerToken = "u0041"; })},
        {R"({"voiceInputVolume":"80","voiceOutputVolume":80})",
         defaultsWith([](Settings& s) { s.voiceOutputVolume = 80; })},
        {R"({"username":5,"skinId":"light"})", defaultsWith([](Settings& s) {
             s.username = "skinId";
             s.skinId = "light";
         })},
        {R"({"voiceEnabled": false, "downloadLimitKbps": 250, "overlayHintShown":"true"})",
         defaultsWith([](Settings& s) {
             s.voiceEnabled = false;
             s.downloadLimitKbps = 250;
             s.overlayHintShown = true;
         })},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(parseSettings(c.text, kGames), c.expected) << c.text;
    }
}

TEST(Settings, WebGameBrowsersKeepThePairsReadBeforeAnythingMalformed) {
    using Map = std::map<std::string, std::string>;
    struct Case {
        std::string text;
        Map expected;
    };
    const std::vector<Case> cases = {
        {"{\"webGameBrowsers\" : {\n  \"a\" : \"chrome\" ,\n\t\"b\\\"q\":\"fire\\\\fox\" }\n}",
         Map{{"a", "chrome"}, {"b\"q", "fire\\fox"}}},
        {R"({"webGameBrowsers":{"a":"chrome","b":1,"c":"x"}})", Map{{"a", "chrome"}}},
        {R"({"webGameBrowsers":{"a":"chrome","b)", Map{{"a", "chrome"}}},
        {R"({"webGameBrowsers":null,"skinId":"dark"})", Map{}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(parseSettings(c.text, kGames).webGameBrowsers, c.expected) << c.text;
    }
}

TEST(Settings, DamagedFileKeepsWhatTheScannersStillFind) {
    const Settings saved = defaultsWith([](Settings& s) {
        s.bearerToken = "token";
        s.username = "alice";
        s.voiceEnabled = false;
        s.voiceInputVolume = 40;
        s.voiceInputDevice = "Mic";
        s.skinId = "slate";
        s.webGameBrowsers = {{"g", "firefox"}};
    });
    const std::string text = formatSettings(saved);

    const std::string truncated = text.substr(0, text.find("ice\""));
    EXPECT_EQ(parseSettings(truncated, kGames), defaultsWith([](Settings& s) {
                  s.bearerToken = "token";
                  s.username = "al";
              }));

    const std::size_t from = text.find("\"voiceEnabled\"");
    const std::size_t to = text.find("\"voiceInputDevice\"");
    static constexpr char kGarbage[] = "\0\xFF\xFE\x80 junk\x01\r\n";
    const std::string damaged =
        text.substr(0, from) + std::string(kGarbage, sizeof kGarbage - 1) + text.substr(to);
    Settings expected = saved;
    expected.voiceEnabled = true;
    expected.voiceInputVolume = 100;
    EXPECT_EQ(parseSettings(damaged, kGames), expected);
}

} // namespace
} // namespace corvandell
