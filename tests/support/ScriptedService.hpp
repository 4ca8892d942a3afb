// A service client that answers from replies written by the test, below the real request
// builders and reply readers: the paths asked and the JSON read are the client's own. A
// request the test gave no reply for fails as the service would, with a 404.
#pragma once

#include "api/ApiClient.hpp"

#include <chrono>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace corvandell::test {

class ScriptedService final : public ApiClient {
public:
    // `request` is "METHOD path", e.g. "GET /api/v1/me/entitlements".
    void answer(const std::string& request, std::string replyBody) {
        const std::lock_guard lock(mutex_);
        replies_[request] = std::move(replyBody);
    }
    void fail(const std::string& request, std::string errorText) {
        const std::lock_guard lock(mutex_);
        failures_[request] = std::move(errorText);
    }
    void clearFailure(const std::string& request) {
        const std::lock_guard lock(mutex_);
        failures_.erase(request);
    }
    std::vector<std::string> requests() const {
        const std::lock_guard lock(mutex_);
        return requests_;
    }

protected:
    std::string request(const std::string& method, const std::string& path,
                        const std::string& body) override {
        const std::lock_guard lock(mutex_);
        const std::string asked = method + " " + path;
        requests_.push_back(body.empty() ? asked : asked + " " + body);
        if (const auto failure = failures_.find(asked); failure != failures_.end()) {
            throw std::runtime_error(failure->second);
        }
        if (const auto reply = replies_.find(asked); reply != replies_.end()) {
            return reply->second;
        }
        throw std::runtime_error("Corvandell API HTTP 404: {\"error\":\"not_found\"}");
    }
    std::string requestRedirectLocation(const std::string& path) override {
        throw std::runtime_error("no redirect scripted for " + path);
    }

private:
    mutable std::mutex mutex_;
    std::map<std::string, std::string> replies_;
    std::map<std::string, std::string> failures_;
    std::vector<std::string> requests_;
};

} // namespace corvandell::test
