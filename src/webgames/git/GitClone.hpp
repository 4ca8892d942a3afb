// The shallow clone flow over an abstract transport, so it runs the same natively (on
// recorded or generated replies) and on Windows (over WinHTTP).
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace corvandell::git {

class GitTransport {
public:
    virtual ~GitTransport() = default;
    // One HTTP exchange: GET when `body` is empty, POST otherwise. Returns the body of a
    // 2xx reply; throws std::runtime_error with the transport's fixed texts otherwise.
    virtual std::string request(const std::wstring& path, const std::string& body,
                                const std::optional<std::wstring>& contentType,
                                const std::optional<std::wstring>& accept) = 0;
    // The same exchange with the body handed to `receive` piece by piece as it arrives, so
    // a large reply need not be held; by default the whole body as one piece.
    virtual void request_streamed(const std::wstring& path, const std::string& body,
                                  const std::optional<std::wstring>& contentType,
                                  const std::optional<std::wstring>& accept,
                                  const std::function<void(std::string_view)>& receive) {
        receive(request(path, body, contentType, accept));
    }
};

using CloneProgress = std::function<void(const std::wstring&)>;

// Fetches the tip of the default branch of owner/repo and writes its files into
// `destination`, which is emptied first. The pack is received into a file beside it,
// `destination` + "~pack" (a name no repository can have), removed when the clone ends. Throws
// std::runtime_error on any failure; a pack or tree over the byte limits, or running out of memory, is
// "repository too large". Every refusal comes before the old files are removed; after that only the file
// system can fail.
void shallow_clone(GitTransport& transport, const std::string& owner, const std::string& repo,
                   const std::filesystem::path& destination, const CloneProgress& progress);

} // namespace corvandell::git
