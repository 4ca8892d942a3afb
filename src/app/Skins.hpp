// Skins: named palettes of eleven colours, three built in and more from skins/*.json.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell {

struct Rgb {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    friend bool operator==(const Rgb&, const Rgb&) = default;
};

struct Skin {
    std::string id;
    std::string name;
    Rgb windowBackground;
    Rgb controlBackground;
    Rgb controlText;
    Rgb mutedText;
    Rgb buttonBackground;
    Rgb buttonHover;
    Rgb buttonText;
    Rgb accent;
    Rgb accentText;
    Rgb selection;
    Rgb border;
    friend bool operator==(const Skin&, const Skin&) = default;
};

// "#rrggbb" (either letter case); anything else gives the default.
Rgb parseColour(std::string_view text, Rgb defaultColour);

// Dark, Light, Slate Blue.
std::vector<Skin> builtInSkins();

// The skin file's keys over `base`: a file may name only the colours it changes.
Skin parseSkin(const std::string& text, const Skin& base);

// Built-ins, then every *.json directly in the data folder's skins folder; a file whose id
// is already listed replaces that skin in place. Folder walk errors throw filesystem_error.
std::vector<Skin> loadSkins(const std::filesystem::path& dataFolder);

// First exact, case-sensitive id match.
std::optional<Skin> findSkin(const std::vector<Skin>& skins, std::string_view id);

// findSkin, falling back to the list's "dark" and then to the built-in dark palette.
Skin chooseSkin(const std::vector<Skin>& skins, std::string_view id);

// The process-wide theme every window paints with. Set on the UI thread only.
const Skin& currentTheme();
void applyTheme(const Skin& skin);

} // namespace corvandell
