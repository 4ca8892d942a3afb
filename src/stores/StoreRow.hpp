// The fixed table of stores besides Steam, and the one builder every store's rows go
// through, so ids, texts and the executable fallback are the same for all of them.
#pragma once

#include "stores/DetectedGame.hpp"

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

namespace corvandell {

struct StoreProvider {
    std::string_view key;  // the id prefix of its rows
    std::string_view name; // shown to the user
};

inline constexpr std::array<StoreProvider, 10> storeProviders{{
    {"epic", "Epic Games"},
    {"gog", "GOG Galaxy"},
    {"xbox", "Xbox"},
    {"ea", "EA App"},
    {"ubisoft", "Ubisoft Connect"},
    {"battlenet", "Battle.net"},
    {"rockstar", "Rockstar Games"},
    {"riot", "Riot Games"},
    {"itch", "itch.io"},
    {"amazon", "Amazon Games"},
}};

// The display name of a store key; "" for a key not in the table.
std::string_view storeDisplayName(std::string_view key);

// A row of the store `key`. An empty `executable` is filled by chooseGameExecutable with
// the title, so a store that names no executable still gets one when the folder has it.
DetectedGame makeStoreRow(std::string_view key, const std::string& storeId, const std::string& title,
                          const std::filesystem::path& installFolder, const std::filesystem::path& executable,
                          const std::string& launchAddress);

// The five named entities and numeric character references (&#8482; &#x2122;) become
// UTF-8; anything else, including a malformed reference, stays as it is.
std::string decodeXmlEntities(std::string_view text);

} // namespace corvandell
