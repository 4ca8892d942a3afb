#include "app/LibraryActivity.hpp"

#include <cstdio>
#include <exception>

namespace corvandell {
namespace {

// Where the service keeps an outside game's time: its store and the store's own id.
struct ExternalGame {
    std::string provider;
    std::string externalId;
};

ExternalGame externalGameOf(const LibraryItem& row) {
    if (row.isSteamRow() && !row.isStoreRow() && row.key.starts_with("steam:")) {
        return {"steam", row.steamAppId};
    }
    if (row.isStoreRow() && row.key == row.store->providerKey + ":" + row.store->externalId) {
        return {row.store->providerKey, row.store->externalId};
    }
    if (row.isBrowserGame()) {
        return {"github", row.browserGame->id};
    }
    return {};
}

std::string errorOf(const std::exception& error) {
    return error.what();
}

std::string dateOf(const std::string& timestamp) {
    return timestamp.size() >= 10 ? timestamp.substr(0, 10) : timestamp;
}

std::string feedLine(const FeedEntry& entry) {
    if (entry.type == "rate") {
        return entry.username + " rated it " + std::to_string(entry.stars) +
               (entry.stars == 1 ? " star" : " stars") + " (" + dateOf(entry.timestamp) + ")";
    }
    if (entry.type == "playing") {
        return entry.username + " is playing now";
    }
    return entry.username + " played " + durationText(entry.minutes * 60) + " (" + dateOf(entry.timestamp) +
           ")";
}

} // namespace

PlaytimeResult gatherPlaytime(IApiClient& api, const LibraryItem& row) noexcept {
    PlaytimeResult result;
    try {
        result.key = row.key;
        const ExternalGame external = externalGameOf(row);
        if (external.provider.empty()) {
            result.mine = api.getPlaytime(row.key);
            result.friends = api.getFriendsPlaytime(row.key, kFriendsShown);
        } else {
            result.mine = api.getExternalPlaytime(external.provider, external.externalId);
            result.friends =
                api.getExternalFriendsPlaytime(external.provider, external.externalId, kFriendsShown);
        }
        if (result.friends.size() > static_cast<size_t>(kFriendsShown)) {
            result.friends.resize(kFriendsShown);
        }
        result.feed = api.getGameFeed(row.key, kFeedEntriesShown);
        result.succeeded = true;
    } catch (const std::exception& error) {
        result.succeeded = false;
        result.errorText = errorOf(error);
    } catch (...) {
        result.succeeded = false;
        result.errorText = "unexpected error";
    }
    return result;
}

RatingsResult gatherRatings(IApiClient& api, const std::vector<std::string>& keys) noexcept {
    RatingsResult result;
    try {
        result.ratings = api.queryRatings(keys);
        result.succeeded = true;
    } catch (const std::exception& error) {
        result.errorText = errorOf(error);
    } catch (...) {
        result.errorText = "unexpected error";
    }
    return result;
}

RatingsResult sendRating(IApiClient& api, const std::string& key, int stars) noexcept {
    RatingsResult result;
    try {
        RatingSummary summary = api.rateGame(key, stars);
        if (summary.gameKey.empty()) {
            summary.gameKey = key;
        }
        result.ratings.push_back(std::move(summary));
        result.succeeded = true;
    } catch (const std::exception& error) {
        result.errorText = errorOf(error);
    } catch (...) {
        result.errorText = "unexpected error";
    }
    return result;
}

std::string durationText(int totalSeconds) {
    if (totalSeconds < 60) {
        return "less than a minute";
    }
    const int minutes = totalSeconds / 60;
    if (minutes < 60) {
        return std::to_string(minutes) + " min";
    }
    char text[48] = {};
    std::snprintf(text, sizeof(text), "%d h %02d min", minutes / 60, minutes % 60);
    return text;
}

std::string playtimeText(const PlaytimeResult& result) {
    if (!result.succeeded) {
        return "Playtime unavailable: " + result.errorText;
    }
    const int mine = result.mine.totalSeconds > 0 ? result.mine.totalSeconds : result.mine.totalMinutes * 60;
    std::string text = "You have played: " + (mine > 0 ? durationText(mine) : std::string("not yet"));
    text += "\r\n\r\nFriends' playtime";
    if (result.friends.empty()) {
        text += "\r\n   None of your friends has played it yet.";
    }
    for (const FriendPlaytime& friendTime : result.friends) {
        const int seconds = friendTime.seconds > 0 ? friendTime.seconds : friendTime.minutes * 60;
        text += "\r\n   " + friendTime.username + " played " + durationText(seconds);
    }
    text += "\r\n\r\nRecent activity";
    if (result.feed.empty()) {
        text += "\r\n   Nothing yet.";
    }
    for (const FeedEntry& entry : result.feed) {
        text += "\r\n   " + feedLine(entry);
    }
    return text;
}

} // namespace corvandell
