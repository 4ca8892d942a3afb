// A data folder's device key linked to an account of the service stand-in the way a user
// links it: registered under the account's email, then the mailed link opened.
#pragma once

#include <filesystem>
#include <string>

namespace corvandell::test {

// `prefix` with a random number, for a user name no other test run has taken.
std::string uniqueName(const std::string& prefix);

// The link of the last verification mail the stand-in wrote to `email`; "" when none came.
std::string mailedLink(const std::string& email);

// Links the folder's key (made when there is none) to the account of `email`, creating the
// account; false when any step failed.
bool linkDeviceKey(const std::filesystem::path& dataFolder, const std::string& email);

} // namespace corvandell::test
