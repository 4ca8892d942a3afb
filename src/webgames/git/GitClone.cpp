// The depth-1 clone: advertisement, upload-pack, pack decoding, checkout.
//
// Everything that can fail on the network, in the pack or in the tree fails before the
// destination is touched, so a bad reply leaves the previous copy of the game in place:
// the checkout is planned in full (every object found, every limit met) first. Only then
// is the destination emptied; removal never follows a link out of it.
//
// The pack is indexed rather than decoded into a set of contents: the plan reads trees and
// the checkout reads each blob from the pack as it writes it, so beside the pack the clone
// holds the index, a few delta bases and one file at a time.
#include "webgames/git/GitClone.hpp"

#include "base/FolderRemoval.hpp"
#include "base/Utf8Path.hpp"
#include "webgames/git/Checkout.hpp"
#include "webgames/git/GitProtocol.hpp"
#include "webgames/git/GitTree.hpp"
#include "webgames/git/PackIndex.hpp"
#include "webgames/git/PackObjectReader.hpp"
#include "webgames/git/PackSource.hpp"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <system_error>

namespace corvandell::git {

namespace {

constexpr std::size_t kObjectNameDigits = 40;
constexpr char kTooLargeText[] = "repository too large";

void report(const CloneProgress& progress, const wchar_t* text) {
    if (progress) {
        progress(text);
    }
}

std::string lower_case(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

void empty_folder(const std::filesystem::path& destination) {
    if (!removeTreeWithoutFollowingLinks(destination)) {
        throw std::runtime_error("cannot empty " + pathToUtf8(destination));
    }
    std::error_code error;
    std::filesystem::create_directories(destination, error);
    if (!std::filesystem::is_directory(destination, error)) {
        throw std::runtime_error("cannot write " + pathToUtf8(destination));
    }
}

PackIndex index_reply(std::string_view pack, const ByteLimits& limits) {
    PackInMemory bytes(pack);
    PackError error = PackError::None;
    auto index = index_pack(bytes, &error, limits);
    if (!index) {
        throw std::runtime_error(error == PackError::TooLarge ? kTooLargeText
                                                              : "failed to decode the repository packfile");
    }
    return std::move(*index);
}

} // namespace

// Running out of memory anywhere in the clone, the reply included, is what the byte
// budget exists to prevent, so it is reported the same way.
void shallow_clone(GitTransport& transport, const std::string& owner, const std::string& repo,
                   const std::filesystem::path& destination, const CloneProgress& progress) try {
    const std::wstring path =
        L"/" + pathFromUtf8(owner).wstring() + L"/" + pathFromUtf8(repo).wstring() + L".git";
    report(progress, L"Contacting GitHub...");
    const std::string advertisement =
        transport.request(path + L"/info/refs?service=git-upload-pack", {}, std::nullopt,
                          L"application/x-git-upload-pack-advertisement");
    const std::string tip = tip_from_advertisement(advertisement);
    if (tip.size() != kObjectNameDigits) {
        throw std::runtime_error("could not read the repository's default branch");
    }
    report(progress, L"Downloading game files...");
    std::string response =
        transport.request(path + L"/git-upload-pack", upload_pack_request(tip),
                          L"application/x-git-upload-pack-request", L"application/x-git-upload-pack-result");
    report(progress, L"Unpacking...");
    const ByteLimits limits;
    const std::string pack = pack_from_response(std::move(response));
    const PackIndex index = index_reply(pack, limits);
    PackInMemory packBytes(pack);
    PackObjectReader objects(packBytes, index);
    const auto commitEntry = index.find(lower_case(tip));
    if (!commitEntry) {
        throw std::runtime_error("packfile did not contain the branch tip");
    }
    const auto commit = objects.content(*commitEntry);
    if (!commit) {
        throw std::runtime_error("failed to decode the repository packfile");
    }
    const std::string rootTree = root_tree_of(*commit);
    if (rootTree.size() != kObjectNameDigits) {
        throw std::runtime_error("could not find the root tree");
    }
    CheckoutLimits checkoutLimits;
    checkoutLimits.maxBytes = limits.totalFor(pack.size());
    const CheckoutPlan plan = plan_checkout(objects, rootTree, checkoutLimits);
    empty_folder(destination);
    write_checkout(plan, objects, destination);
    report(progress, L"Clone complete.");
} catch (const std::bad_alloc&) {
    throw std::runtime_error(kTooLargeText);
}

} // namespace corvandell::git
