// Skins: the three built-in palettes, skin files from the skins folder, and the theme.
//
// The built-ins are kept as the same "#rrggbb" texts a skin file holds and go through the
// same parseColour, so a palette can be copied between the table and a file unchanged.
// A skin file only names the colours it changes; the rest come from the built-in skin of
// the same id, or from Dark Mode for a new id.
#include "app/Skins.hpp"

#include "api/JsonText.hpp"
#include "app/DataPaths.hpp"
#include "base/BoundedFileRead.hpp"

#include <algorithm>
#include <array>

namespace corvandell {

namespace {

struct ColourField {
    std::string_view key;
    Rgb Skin::*member;
};

// In the order of the built-in table's columns.
constexpr std::array<ColourField, 11> kColourFields{{
    {"windowBackground", &Skin::windowBackground},
    {"controlBackground", &Skin::controlBackground},
    {"controlText", &Skin::controlText},
    {"mutedText", &Skin::mutedText},
    {"buttonBackground", &Skin::buttonBackground},
    {"buttonHover", &Skin::buttonHover},
    {"buttonText", &Skin::buttonText},
    {"accent", &Skin::accent},
    {"accentText", &Skin::accentText},
    {"selection", &Skin::selection},
    {"border", &Skin::border},
}};

using BuiltInRow = std::array<std::string_view, 2 + kColourFields.size()>;

// id, name, then the colours in kColourFields order. Dark comes first: it is the default.
constexpr std::array<BuiltInRow, 3> kBuiltInRows{{
    {"dark", "Dark Mode", "#171a21", "#1b2838", "#c6d4df", "#7d8b98", "#2a475e", "#37637f", "#ffffff",
     "#1a9fff", "#ffffff", "#2a4b6b", "#2f4a63"},
    {"light", "Light", "#f5f6f8", "#ffffff", "#1b2530", "#6a7480", "#e3e8ee", "#d3dae2", "#1b2530", "#1a73e8",
     "#ffffff", "#d6e4fb", "#cbd2da"},
    {"slate", "Slate Blue", "#1b2330", "#232d3d", "#d6e0ee", "#8592a6", "#2f3d52", "#3c4d66", "#eaf1fb",
     "#4c8dff", "#ffffff", "#33465f", "#3a4a63"},
}};

std::optional<std::uint8_t> hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return static_cast<std::uint8_t>(c - '0');
    }
    if (c >= 'a' && c <= 'f') {
        return static_cast<std::uint8_t>(c - 'a' + 10);
    }
    if (c >= 'A' && c <= 'F') {
        return static_cast<std::uint8_t>(c - 'A' + 10);
    }
    return std::nullopt;
}

std::optional<std::uint8_t> hexByte(std::string_view pair) {
    const auto high = hexValue(pair[0]);
    const auto low = hexValue(pair[1]);
    if (!high || !low) {
        return std::nullopt;
    }
    return static_cast<std::uint8_t>(*high << 4 | *low);
}

const Skin& builtInDark() {
    static const Skin dark = builtInSkins().front();
    return dark;
}

// The built-in skin a file's missing colours come from.
Skin baseFor(std::string_view id) {
    if (auto builtIn = findSkin(builtInSkins(), id)) {
        return *builtIn;
    }
    return builtInDark();
}

std::vector<std::filesystem::path> skinFiles(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file() && entry.path().extension() == ".json") {
            files.push_back(entry.path());
        }
    }
    // Directory order differs between file systems; the list and which of two files with
    // one id wins should not.
    std::sort(files.begin(), files.end());
    return files;
}

// Eleven colours and two names; anything bigger is not a skin.
constexpr std::size_t kMaxSkinFileBytes = 1024 * 1024;

Skin& themeStorage() {
    static Skin theme = builtInDark();
    return theme;
}

} // namespace

Rgb parseColour(std::string_view text, Rgb defaultColour) {
    if (text.size() != 7 || text[0] != '#') {
        return defaultColour;
    }
    const auto red = hexByte(text.substr(1, 2));
    const auto green = hexByte(text.substr(3, 2));
    const auto blue = hexByte(text.substr(5, 2));
    if (!red || !green || !blue) {
        return defaultColour;
    }
    return Rgb{*red, *green, *blue};
}

std::vector<Skin> builtInSkins() {
    std::vector<Skin> skins;
    skins.reserve(kBuiltInRows.size());
    for (const BuiltInRow& row : kBuiltInRows) {
        Skin skin;
        skin.id = row[0];
        skin.name = row[1];
        for (std::size_t i = 0; i < kColourFields.size(); ++i) {
            skin.*kColourFields[i].member = parseColour(row[i + 2], Rgb{});
        }
        skins.push_back(std::move(skin));
    }
    return skins;
}

Skin parseSkin(const std::string& text, const Skin& base) {
    Skin skin = base;
    // The id is the file's own: a file without one must not quietly take over its base.
    skin.id = readString(text, "id");
    if (text.find("\"name\"") != std::string::npos) {
        skin.name = readString(text, "name");
    }
    for (const ColourField& field : kColourFields) {
        skin.*field.member = parseColour(readString(text, field.key), base.*field.member);
    }
    return skin;
}

std::vector<Skin> loadSkins(const std::filesystem::path& dataFolder) {
    std::vector<Skin> skins = builtInSkins();
    const std::filesystem::path folder = skinsFolder(dataFolder);
    if (!std::filesystem::exists(folder)) {
        return skins;
    }
    for (const std::filesystem::path& file : skinFiles(folder)) {
        const FileRead read = readFileBounded(file, kMaxSkinFileBytes);
        if (read.status != FileReadStatus::Ok) {
            continue;
        }
        Skin skin = parseSkin(read.bytes, baseFor(readString(read.bytes, "id")));
        const auto sameId = std::find_if(skins.begin(), skins.end(),
                                         [&](const Skin& listed) { return listed.id == skin.id; });
        if (sameId != skins.end()) {
            *sameId = std::move(skin);
        } else {
            skins.push_back(std::move(skin));
        }
    }
    return skins;
}

std::optional<Skin> findSkin(const std::vector<Skin>& skins, std::string_view id) {
    const auto found =
        std::find_if(skins.begin(), skins.end(), [&](const Skin& skin) { return skin.id == id; });
    if (found == skins.end()) {
        return std::nullopt;
    }
    return *found;
}

Skin chooseSkin(const std::vector<Skin>& skins, std::string_view id) {
    if (auto chosen = findSkin(skins, id)) {
        return *chosen;
    }
    if (auto dark = findSkin(skins, "dark")) {
        return *dark;
    }
    return builtInDark();
}

const Skin& currentTheme() {
    return themeStorage();
}

void applyTheme(const Skin& skin) {
    themeStorage() = skin;
}

} // namespace corvandell
