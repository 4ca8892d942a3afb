// The service calls behind the playtime panel and the Rating column, and the panel's text.
// Each job function never throws: a failure becomes the result's error text.
#pragma once

#include "api/IApiClient.hpp"
#include "app/LibraryItem.hpp"

#include <string>
#include <vector>

namespace corvandell {

inline constexpr int kFriendsShown = 5;
inline constexpr int kFeedEntriesShown = 8;

// The user's time, the friends who played most and the friends' recent activity. Games of
// other stores and browser games are asked by their provider and id; the service keeps
// their time under the row's key.
PlaytimeResult gatherPlaytime(IApiClient& api, const LibraryItem& row) noexcept;

// One request for the ratings of all the rows.
RatingsResult gatherRatings(IApiClient& api, const std::vector<std::string>& keys) noexcept;
// The user's own rating; the answer is the game's new summary.
RatingsResult sendRating(IApiClient& api, const std::string& key, int stars) noexcept;

// "2 h 05 min", "45 min", "less than a minute".
std::string durationText(int totalSeconds);
// The panel's text for an answer (or "Playtime unavailable: " and why).
std::string playtimeText(const PlaytimeResult& result);

} // namespace corvandell
