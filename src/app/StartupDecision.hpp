// Whether start-up shows the sign-in window before the library.
#pragma once

#include "app/SettingsFile.hpp"

namespace corvandell {

// No bearer token means not signed in. A stored refresh token means the session should
// be renewed first, even when a bearer token is present: only a bearer token without a
// refresh token goes straight to the library.
inline bool needsSignIn(const Settings& settings) {
    return settings.bearerToken.empty() || !settings.refreshToken.empty();
}

} // namespace corvandell
