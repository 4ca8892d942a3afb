// Which addresses a browser game's icon may be fetched from: the page's own
// <link rel="... icon ..." href="..."> elements in page order, then the site's favicon.ico.
//
// A page is untrusted text, so a reference is cut at its first "?" or "#", and one that
// climbs out with ".." is never used. SVG icons are recognised and left out: the window
// draws bitmaps only.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvandell {

// The hrefs of the page's icon links, as written.
std::vector<std::string> iconLinkReferences(std::string_view html);

// A reference made absolute against the page's address; empty when it is rejected.
std::string resolveIconReference(std::string_view reference, std::string_view pageAddress);

// Every address to try, best first, each once: the usable links, then "favicon.ico" at the
// root of the site (and, for a site under a path, beside the page).
std::vector<std::string> iconCandidates(std::string_view html, std::string_view pageAddress);

bool isSvgReference(std::string_view reference);

// The cache file for a row's icon: a name made of the row key's letters and digits, so any
// key gives a safe file name.
std::string iconCacheFileName(std::string_view rowKey);

} // namespace corvandell

namespace corvandell {

// For a game cloned to this machine: the icon files its launch page names, relative to the
// clone (with "/" between folders), then favicon.ico beside the page and at the clone's
// root. Links that leave the clone or point to the web are left out.
std::vector<std::string> localIconCandidates(std::string_view html, std::string_view launchPath);

} // namespace corvandell
