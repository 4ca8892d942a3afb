// Whether a folder entry is a link a walk or a delete must not go through.
//
// Junctions, directory symbolic links, mount points and cloud placeholders all carry a
// reparse point on Windows, and the mingw runtime's std::filesystem reports only symbolic
// links as links: a junction looks like a plain folder, so a recursive walk descends into
// it (without end when it points at its own parent) and remove_all deletes through it.
// Every walk and every delete asks this first. Platform halves in posix/ and win/.
#pragma once

#include <filesystem>

namespace corvandell {

// A symbolic link, junction or any other reparse point. When the entry's attributes cannot
// be read it counts as one: nothing may enter what it cannot vouch for.
bool isLinkOrReparsePoint(const std::filesystem::directory_entry& entry);

} // namespace corvandell
