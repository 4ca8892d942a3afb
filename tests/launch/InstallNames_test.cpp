#include "launch/InstallNames.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace corvandell {
namespace {

TEST(InstallNames, TitleFolderNamesAreSafeWindowsFolderNames) {
    struct Case {
        std::string title;
        std::string fallback;
        std::string folder;
    };
    const Case cases[] = {
        {"Ember Keep", "id", "Ember Keep"},
        {"Thistle & Thorn", "id", "Thistle & Thorn"},
        {"Sky: Forge 2", "id", "Sky Forge 2"},      // forbidden characters become blanks
        {"What? <Now>/\\|*\"", "id", "What Now"},   // and runs of blanks one blank
        {"Tab\there\r\nnow", "id", "Tab here now"}, // control characters too
        {"  Padded  ", "id", "Padded"},             // ends trimmed
        {"Dots...", "id", "Dots"},                  // Windows would drop trailing dots
        {"End . . .", "id", "End"},                 // and trailing dots and blanks mixed
        {".hidden", "id", ".hidden"},               // a leading dot is fine
        {"CON", "id", "CON_"},                      // device names
        {"con", "id", "con_"},
        {"Nul.txt", "id", "Nul_.txt"},     // also with a suffix
        {"aux .save", "id", "aux_ .save"}, // blanks before the dot are ignored by Windows
        {"COM1", "id", "COM1_"},
        {"lpt9", "id", "lpt9_"},
        {"COM\xC2\xB9", "id", "COM\xC2\xB9_"}, // superscript one
        {"CONIN$", "id", "CONIN$_"},
        {"COM10", "id", "COM10"}, // not a device
        {"Console", "id", "Console"},
        {"Über Straße", "id", "Über Straße"},      // UTF-8 kept
        {"???", "2860dc9d-ab01", "2860dc9d-ab01"}, // nothing left: the fallback
        {"", "a/b?", "a b"},                       // which is repaired the same way
        {"", "../..", "Game"},                     // dots alone trim away
        {"...", "", "Game"},                       // and when that is empty too
        {"", "PRN", "PRN_"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(titleFolderName(c.title, c.fallback), c.folder) << c.title;
    }
}

TEST(InstallNames, LongTitlesAreCutAtACharacterBoundary) {
    const std::string ascii(100, 'a');
    EXPECT_EQ(titleFolderName(ascii), std::string(kMaxTitleFolderChars, 'a'));

    std::string wide; // 100 two-byte characters
    for (int i = 0; i < 100; ++i) {
        wide += "\xC3\xA9";
    }
    const std::string cut = titleFolderName(wide);
    EXPECT_EQ(cut.size(), 2 * kMaxTitleFolderChars);
    EXPECT_EQ(cut, wide.substr(0, 2 * kMaxTitleFolderChars));

    // A cut that ends on a blank or dot is trimmed again.
    const std::string spaced = std::string(kMaxTitleFolderChars - 1, 'b') + " tail";
    EXPECT_EQ(titleFolderName(spaced), std::string(kMaxTitleFolderChars - 1, 'b'));
}

TEST(InstallNames, AssetNamesBecomeFilesInsideTheFolderOrAreRefused) {
    struct Case {
        std::string asset;
        std::optional<std::string> file;
    };
    const Case cases[] = {
        {"ember-keep-build", "ember-keep-build.bin"},
        {"game.exe", "game.exe.bin"},
        {"bin/game.exe", "bin/game.exe.bin"},
        {"bin\\data\\pak0", "bin/data/pak0.bin"},
        {"asset", "asset.bin"},
        {"Über", "Über.bin"},
        {"..hidden", "..hidden.bin"},
        {"", std::nullopt},
        {"..", std::nullopt},
        {".", std::nullopt},
        {"../evil", std::nullopt},
        {"..\\evil", std::nullopt},
        {"bin/../../evil", std::nullopt},
        {"bin/./x", std::nullopt},
        {"/etc/passwd", std::nullopt},
        {"\\Windows\\system.ini", std::nullopt},
        {"\\\\server\\share\\x", std::nullopt},
        {"C:\\Windows\\evil.exe", std::nullopt},
        {"C:evil", std::nullopt},
        {"file:stream", std::nullopt},
        {"bin//x", std::nullopt},
        {"bin/", std::nullopt},
        {"CON", std::nullopt},
        {"bin/nul.dat", std::nullopt},
        {"lpt1", std::nullopt},
        {"trailing.", std::nullopt},
        {"trailing ", std::nullopt},
        {"what?", std::nullopt},
        {"star*", std::nullopt},
        {"a<b", std::nullopt},
        {"pipe|", std::nullopt},
        {"quote\"", std::nullopt},
        {std::string("nul\0byte", 8), std::nullopt},
        {"line\nbreak", std::nullopt},
        {std::string(kMaxAssetComponentBytes, 'x'), std::string(kMaxAssetComponentBytes, 'x') + ".bin"},
        {std::string(kMaxAssetComponentBytes + 1, 'x'), std::nullopt},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(assetFileName(c.asset), c.file) << c.asset;
    }
}

TEST(InstallNames, DeviceNamesAreRecognisedWhateverFollowsTheDot) {
    for (const char* name : {"CON", "con", "Con.txt", "PRN.tar.gz", "AUX", "NUL  .x", "COM0", "COM9", "LPT0",
                             "lpt5.log", "COM\xC2\xB2", "LPT\xC2\xB3.x", "conout$"}) {
        EXPECT_TRUE(isReservedDeviceName(name)) << name;
    }
    for (const char* name :
         {"CONX", "xCON", "COM", "COM10", "LPT", "LPTa", "CO N", "NULL", "COM\xC2\xB4", " CON", ""}) {
        EXPECT_FALSE(isReservedDeviceName(name)) << name;
    }
}

} // namespace
} // namespace corvandell
