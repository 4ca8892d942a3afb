// Skins: colour parsing, skin files from a real skins folder, and the choice with its fallbacks.
#include "app/Skins.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace corvandell {
namespace {

constexpr Rgb kRed{0xff, 0x00, 0x00};

TEST(Skins, ParseColourAcceptsOnlyAHashAndSixHexDigits) {
    constexpr Rgb kDefault{1, 2, 3};
    const std::vector<std::pair<std::string, Rgb>> cases = {
        {"#1A9FFF", {0x1a, 0x9f, 0xff}},
        {"1a9fff", kDefault},
        {"#1a9ff", kDefault},
        {"#1g9fff", kDefault},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(parseColour(text, kDefault), expected) << text;
    }
}

TEST(Skins, SkinFilesNameOnlyTheColoursTheyChangeAndTheChoiceFallsBackToDark) {
    const test::TempFolder data;
    const auto builtIns = builtInSkins();
    EXPECT_EQ(loadSkins(data.path()), builtIns);
    data.writeFile("skins/accent.json", R"({"id":"dark","accent":"#ff0000"})");
    data.writeFile("skins/light.json", R"({"id":"light","border":"#FF0000","accent":"bogus"})");
    data.writeFile("skins/neon.json", R"({ "id": "neon", "name": "Neon", "accent": "#ff0000" })");
    // None of these is a skin file.
    const std::string other = R"({"id":"other","accent":"#ff0000"})";
    data.writeFile("skins/theme.json.bak", other);
    data.writeFile("skins/sub/deep.json", other);
    std::filesystem::create_directories(data.path() / "skins" / "folder.json");

    Skin dark = builtIns[0];
    dark.accent = kRed;
    Skin light = builtIns[1];
    light.border = kRed;
    Skin neon = dark;
    neon.id = "neon";
    neon.name = "Neon";
    const auto skins = loadSkins(data.path());
    EXPECT_EQ(skins, (std::vector<Skin>{dark, light, builtIns[2], neon}));
    EXPECT_EQ(chooseSkin(skins, "neon"), neon);
    EXPECT_EQ(chooseSkin(skins, "Neon"), dark); // the list's own dark
    EXPECT_EQ(chooseSkin({builtIns[2]}, "missing"), builtIns[0]);
}

} // namespace
} // namespace corvandell
