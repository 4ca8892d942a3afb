// The depth-1 clone: advertisement, upload-pack, pack decoding, checkout.
//
// Everything that can fail on the network, in the pack or in the tree fails before the
// destination is touched, so a bad reply leaves the previous copy of the game in place:
// the checkout is planned in full (every object found, every limit met) first. Only then
// is the destination emptied; removal never follows a link out of it.
#include "webgames/git/GitClone.hpp"

#include "base/FolderRemoval.hpp"
#include "base/Utf8Path.hpp"
#include "webgames/git/Checkout.hpp"
#include "webgames/git/GitProtocol.hpp"
#include "webgames/git/GitTree.hpp"
#include "webgames/git/Packfile.hpp"
#include "webgames/git/Sha1.hpp"

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

struct DecodedPack {
    ObjectSet objects;
    std::uint64_t packBytes = 0;
};

// Takes the reply by value: the pack is gathered in its buffer, which the decoder releases
// as soon as every entry is inflated.
DecodedPack decode_reply(std::string response, const ByteLimits& limits) {
    std::string pack = pack_from_response(std::move(response));
    const std::uint64_t packBytes = pack.size();
    PackError error = PackError::None;
    auto objects = parse_packfile(std::move(pack), object_name, &error, limits);
    if (!objects) {
        throw std::runtime_error(error == PackError::TooLarge ? kTooLargeText
                                                              : "failed to decode the repository packfile");
    }
    return {std::move(*objects), packBytes};
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
    const DecodedPack decoded = decode_reply(std::move(response), limits);
    const ObjectSet& objects = decoded.objects;
    const auto commit = objects.find(lower_case(tip));
    if (commit == objects.end()) {
        throw std::runtime_error("packfile did not contain the branch tip");
    }
    const std::string rootTree = root_tree_of(commit->second.data);
    if (rootTree.size() != kObjectNameDigits) {
        throw std::runtime_error("could not find the root tree");
    }
    CheckoutLimits checkoutLimits;
    checkoutLimits.maxBytes = limits.totalFor(decoded.packBytes);
    const CheckoutPlan plan = plan_checkout(objects, rootTree, checkoutLimits);
    empty_folder(destination);
    write_checkout(plan, destination);
    report(progress, L"Clone complete.");
} catch (const std::bad_alloc&) {
    throw std::runtime_error(kTooLargeText);
}

} // namespace corvandell::git
