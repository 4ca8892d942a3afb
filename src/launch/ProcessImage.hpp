// Whether a running program belongs to a game: its image lies inside the game's folder.
//
// Used to find the game again after a hand-off (a launcher that starts it outside the job,
// a store that restarts it): paths from the system and from stores differ in case and in
// the separator they use, and a sibling folder that only shares a prefix ("Game" and
// "Game Tools") is not inside.
#pragma once

#include <string_view>

namespace corvandell {

// Windows path rules: '\\' and '/' are the same, ASCII letters compare without case, and a
// folder given with or without a trailing separator means the same folder. An empty folder
// holds nothing.
bool isImageUnderFolder(std::wstring_view image, std::wstring_view folder);

} // namespace corvandell
