// The platform's links, seen without following them.
//
// Removing a folder tree must never reach through a link into what it points to. Windows
// has more kinds of link than symbolic links (junctions, mount points, other reparse
// points), and the mingw runtime's std::filesystem reports a junction as a plain folder,
// so the check asks the platform directly.
#pragma once

#include <filesystem>

namespace corvandell {

// True when `path` itself is a link: a symbolic link on POSIX, any reparse point on
// Windows. False when it is not, or does not exist.
bool isLinkOrReparsePoint(const std::filesystem::path& path);

// Removes the link at `path` itself, never what it points to. False on failure.
bool removeLinkItself(const std::filesystem::path& path);

} // namespace corvandell
