#include "launch/InstallNames.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace corvandell {
namespace {

TEST(InstallNames, TitleFolderNamesAreSafeWindowsFolderNames) {
    struct Case {
        std::string title;
        std::string fallback;
        std::string folder;
    };
    const Case cases[] = {
        {"What? <Now>/\\|*\"", "id", "What Now"},   // forbidden characters: blanks, runs of them one
        {"Tab\there\r\nnow", "id", "Tab here now"}, // control characters too
        {"End . . .", "id", "End"},                 // Windows drops trailing dots and blanks
        {"CON", "id", "CON_"},                      // device names
        {"Nul.txt", "id", "Nul_.txt"},              // also with a suffix
        {"aux .save", "id", "aux_ .save"},          // blanks before the dot are ignored by Windows
        {"COM\xC2\xB9", "id", "COM\xC2\xB9_"},      // superscript one
        {"COM10", "id", "COM10"},                   // not a device
        {"???", "2860dc9d-ab01", "2860dc9d-ab01"},  // nothing left: the fallback
        {"", "a/b?", "a b"},                        // which is repaired the same way
        {"", "../..", "Game"},                      // dots alone trim away
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
    const std::string longest(kMaxAssetComponentBytes, 'x');
    const std::pair<std::string, std::string> kept[] = {{"game.exe", "game.exe.bin"},
                                                        {"bin\\data\\pak0", "bin/data/pak0.bin"},
                                                        {"..hidden", "..hidden.bin"},
                                                        {longest, longest + ".bin"}};
    for (const auto& [asset, file] : kept) {
        EXPECT_EQ(assetFileName(asset), file) << asset;
    }
    // Anything that could leave the folder, name a device or a stream, or that Windows
    // would store under another name.
    const auto expectRefused = [](std::initializer_list<std::string> assets) {
        for (const std::string& asset : assets) {
            EXPECT_EQ(assetFileName(asset), std::nullopt) << asset;
        }
    };
    expectRefused({"", "..", "bin/../../evil", "bin/./x", "/etc/passwd", "\\\\server\\share\\x", "C:evil",
                   "file:stream", "bin//x", "bin/nul.dat", "trailing.", "what?", "line\nbreak"});
    expectRefused({std::string("nul\0byte", 8), longest + "x"});
}

TEST(InstallNames, DeviceNamesAreRecognisedWhateverFollowsTheDot) {
    for (const char* name : {"con", "PRN.tar.gz", "NUL  .x", "COM0", "LPT\xC2\xB3.x", "conout$"}) {
        EXPECT_TRUE(isReservedDeviceName(name)) << name;
    }
    for (const char* name : {"CONX", "COM", "COM10", "LPTa", "COM\xC2\xB4", " CON"}) {
        EXPECT_FALSE(isReservedDeviceName(name)) << name;
    }
}

} // namespace
} // namespace corvandell
