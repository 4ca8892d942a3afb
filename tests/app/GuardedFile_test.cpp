// What a run may write over settings.json and library.json, decided by how each was found.
#include "app/GuardedFile.hpp"

#include "app/LibraryCache.hpp"
#include "app/SettingsFile.hpp"
#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace corvandell {
namespace {

namespace fs = std::filesystem;
using std::chrono::sys_days;
using namespace std::chrono_literals;

const fs::path kGames = pathFromUtf8("/srv/CorvandellGames");

// 2026-11-25 03:15:00.750 UTC
const auto kNow = sys_days{std::chrono::year{2026} / 11 / 25} + 3h + 15min + 750ms;

Settings customSettings() {
    Settings settings = defaultSettings(kGames);
    settings.bearerToken = "token";
    settings.username = "J\xC3\xBCrgen";
    settings.voiceEnabled = false;
    settings.voiceInputVolume = 40;
    settings.skinId = "light";
    return settings;
}

// The file's bytes, or a marker for a folder standing in its place.
std::string contentsOf(const fs::path& file) {
    return fs::is_directory(file) ? "<folder>" : test::readTestFile(file);
}

TEST(GuardedFile, NamesDamagedCopiesByUtcSecondThenSequence) {
    const std::vector<std::tuple<std::chrono::system_clock::time_point, int, std::string>> cases = {
        {kNow, 1, "settings.json.bad-20261125T031500Z"},
        {kNow, 12, "settings.json.bad-20261125T031500Z-12"},
        {std::chrono::system_clock::time_point{} - 500ms, 1, "settings.json.bad-19691231T235959Z"},
    };
    for (const auto& [when, sequence, expected] : cases) {
        EXPECT_EQ(damagedCopyName("settings.json", when, sequence), expected);
    }
}

TEST(GuardedFile, SettingsLoadFollowsTheRulesForMissingWholeDamagedAndUnreadableFiles) {
    const std::string custom = formatSettings(customSettings());
    const std::string cut = custom.substr(0, custom.find("\"voiceInputVolume\""));
    Settings readFromCut = customSettings();
    readFromCut.voiceInputVolume = 100;
    readFromCut.skinId = "dark";
    const std::string defaults = formatSettings(defaultSettings(kGames));
    const std::string tooLarge = "{" + std::string(kMaxSettingsBytes, ' ') + "}";

    struct Case {
        const char* name;
        std::optional<std::string> bytes; // nothing: no file; "/": a folder in its place
        FileCondition condition;
        Settings expected;
        std::string savedText; // what is there after the load-time save
        bool keepsOriginal;
    };
    const std::vector<Case> cases = {
        {"missing", std::nullopt, FileCondition::Missing, defaultSettings(kGames), defaults, false},
        {"whole", custom, FileCondition::Whole, customSettings(), custom, false},
        {"blank", " \r\n", FileCondition::Whole, defaultSettings(kGames), defaults, false},
        {"cut short", cut, FileCondition::Damaged, readFromCut, formatSettings(readFromCut), true},
        {"garbage", custom + "\x01\xFF", FileCondition::Damaged, customSettings(), custom, true},
        {"too large", tooLarge, FileCondition::Unreadable, defaultSettings(kGames), tooLarge, false},
        {"folder", "/", FileCondition::Unreadable, defaultSettings(kGames), "<folder>", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const test::TempFolder temp;
        const fs::path file = temp.path() / "settings.json";
        if (c.bytes == "/") {
            temp.writeFile("settings.json/keep.txt", "mine");
        } else if (c.bytes) {
            temp.writeFile("settings.json", *c.bytes);
        }
        temp.writeFile(".settings.json.tmp-0123456789abcdef", "{\"cut");

        const auto before = std::chrono::system_clock::now();
        GuardedFile guard = settingsFileIn(temp.path());
        EXPECT_EQ(loadSettings(guard, kGames), c.expected);
        const auto after = std::chrono::system_clock::now();
        EXPECT_EQ(guard.condition(), c.keepsOriginal ? FileCondition::Whole : c.condition);
        EXPECT_EQ(contentsOf(file), c.savedText);

        std::vector<std::string> expectedNames = {"settings.json"};
        if (c.keepsOriginal) {
            const std::string keptName = pathToUtf8(guard.keptOriginal().filename());
            EXPECT_TRUE(keptName == damagedCopyName("settings.json", before, 1) ||
                        keptName == damagedCopyName("settings.json", after, 1))
                << keptName;
            EXPECT_EQ(test::readTestFile(guard.keptOriginal()), *c.bytes);
            expectedNames.push_back(keptName);
        }
        EXPECT_EQ(temp.entryNames(), expectedNames) << "the leftover temporary is cleaned";

        // Saving again at exit writes the new state, once, except over an unreadable file.
        Settings changed = c.expected;
        changed.username = "later";
        EXPECT_EQ(saveSettings(guard, changed), c.condition != FileCondition::Unreadable);
        if (c.condition == FileCondition::Unreadable) {
            EXPECT_EQ(contentsOf(file), c.savedText);
            EXPECT_EQ(test::readTestFile(file / "keep.txt"), c.bytes == "/" ? "mine" : "");
        } else {
            EXPECT_EQ(test::readTestFile(file), formatSettings(changed));
        }
        EXPECT_EQ(temp.entryNames(), expectedNames);
    }
}

TEST(GuardedFile, DamagedOriginalsKeptInOneSecondNeverOverwriteEachOther) {
    const test::TempFolder temp;
    const std::string whole = formatLibrary(
        {{"t-1", "One", "C:\\G\\1", "C:\\G\\1\\a.exe", true, 1, 2}, {"t-2", "Two", "", "", false, 3, 4}});
    const std::vector<std::string> originals = {whole.substr(0, whole.find("{\"titleId\":\"t-2\"") + 20),
                                                whole.substr(0, whole.size() - 4)};
    std::vector<std::string> names;
    for (const std::string& original : originals) {
        temp.writeFile("library.json", original);
        GuardedFile guard = libraryFileIn(temp.path());
        const std::vector<LibraryRecord> records = loadLibrary(guard);
        ASSERT_EQ(guard.condition(), FileCondition::Damaged);
        ASSERT_FALSE(records.empty());
        EXPECT_EQ(records.front().name, "One") << "the records before the cut are read";
        ASSERT_TRUE(guard.save(formatLibrary(records), kNow));
        EXPECT_EQ(test::readTestFile(guard.keptOriginal()), original);
        names.push_back(pathToUtf8(guard.keptOriginal().filename()));
    }
    EXPECT_EQ(names, (std::vector<std::string>{"library.json.bad-20261125T031500Z",
                                               "library.json.bad-20261125T031500Z-2"}));
}

} // namespace
} // namespace corvandell
