#include "webgames/AddGameForm.hpp"

#include "api/JsonText.hpp"
#include "base/AsciiText.hpp"
#include "webgames/RepositoryAddress.hpp"

namespace corvandell {
namespace {

constexpr std::string_view kConflictPrefix = "Corvandell API HTTP 409: ";

std::string trimmed(std::string_view text) {
    return std::string(trimAsciiBlanks(text));
}

} // namespace

AddGameCheck checkAddGame(const AddGameInput& input, std::string_view linkedLogin,
                          const RepositoryHost& host) {
    AddGameSubmission submission{trimmed(input.address),    {},   {}, trimmed(input.displayName),
                                 trimmed(input.launchFile), false};
    const std::optional<RepositoryAddress> repository = readRepositoryAddress(submission.address, host);
    const std::optional<RepositoryAddress> address =
        repository ? repository : readPagesAddress(submission.address, host);
    if (!address) {
        return {std::nullopt, notAnAddressText(host)};
    }
    submission.owner = address->owner;
    submission.repo = address->repo;
    submission.isOwner = !linkedLogin.empty() && equalsIgnoringAsciiCase(linkedLogin, address->owner);
    if (repository && !submission.isOwner) {
        if (submission.displayName.empty() || submission.launchFile.empty()) {
            return {std::nullopt,
                    "Enter a display name and the launch .html file (you don't own this repo)."};
        }
        if (!isValidLaunchFile(submission.launchFile)) {
            return {std::nullopt, "The launch file must be a repo-relative .html file."};
        }
    }
    return {std::move(submission), {}};
}

std::string linkedLoginText(std::string_view linkedLogin) {
    if (linkedLogin.empty()) {
        return {};
    }
    return "Linked as " + std::string(linkedLogin) +
           ". If you own the repo, name and launch come from its corvandell.txt - leave the fields blank.";
}

std::string launchFileLabel(const RepositoryHost& host) {
    return "Launch file - repo-relative .html (not needed for hosted *." + host.pagesDomain + " games)";
}

std::string notAnAddressText(const RepositoryHost& host) {
    return "That doesn't look like a " + host.domain() + " repository or a *." + host.pagesDomain +
           " Pages URL.";
}

std::optional<AlreadyShared> readAlreadyShared(std::string_view errorText) {
    if (!errorText.starts_with(kConflictPrefix)) {
        return std::nullopt;
    }
    const std::string body(errorText.substr(kConflictPrefix.size()));
    if (readString(body, "error") != "already_shared") {
        return std::nullopt;
    }
    AlreadyShared shared{readString(body, "submittedByUsername"), readString(body, "gameId")};
    if (shared.gameId.empty()) {
        shared.gameId = readString(body, "id");
    }
    if (shared.gameId.empty()) {
        return std::nullopt; // nothing Take Ownership could claim
    }
    return shared;
}

std::string alreadySharedText(const AlreadyShared& shared, const AddGameSubmission& submission) {
    std::string text = "Already shared by " + shared.sharedBy;
    if (submission.isOwner) {
        return text;
    }
    return text + "\r\nIf '" + submission.owner + "' is your account, " +
           "Link GitHub in Options > Profile, then" +
           " press Take Ownership (the server verifies you own the repo). Add Game again shares your own "
           "copy.";
}

} // namespace corvandell
