// What the Add Game dialog says and sends: the checks made before anything reaches the
// service, the texts that name the repository host, and reading the service's answer that
// someone else already shared the repository. The dialog itself only shows these.
#pragma once

#include "webgames/RepositoryHost.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvandell {

// The three fields as typed, converted to UTF-8.
struct AddGameInput {
    std::string address;
    std::string displayName;
    std::string launchFile;
};

// A submission that passed the checks. An owner's name and launch file may be blank: the
// service then reads them from the repository's corvandell.txt.
struct AddGameSubmission {
    std::string address; // trimmed, as typed
    std::string owner;
    std::string repo;
    std::string displayName;
    std::string launchFile;
    bool isOwner = false; // the linked login is the owner, in any letter case
};

// Either a submission or the status text that says why there is none.
struct AddGameCheck {
    std::optional<AddGameSubmission> submission;
    std::string message;
};

AddGameCheck checkAddGame(const AddGameInput& input, std::string_view linkedLogin,
                          const RepositoryHost& host);

// The status line while editing: "" without a linked login.
std::string linkedLoginText(std::string_view linkedLogin);
std::string launchFileLabel(const RepositoryHost& host);
std::string notAnAddressText(const RepositoryHost& host);

// The service's answer that another user shared the repository first, read from the
// error a service call threw ("Corvandell API HTTP 409: " + the reply body).
struct AlreadyShared {
    std::string sharedBy;
    std::string gameId; // what Take Ownership claims
};
std::optional<AlreadyShared> readAlreadyShared(std::string_view errorText);

// "Already shared by ..." and, for a user who is not known to own the repository, how
// to prove that they do.
std::string alreadySharedText(const AlreadyShared& shared, const AddGameSubmission& submission);

} // namespace corvandell
