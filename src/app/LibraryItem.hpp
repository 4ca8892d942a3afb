// One row of the library list and the refresh job's result.
//
// The rows are merged from the service catalogue, the stores and the shared browser
// games; this record holds what the list and the window's commands look at.
#pragma once

#include <string>
#include <vector>

namespace corvandell {

struct LibraryItem {
    std::string key;
    std::string name;
    std::string description;
    std::string category;
    std::string platform;
    bool isBrowserGame = false;
};

struct LibraryResult {
    bool succeeded = false;
    std::vector<LibraryItem> rows;
    std::string errorText; // shown as the status line when the refresh failed
};

} // namespace corvandell
