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

bool TreeEntryReader::next(TreeEntryView& entry) {
    if (position_ >= data_.size()) {
        return false;
    }
    const std::size_t space = data_.find(' ', position_);
    if (space == std::string_view::npos) {
        position_ = data_.size();
        return false;
    }
    const std::size_t nul = data_.find('\0', space + 1);
    if (nul == std::string_view::npos || data_.size() - (nul + 1) < kRawNameBytes) {
        position_ = data_.size();
        return false;
    }
    entry.mode = mode_of(data_.substr(position_, space - position_));
    entry.name = data_.substr(space + 1, nul - space - 1);
    entry.rawId = data_.substr(nul + 1, kRawNameBytes);
    position_ = nul + 1 + kRawNameBytes;
    return true;
}

std::vector<TreeEntry> read_tree(std::string_view treeData) {
    std::vector<TreeEntry> entries;
    TreeEntryReader reader(treeData);
    for (TreeEntryView entry; reader.next(entry);) {
        entries.push_back(TreeEntry{entry.mode, std::string(entry.name), hex_of(entry.rawId)});
    }
    return entries;
}

} // namespace corvandell::git
