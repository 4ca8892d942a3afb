#include "webgames/RepositoryAddress.hpp"

#include "base/AsciiText.hpp"

#include <algorithm>

namespace corvandell {

namespace {

bool isAsciiLetterOrDigit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

std::string_view withoutScheme(std::string_view text) {
    for (const std::string_view scheme : {std::string_view("https://"), std::string_view("http://")}) {
        if (text.starts_with(scheme)) {
            return text.substr(scheme.size());
        }
    }
    return text;
}

bool hasBlank(std::string_view text) {
    return text.find_first_of(" \t") != std::string_view::npos;
}

// True when some "/"-separated segment is "." or "..".
bool hasDotSegment(std::string_view path) {
    while (true) {
        const auto end = path.find('/');
        const std::string_view segment = path.substr(0, end);
        if (segment == "." || segment == "..") {
            return true;
        }
        if (end == std::string_view::npos) {
            return false;
        }
        path.remove_prefix(end + 1);
    }
}

bool isPagesOwner(std::string_view owner) {
    return !owner.empty() && owner.front() != '-' && owner.back() != '-' &&
           std::all_of(owner.begin(), owner.end(),
                       [](char c) { return isAsciiLetterOrDigit(c) || c == '-'; });
}

bool isPagesRepo(std::string_view repo) {
    return std::all_of(repo.begin(), repo.end(),
                       [](char c) { return isAsciiLetterOrDigit(c) || c == '-' || c == '.' || c == '_'; });
}

} // namespace

std::optional<RepositoryAddress> readRepositoryAddress(std::string_view text, const RepositoryHost& host) {
    text = withoutScheme(trimAsciiBlanks(text));
    if (text.starts_with("www.")) {
        text.remove_prefix(4);
    }
    const std::string prefix = host.domain() + "/";
    if (!startsWithIgnoringAsciiCase(text, prefix)) {
        return std::nullopt;
    }
    text.remove_prefix(prefix.size());
    const auto ownerEnd = text.find('/');
    if (ownerEnd == std::string_view::npos || ownerEnd == 0) {
        return std::nullopt;
    }
    std::string_view repo = text.substr(ownerEnd + 1);
    repo = repo.substr(0, repo.find('/'));
    if (repo.ends_with(".git")) {
        repo.remove_suffix(4);
    }
    RepositoryAddress address{std::string(text.substr(0, ownerEnd)), std::string(repo)};
    if (address.repo.empty() || hasBlank(address.owner) || hasBlank(address.repo)) {
        return std::nullopt;
    }
    return address;
}

std::optional<RepositoryAddress> readPagesAddress(std::string_view text, const RepositoryHost& host) {
    text = withoutScheme(trimAsciiBlanks(text));
    const auto hostEnd = std::min(text.find_first_of("/?#"), text.size());
    const std::string siteHost = lowerAscii(std::string(text.substr(0, hostEnd)));
    const std::string suffix = "." + lowerAscii(host.pagesDomain);
    if (!siteHost.ends_with(suffix)) {
        return std::nullopt;
    }
    RepositoryAddress address{siteHost.substr(0, siteHost.size() - suffix.size()), {}};
    if (!isPagesOwner(address.owner)) {
        return std::nullopt;
    }
    std::string_view path = text.substr(hostEnd);
    path = path.substr(0, path.find_first_of("?#"));
    if (hasDotSegment(path)) {
        return std::nullopt;
    }
    path = path.substr(std::min(path.find_first_not_of('/'), path.size()));
    const std::string_view repo = path.substr(0, path.find('/'));
    if (!isPagesRepo(repo)) {
        return std::nullopt;
    }
    address.repo = std::string(repo);
    return address;
}

bool isValidLaunchFile(std::string_view text) {
    std::string path(trimAsciiBlanks(text));
    if (path.empty() || std::any_of(path.begin(), path.end(), [](char c) {
            return static_cast<unsigned char>(c) < 0x20 || c == 0x7f || c == '"';
        })) {
        return false;
    }
    std::replace(path.begin(), path.end(), '\\', '/');
    if (path.front() == '/' || (path.size() > 1 && path[1] == ':') || hasDotSegment(path)) {
        return false;
    }
    return endsWithIgnoringAsciiCase(path, ".html") || endsWithIgnoringAsciiCase(path, ".htm");
}

} // namespace corvandell
