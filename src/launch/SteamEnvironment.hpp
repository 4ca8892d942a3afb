// The environment a Steam game is started with when the client starts its executable
// itself instead of asking Steam to.
//
// Steamworks games look for the app id in the environment before they talk to a running
// Steam client; without it many of them restart themselves through Steam, which the client
// could then no longer follow. The overlay variable keeps Steam's own overlay from drawing
// over the client's.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvandell {

// The "NAME=value" entries of an environment block (each ended by a NUL, the block by one
// more), in order. A block without its final NUL ends at its last complete entry.
std::vector<std::wstring> splitEnvironmentBlock(std::wstring_view block);

// Every entry, in order, then SteamAppId, SteamGameId and SteamNoOverlayUIDrawing=1, each
// ended by a NUL, and the final NUL: the block CreateProcessW takes with
// CREATE_UNICODE_ENVIRONMENT. Entries are copied as they are, even ones that already name
// a Steam variable: the added ones come last, so a reader taking the last match sees ours.
std::wstring steamEnvironmentBlock(const std::vector<std::wstring>& entries, std::wstring_view appId);

} // namespace corvandell
