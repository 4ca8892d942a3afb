#include "auth/SignInSteps.hpp"

#include "auth/ChallengePayload.hpp"

#include <exception>
#include <stdexcept>

namespace corvandell {
namespace {

AuthAttempt attemptOf(AttemptKind kind, const std::function<AuthTokens()>& exchange) {
    AuthAttempt attempt;
    attempt.kind = kind;
    try {
        attempt.tokens = exchange();
        if (attempt.tokens.accessToken.empty()) {
            throw std::runtime_error("The server returned no tokens.");
        }
        attempt.succeeded = true;
    } catch (const std::exception& error) {
        attempt.tokens = {};
        attempt.errorText = error.what();
    }
    return attempt;
}

} // namespace

AuthAttempt restoreSession(IApiClient& service, const std::string& refreshToken) {
    return attemptOf(AttemptKind::SessionRestore, [&] { return service.refreshTokens(refreshToken); });
}

AuthAttempt signInWithKey(IApiClient& service, const ChallengeSigner& sign, const std::string& publicKeyText,
                          AttemptKind kind) {
    const std::string keyType(kKeyType);
    return attemptOf(kind, [&] {
        const KeyChallenge challenge = service.startKeyChallenge(keyType, publicKeyText);
        const std::string payload = buildChallengePayload(challenge.replyText);
        if (challenge.challengeId.empty() || payload.empty()) {
            throw std::runtime_error("Malformed challenge from the server.");
        }
        const std::string signature = sign(payload);
        if (signature.empty()) {
            throw std::runtime_error("Signing the challenge failed.");
        }
        return service.completeKeyChallenge(challenge.challengeId, signature, keyType, publicKeyText);
    });
}

AuthAttempt verifyLinkToken(IApiClient& service, const std::string& token) {
    return attemptOf(AttemptKind::PastedLink, [&] { return service.verifyKeyRegistration(token); });
}

RegistrationResult registerKeyByEmail(IApiClient& service, const std::string& email,
                                      const std::string& publicKeyText) {
    RegistrationResult result;
    try {
        result.registration = service.registerKey(email, std::string(kKeyType), publicKeyText);
        result.succeeded = true;
    } catch (const std::exception& error) {
        result.errorText = error.what();
    }
    return result;
}

CurrentUserResult fetchCurrentUser(IApiClient& service) {
    CurrentUserResult result;
    try {
        result.me = service.getMe();
        result.succeeded = true;
    } catch (const std::exception& error) {
        result.errorText = error.what();
    }
    return result;
}

} // namespace corvandell
