// Reading the root tree line of a commit and the entries of a tree object.
//
// A tree is "<octal mode> <name>\0<20 raw bytes>" repeated. The reader is lenient on
// purpose: mode digits are not validated and a truncated tree yields what was complete,
// because the checkout decides per entry what it is willing to write.
#include "webgames/git/GitTree.hpp"

#include "webgames/git/Sha1.hpp"

namespace corvandell::git {

namespace {

constexpr std::string_view kTreeLine = "tree ";
constexpr std::size_t kObjectNameDigits = 40;
constexpr std::size_t kRawNameBytes = 20;

std::uint32_t mode_of(std::string_view digits) {
    std::uint32_t mode = 0;
    for (const char digit : digits) {
        mode = mode * 8 + static_cast<std::uint32_t>(static_cast<unsigned char>(digit) - '0');
    }
    return mode;
}

} // namespace

std::string root_tree_of(std::string_view commitText) {
    if (commitText.size() < kTreeLine.size() + kObjectNameDigits ||
        commitText.substr(0, kTreeLine.size()) != kTreeLine) {
        return {};
    }
    return std::string(commitText.substr(kTreeLine.size(), kObjectNameDigits));
}

std::vector<TreeEntry> read_tree(std::string_view treeData) {
    std::vector<TreeEntry> entries;
    std::size_t position = 0;
    while (position < treeData.size()) {
        const std::size_t space = treeData.find(' ', position);
        if (space == std::string_view::npos) {
            break;
        }
        const std::size_t nul = treeData.find('\0', space + 1);
        if (nul == std::string_view::npos || treeData.size() - (nul + 1) < kRawNameBytes) {
            break;
        }
        entries.push_back(TreeEntry{mode_of(treeData.substr(position, space - position)),
                                    std::string(treeData.substr(space + 1, nul - space - 1)),
                                    hex_of(treeData.substr(nul + 1, kRawNameBytes))});
        position = nul + 1 + kRawNameBytes;
    }
    return entries;
}

} // namespace corvandell::git
