// The network half of each way into an account: one producer per attempt, run on a
// background job. Each returns a record and never throws; a failure is a text for the
// sign-in window's status line.
#pragma once

#include "api/IApiClient.hpp"

#include <functional>
#include <string>
#include <string_view>

namespace corvandell {

enum class AttemptKind {
    SessionRestore = 1,
    KeyByUser = 2,
    KeyByPolling = 3,
    PastedLink = 4,
};

struct AuthAttempt {
    AttemptKind kind = AttemptKind::SessionRestore;
    bool succeeded = false; // the service returned an access token
    AuthTokens tokens;
    std::string errorText;
};

struct RegistrationResult {
    bool succeeded = false;
    RegStart registration;
    std::string errorText;
};

struct CurrentUserResult {
    bool succeeded = false;
    MeResult me;
    std::string errorText;
};

inline constexpr std::string_view kKeyType = "ECDSA-P256";

// The device key's signature (base64 DER) of a message; "" when signing failed.
using ChallengeSigner = std::function<std::string(const std::string& message)>;

AuthAttempt restoreSession(IApiClient& service, const std::string& refreshToken);

// Challenge, sign the canonical payload, complete.
AuthAttempt signInWithKey(IApiClient& service, const ChallengeSigner& sign, const std::string& publicKeyText,
                          AttemptKind kind);

AuthAttempt verifyLinkToken(IApiClient& service, const std::string& token);

RegistrationResult registerKeyByEmail(IApiClient& service, const std::string& email,
                                      const std::string& publicKeyText);

CurrentUserResult fetchCurrentUser(IApiClient& service);

} // namespace corvandell
