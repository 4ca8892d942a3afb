// Skins: colour parsing, the built-in table, skin files from a real skins folder, and the
// choice with its fallbacks.
#include "app/Skins.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace corvandell {
namespace {

namespace fs = std::filesystem;

constexpr Rgb kRed{0xff, 0x00, 0x00};

Skin withAccent(Skin skin, Rgb accent) {
    skin.accent = accent;
    return skin;
}

std::vector<Skin> skinsFrom(const test::TempFolder& data) {
    return loadSkins(data.path());
}

TEST(Skins, ParseColourAcceptsOnlyAHashAndSixHexDigits) {
    constexpr Rgb kDefault{1, 2, 3};
    struct Case {
        std::string text;
        Rgb expected;
    };
    const std::vector<Case> cases = {
        {"#1A9FFF", {0x1a, 0x9f, 0xff}},
        {"#1a9fff", {0x1a, 0x9f, 0xff}},
        {"#aBcDeF", {0xab, 0xcd, 0xef}},
        {"1a9fff", kDefault},
        {"#1a9ff", kDefault},
        {"#1a9fffa", kDefault},
        {"#1g9fff", kDefault},
        {"", kDefault},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(parseColour(c.text, kDefault), c.expected) << c.text;
    }
}

TEST(Skins, BuiltInsComeInOrderWithEveryColourParsed) {
    const auto skins = builtInSkins();
    ASSERT_EQ(skins.size(), 3u);
    EXPECT_EQ(skins[0].id + "/" + skins[0].name, "dark/Dark Mode");
    EXPECT_EQ(skins[1].id + "/" + skins[1].name, "light/Light");
    EXPECT_EQ(skins[2].id + "/" + skins[2].name, "slate/Slate Blue");
    // No built-in colour is black, so black means a colour text failed to parse.
    for (const Skin& skin : skins) {
        for (const Rgb& colour : {skin.windowBackground, skin.controlBackground, skin.controlText,
                                  skin.mutedText, skin.buttonBackground, skin.buttonHover, skin.buttonText,
                                  skin.accent, skin.accentText, skin.selection, skin.border}) {
            EXPECT_NE(colour, Rgb{}) << skin.id;
        }
    }
    EXPECT_EQ(skins[0].windowBackground, (Rgb{0x17, 0x1a, 0x21}));
    EXPECT_EQ(skins[1].accent, (Rgb{0x1a, 0x73, 0xe8}));
    EXPECT_EQ(skins[2].border, (Rgb{0x3a, 0x4a, 0x63}));
}

TEST(Skins, SkinFilesNameOnlyTheColoursTheyChange) {
    const test::TempFolder data;
    const auto builtIns = builtInSkins();
    data.writeFile("skins/accent.json", R"({"id":"dark","accent":"#ff0000"})");
    data.writeFile("skins/light.json", R"({"id":"light","border":"#FF0000","accent":"bogus"})");
    data.writeFile("skins/neon.json", R"({ "id": "neon", "name": "Neon", "accent": "#ff0000" })");

    Skin light = builtIns[1];
    light.border = kRed;
    Skin neon = withAccent(builtIns[0], kRed);
    neon.id = "neon";
    neon.name = "Neon";
    EXPECT_EQ(skinsFrom(data), (std::vector<Skin>{withAccent(builtIns[0], kRed), light, builtIns[2], neon}));
}

TEST(Skins, OnlyJsonFilesDirectlyInTheSkinsFolderAreSkins) {
    const test::TempFolder data;
    const std::string neon = R"({"id":"neon","accent":"#ff0000"})";
    data.writeFile("skins/theme.json.bak", neon);
    data.writeFile("skins/theme.txt", neon);
    data.writeFile("skins/sub/deep.json", neon);
    fs::create_directories(data.path() / "skins" / "folder.json");
    EXPECT_EQ(skinsFrom(data), builtInSkins());
}

TEST(Skins, MissingSkinsFolderGivesTheBuiltInsAndAWalkErrorPropagates) {
    const test::TempFolder data;
    EXPECT_EQ(skinsFrom(data), builtInSkins());
    data.writeFile("skins", "not a folder");
    EXPECT_THROW(skinsFrom(data), fs::filesystem_error);
}

TEST(Skins, ChooseSkinFallsBackToTheListsDarkThenTheBuiltInDark) {
    const auto builtIns = builtInSkins();
    const Skin redDark = withAccent(builtIns[0], kRed);
    const std::vector<Skin> withRedDark = {redDark, builtIns[1]};
    EXPECT_EQ(chooseSkin(withRedDark, "light"), builtIns[1]);
    EXPECT_EQ(chooseSkin(withRedDark, "Light"), redDark);
    EXPECT_EQ(chooseSkin({builtIns[2]}, "missing"), builtIns[0]);
    EXPECT_EQ(findSkin(withRedDark, "DARK"), std::nullopt);
    EXPECT_EQ(findSkin({builtIns[1], withAccent(builtIns[1], kRed)}, "light"), builtIns[1]);
}

} // namespace
} // namespace corvandell
