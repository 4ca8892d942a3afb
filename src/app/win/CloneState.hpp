// What the main window keeps about the browser-game clones it started (one per game at a
// time), and the record a clone job posts: a progress text while it runs, then its end.
#pragma once

#include <set>
#include <string>

namespace corvandell::win {

struct CloneReport {
    std::string key;  // the row's key
    std::string name; // the game's name, for the status line
    bool isFinal = false;
    bool succeeded = false;
    std::wstring progress; // while running: the clone's own text
    std::string errorText; // at the end: "Clone failed: " + why
};

struct CloneState {
    std::set<std::string> running; // row keys
};

} // namespace corvandell::win
