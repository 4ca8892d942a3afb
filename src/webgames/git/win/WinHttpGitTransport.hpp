// The smart-HTTP transport of the clone over WinHTTP: one session per request, TLS to the
// repository host unless the configured host address says plain http (loopback tests).
#pragma once

#include <string>

#include "base/win/WinHttpUrl.hpp"
#include "webgames/git/GitClone.hpp"

namespace corvandell::win {

// The repository host's base address, e.g. "https://github.com" (the build default) or
// "http://127.0.0.1:8080". Throws std::runtime_error("Invalid URL") when it cannot be split.
SplitUrl gitHostFromUrl(const std::string& baseUrl);

class WinHttpGitTransport final : public git::GitTransport {
public:
    explicit WinHttpGitTransport(SplitUrl host) : host_(std::move(host)) {}

    std::string request(const std::wstring& path, const std::string& body,
                        const std::optional<std::wstring>& contentType,
                        const std::optional<std::wstring>& accept) override;
    void request_streamed(const std::wstring& path, const std::string& body,
                          const std::optional<std::wstring>& contentType,
                          const std::optional<std::wstring>& accept,
                          const std::function<void(std::string_view)>& receive) override;

private:
    struct Exchange;
    Exchange send(const std::wstring& path, const std::string& body,
                  const std::optional<std::wstring>& contentType, const std::optional<std::wstring>& accept);

    SplitUrl host_;
};

} // namespace corvandell::win
