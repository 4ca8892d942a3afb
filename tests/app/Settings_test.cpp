// settings.json through real files, including files damaged as crashes and editors damage them.
#include "app/SettingsFile.hpp"

#include "support/TempFolder.hpp"
#include "support/ThrownText.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

namespace fs = std::filesystem;

const fs::path kGames = pathFromUtf8("/srv/CorvandellGames");

TEST(Settings, LoadRewritesABareObjectCompleteInWriterOrder) {
    const test::TempFolder temp;
    temp.writeFile("settings.json", "{}");
    GuardedFile file = settingsFileIn(temp.path());
    EXPECT_EQ(loadSettings(file, kGames), defaultSettings(kGames));
    EXPECT_EQ(test::readTestFile(temp.path() / "settings.json"),
              "{\n\"apiBaseUrl\":\"" + std::string(kProductionApiBaseUrl) +
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
                  "}\n");
    EXPECT_EQ(temp.entryNames(), std::vector<std::string>{"settings.json"});
}

TEST(Settings, AFailedSaveKeepsTheOldFileAndLeavesNoTemporary) {
    const test::TempFolder temp;
    // A folder in the file's place: no rename can replace it, even for root.
    temp.writeFile("settings.json/keep.txt", "old");
    GuardedFile file = settingsFileIn(temp.path());
    EXPECT_EQ(test::thrownText([&] { saveSettings(file, defaultSettings(kGames)); }),
              "Could not save settings.json");
    EXPECT_EQ(temp.entryNames(), std::vector<std::string>{"settings.json"});
    EXPECT_EQ(test::readTestFile(temp.path() / "settings.json" / "keep.txt"), "old");
}

TEST(Settings, EveryFieldSurvivesSaveAndLoadWithAwkwardValues) {
    Settings settings = defaultSettings(kGames);
    settings.apiBaseUrl = "http://127.0.0.1:8080";
    settings.bearerToken = "ey\"J\\hb";
    settings.refreshToken = "line\r\nnext\tcol";
    settings.username = "J\xC3\xBCrgen";
    settings.libraryPath = pathFromUtf8("C:\\Spiele\\J\xC3\xBCrgen/\xE3\x82\xB2\xE3\x83\xBC\xE3\x83\xA0");
    settings.downloadLimitKbps = -1;
    settings.voiceEnabled = false;
    settings.voiceMuteByDefault = true;
    settings.voiceInputVolume = 0;
    settings.voiceOutputVolume = 250;
    settings.voiceInputDevice = "Mikrofon (USB) {2}";
    settings.voiceOutputDevice = "Speakers";
    settings.skinId = "";
    settings.overlayHintShown = true;
    settings.webGameBrowsers = {{"owner/\"game\"", "fire\"fox"}, {"a\\b", ""}, {"z", "chromium"}};
    const test::TempFolder temp;
    const fs::path data = temp.path() / "Roaming" / "Corvandell"; // not there yet
    GuardedFile saved = settingsFileIn(data);
    saveSettings(saved, settings);
    GuardedFile loaded = settingsFileIn(data);
    EXPECT_EQ(loadSettings(loaded, kGames), settings) << formatSettings(settings);
}

TEST(Settings, WebGameBrowsersKeepThePairsReadBeforeAnythingMalformed) {
    using Map = std::map<std::string, std::string>;
    const std::vector<std::pair<std::string, Map>> cases = {
        {"{\"webGameBrowsers\" : {\n  \"a\" : \"chrome\" ,\n\t\"b\\\"q\":\"fire\\\\fox\" }\n}",
         Map{{"a", "chrome"}, {"b\"q", "fire\\fox"}}},
        {R"({"webGameBrowsers":{"a":"chrome","b":1,"c":"x"}})", Map{{"a", "chrome"}}},
        {R"({"webGameBrowsers":{"a":"chrome","b)", Map{{"a", "chrome"}}},
        {R"({"webGameBrowsers":null,"skinId":"dark"})", Map{}},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(parseSettings(text, kGames).webGameBrowsers, expected) << text;
    }
}

TEST(Settings, DamagedFileKeepsWhatTheScannersStillFind) {
    // An empty address or games folder would leave the client unusable, so those keep defaults.
    Settings saved = defaultSettings(kGames);
    saved.apiBaseUrl = "";
    saved.bearerToken = "token";
    saved.libraryPath = "";
    saved.voiceEnabled = false;
    saved.voiceInputVolume = 40;
    saved.voiceInputDevice = "Mic";
    saved.webGameBrowsers = {{"g", "firefox"}};
    const std::string text = formatSettings(saved);
    static constexpr char kGarbage[] = "\0\xFF\xFE\x80 junk\x01\r\n";
    const std::string damaged = text.substr(0, text.find("\"voiceEnabled\"")) +
                                std::string(kGarbage, sizeof kGarbage - 1) +
                                text.substr(text.find("\"voiceInputDevice\""));
    Settings expected = saved;
    expected.apiBaseUrl = kProductionApiBaseUrl;
    expected.libraryPath = kGames;
    expected.voiceEnabled = true;
    expected.voiceInputVolume = 100;
    EXPECT_EQ(parseSettings(damaged, kGames), expected);
}

} // namespace
} // namespace corvandell
