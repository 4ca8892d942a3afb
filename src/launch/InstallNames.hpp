// Names the client gives to what it installs: a title's folder under the library folder,
// and the files the service's assets become inside it.
//
// Both come from the service, so neither is trusted. A title is only a display name: its
// folder name is repaired into something Windows accepts as one plain folder (forbidden
// characters become blanks, device names such as "CON" get a "_", trailing dots and blanks
// go, overlong names are cut). An asset name says where a file goes inside the folder, so a
// name that could land anywhere else, or that Windows would silently rewrite, is refused
// rather than repaired: repairing it would write a file the service never named.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace corvandell {

// The longest folder name made from a title, in characters (code points). Short enough to
// keep the games' own paths well inside the classic 260-character limit.
inline constexpr std::size_t kMaxTitleFolderChars = 64;

// The longest asset name component, in bytes, leaving room for ".bin" and the temporary
// suffix within Windows' 255-character component limit.
inline constexpr std::size_t kMaxAssetComponentBytes = 200;

// Whether `name` (one path component, UTF-8) is a device name Windows reserves whatever
// follows it after a dot: CON, PRN, AUX, NUL, CONIN$, CONOUT$, COM0-9, LPT0-9 and COM/LPT
// with a superscript digit. Case and trailing blanks before the dot are ignored.
bool isReservedDeviceName(std::string_view name);

// A safe folder name for a title (UTF-8 in, UTF-8 out). `fallback` is used when nothing of
// the title is left, and is made safe the same way; "Game" when that is empty too.
std::string titleFolderName(std::string_view title, std::string_view fallback = {});

// The relative path (components joined by '/') of an asset's file inside the title's
// folder: the asset name followed by ".bin". Either separator divides components. Empty
// when the name is refused: empty, absolute, a drive or stream (':'), "." or "..", an empty
// component, a reserved device name, a forbidden or control character, a component ending
// in a dot or blank, or a component over kMaxAssetComponentBytes.
std::optional<std::string> assetFileName(std::string_view assetName);

} // namespace corvandell
