// Removing a folder tree that may hold links to places outside it.
#pragma once

#include <filesystem>

namespace corvandell {

// Removes `path` and everything under it. A link met on the way, the path itself
// included, is removed as a link and never descended into, so nothing outside `path`
// is touched. True when `path` is gone (or never existed); false as soon as anything
// cannot be removed, leaving the rest as it is.
bool removeTreeWithoutFollowingLinks(const std::filesystem::path& path);

} // namespace corvandell
