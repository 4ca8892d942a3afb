// The service client over WinHTTP: one session, one connection and one request per call,
// no retry and no reuse, so nothing (cookies, credentials, a stale connection) carries from
// one call to the next. It only points at the settings, reading the base address and the
// token at the moment of each call, so it is cheap to build wherever a call is made.
#pragma once

#include <string>

#include "api/ApiClient.hpp"
#include "base/Settings.hpp"

namespace corvandell::win {

class WinHttpApiClient : public ApiClient {
public:
    explicit WinHttpApiClient(const Settings* settings) : settings_(settings) {}

protected:
    std::string request(const std::string& method, const std::string& path, const std::string& body) override;
    std::string requestRedirectLocation(const std::string& path) override;

private:
    const Settings* settings_;
};

} // namespace corvandell::win
