#include "app/SiteIconLinks.hpp"

#include "base/AsciiText.hpp"

#include <algorithm>

namespace corvandell {
namespace {

size_t findIgnoringCase(std::string_view text, std::string_view wanted, size_t from) {
    if (from > text.size()) {
        return std::string_view::npos;
    }
    const auto equal = [](char a, char b) { return lowerAsciiChar(a) == lowerAsciiChar(b); };
    const auto found = std::search(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(),
                                   wanted.begin(), wanted.end(), equal);
    return found == text.end() ? std::string_view::npos : static_cast<size_t>(found - text.begin());
}

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f';
}

// The value of attribute `name` in one tag's text: quoted with either quote, or bare.
std::string attributeValue(std::string_view tag, std::string_view name) {
    size_t at = 0;
    while ((at = findIgnoringCase(tag, name, at)) != std::string_view::npos) {
        const bool isWordStart = at > 0 && isSpace(tag[at - 1]);
        size_t cursor = at + name.size();
        at = cursor;
        while (cursor < tag.size() && isSpace(tag[cursor])) {
            ++cursor;
        }
        if (!isWordStart || cursor >= tag.size() || tag[cursor] != '=') {
            continue;
        }
        ++cursor;
        while (cursor < tag.size() && isSpace(tag[cursor])) {
            ++cursor;
        }
        if (cursor >= tag.size()) {
            return {};
        }
        if (tag[cursor] == '"' || tag[cursor] == '\'') {
            const size_t end = tag.find(tag[cursor], cursor + 1);
            return std::string(
                tag.substr(cursor + 1, end == std::string_view::npos ? end : end - cursor - 1));
        }
        size_t end = cursor;
        while (end < tag.size() && !isSpace(tag[end]) && tag[end] != '>') {
            ++end;
        }
        return std::string(tag.substr(cursor, end - cursor));
    }
    return {};
}

bool relNamesIcon(const std::string& rel) {
    std::string_view words(rel);
    while (!words.empty()) {
        while (!words.empty() && isSpace(words.front())) {
            words.remove_prefix(1);
        }
        size_t end = 0;
        while (end < words.size() && !isSpace(words[end])) {
            ++end;
        }
        if (equalsIgnoringAsciiCase(words.substr(0, end), "icon")) {
            return true;
        }
        words.remove_prefix(end);
    }
    return false;
}

// "https://host:port" of an absolute address; empty when it has none.
std::string_view originOf(std::string_view address) {
    const size_t scheme = address.find("://");
    if (scheme == std::string_view::npos) {
        return {};
    }
    const size_t pathStart = address.find('/', scheme + 3);
    return address.substr(0, pathStart);
}

// The address up to and including the last "/" of its path.
std::string folderOf(std::string_view address) {
    const std::string_view origin = originOf(address);
    std::string_view path = address.substr(origin.size());
    path = path.substr(0, std::min(path.find('?'), path.find('#')));
    const size_t slash = path.rfind('/');
    return std::string(origin) +
           (slash == std::string_view::npos ? "/" : std::string(path.substr(0, slash + 1)));
}

} // namespace

std::vector<std::string> iconLinkReferences(std::string_view html) {
    std::vector<std::string> references;
    size_t at = 0;
    while ((at = findIgnoringCase(html, "<link", at)) != std::string_view::npos) {
        const size_t end = html.find('>', at);
        const std::string_view tag = html.substr(at, end == std::string_view::npos ? end : end - at);
        at += 5;
        if (tag.size() > 5 && !isSpace(tag[5])) {
            continue; // <linkage> and the like
        }
        if (!relNamesIcon(attributeValue(tag, "rel"))) {
            continue;
        }
        std::string href = attributeValue(tag, "href");
        if (!href.empty()) {
            references.push_back(std::move(href));
        }
    }
    return references;
}

bool isSvgReference(std::string_view reference) {
    reference = reference.substr(0, std::min(reference.find('?'), reference.find('#')));
    return endsWithIgnoringAsciiCase(reference, ".svg");
}

std::string resolveIconReference(std::string_view reference, std::string_view pageAddress) {
    reference = reference.substr(0, std::min(reference.find('?'), reference.find('#')));
    while (!reference.empty() && isSpace(reference.front())) {
        reference.remove_prefix(1);
    }
    while (!reference.empty() && isSpace(reference.back())) {
        reference.remove_suffix(1);
    }
    if (reference.empty() || reference.find("..") != std::string_view::npos) {
        return {};
    }
    if (reference.find("://") != std::string_view::npos) {
        const bool isWeb = startsWithIgnoringAsciiCase(reference, "https://") ||
                           startsWithIgnoringAsciiCase(reference, "http://");
        return isWeb ? std::string(reference) : std::string();
    }
    if (reference.starts_with("//")) {
        return {}; // another host, with whatever scheme the page had: not worth the guess
    }
    const std::string_view origin = originOf(pageAddress);
    if (origin.empty()) {
        return {};
    }
    if (reference.starts_with("/")) {
        return std::string(origin) + std::string(reference);
    }
    if (reference.starts_with("data:") || reference.starts_with("javascript:")) {
        return {};
    }
    return folderOf(pageAddress) + std::string(reference);
}

std::vector<std::string> iconCandidates(std::string_view html, std::string_view pageAddress) {
    std::vector<std::string> candidates;
    const auto add = [&candidates](std::string address) {
        if (!address.empty() &&
            std::find(candidates.begin(), candidates.end(), address) == candidates.end()) {
            candidates.push_back(std::move(address));
        }
    };
    for (const std::string& reference : iconLinkReferences(html)) {
        if (!isSvgReference(reference)) {
            add(resolveIconReference(reference, pageAddress));
        }
    }
    if (originOf(pageAddress).empty()) {
        return candidates;
    }
    // A project site lives under a path of its host: its own favicon sits beside the page.
    add(folderOf(pageAddress) + "favicon.ico");
    add(std::string(originOf(pageAddress)) + "/favicon.ico");
    return candidates;
}

std::string iconCacheFileName(std::string_view rowKey) {
    std::string name;
    for (const char c : rowKey) {
        const bool isSafe =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
        name += isSafe ? c : '_';
    }
    return name.substr(0, 120);
}

} // namespace corvandell

namespace corvandell {

std::vector<std::string> localIconCandidates(std::string_view html, std::string_view launchPath) {
    // The clone stands in for a site: resolve as on one, then take the path back off.
    constexpr std::string_view kOrigin = "https://clone.invalid";
    const std::string page = std::string(kOrigin) + "/" + std::string(launchPath);
    std::vector<std::string> candidates;
    for (const std::string& address : iconCandidates(html, page)) {
        if (address.starts_with(kOrigin) && address.size() > kOrigin.size() + 1) {
            candidates.push_back(address.substr(kOrigin.size() + 1));
        }
    }
    return candidates;
}

} // namespace corvandell
