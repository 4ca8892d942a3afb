// The depth-1 clone: advertisement, upload-pack, pack decoding, checkout.
//
// Everything that can fail on the network, in the pack or in the tree fails before the
// destination is touched, so a bad reply leaves the previous copy of the game in place:
// the checkout is planned in full (every object found, every limit met) first. Only then
// is the destination emptied; removal never follows a link out of it.
//
// The pack is received into a file and indexed there rather than decoded into a set of
// contents: the plan reads trees and the checkout reads each blob from the file as it
// writes it, so the clone holds the index, a read buffer, a few delta bases and the files
// waiting for the writers, never the pack.
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
#include <fstream>
#include <new>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace corvandell::git {

namespace {

constexpr std::size_t kObjectNameDigits = 40;
constexpr char kTooLargeText[] = "repository too large";
// A browser game's whole pack is far below this; a server sending more is stopped before
// it fills the disk, as the pack once held in memory was stopped by running out of it.
constexpr std::uint64_t kMostPackBytes = std::uint64_t{2} << 30;

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

PackIndex index_reply(PackBytes& pack, const ByteLimits& limits) {
    PackError error = PackError::None;
    auto index = index_pack(pack, &error, limits);
    if (!index) {
        throw std::runtime_error(error == PackError::TooLarge ? kTooLargeText
                                                              : "failed to decode the repository packfile");
    }
    return std::move(*index);
}

// The pack as it arrives, written through a megabyte of buffer to a file that goes when
// the clone ends, whichever way it ends.
class PackSpool {
public:
    explicit PackSpool(std::filesystem::path path) : path_(std::move(path)), buffer_(kBufferBytes) {
        std::error_code ignored;
        std::filesystem::create_directories(path_.parent_path(), ignored);
        out_.rdbuf()->pubsetbuf(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
        out_.open(path_, std::ios::binary | std::ios::trunc);
        check();
    }
    ~PackSpool() {
        out_.close();
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    PackSpool(const PackSpool&) = delete;
    PackSpool& operator=(const PackSpool&) = delete;

    void write(std::string_view data) {
        out_.write(data.data(), static_cast<std::streamsize>(data.size()));
        check();
    }
    const std::filesystem::path& close() {
        out_.close();
        check();
        return path_;
    }

private:
    static constexpr std::size_t kBufferBytes = std::size_t{1} << 20;

    void check() const {
        if (!out_) {
            throw std::runtime_error("cannot write " + pathToUtf8(path_));
        }
    }

    std::filesystem::path path_;
    std::vector<char> buffer_;
    std::ofstream out_;
};

std::filesystem::path spool_path(const std::filesystem::path& destination) {
    std::filesystem::path path = destination;
    path += "~pack";
    return path;
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
    PackSpool spool(spool_path(destination));
    std::uint64_t received = 0;
    PackReplyReader reply([&spool, &received](std::string_view data) {
        received += data.size();
        if (received > kMostPackBytes) {
            throw std::runtime_error(kTooLargeText);
        }
        spool.write(data);
    });
    transport.request_streamed(
        path + L"/git-upload-pack", upload_pack_request(tip), L"application/x-git-upload-pack-request",
        L"application/x-git-upload-pack-result", [&reply](std::string_view piece) { reply.feed(piece); });
    report(progress, L"Unpacking...");
    const std::uint64_t packSize = reply.finish();
    PackFile pack(spool.close());
    if (pack.size() != packSize) {
        throw std::runtime_error("cannot read " + pathToUtf8(spool_path(destination)));
    }
    const ByteLimits limits;
    const PackIndex index = index_reply(pack, limits);
    PackObjectReader objects(pack, index);
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
    checkoutLimits.maxBytes = limits.totalFor(packSize);
    const CheckoutPlan plan = plan_checkout(objects, rootTree, checkoutLimits);
    empty_folder(destination);
    write_checkout(plan, objects, destination);
    report(progress, L"Clone complete.");
} catch (const std::bad_alloc&) {
    throw std::runtime_error(kTooLargeText);
}

} // namespace corvandell::git
