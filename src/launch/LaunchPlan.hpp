// How a library row is started, decided from what the row knows, before anything runs.
//
// A row with an executable is started directly, so the client can follow its processes;
// without one the client hands the store's launch address to the shell and can follow the
// game only by looking for it. A few stores' games cannot start without their client, and
// a launch text that is a command line names the client itself: those always go through
// the store, whatever executable was found.
#pragma once

#include <string>

namespace corvandell {

// What the launcher reads from a row (the library's row type lives above this folder).
struct LaunchSubject {
    std::string rowKey{};
    std::string title{};
    std::string steamAppId{};     // non-empty: a Steam row
    std::string executablePath{}; // UTF-8; empty when none was chosen
    std::string installPath{};    // UTF-8; where hand-offs are looked for
    std::string storeKey{};       // "epic", ...; empty for Steam and client installs
    std::string storeName{};      // "Epic Games", ...
    std::string storeCommand{};   // the store's launch address or command line
};

enum class LaunchWay { Direct, Shell, Nothing };

struct ShellCommand {
    std::string file{};       // what ShellExecuteW opens: an address or a program
    std::string parameters{}; // the rest of a command line; empty for an address
};

struct LaunchPlan {
    LaunchWay way = LaunchWay::Nothing;
    std::string executablePath{}; // Direct
    std::string workingFolder{};  // Direct: the executable's folder
    std::string steamAppId{};     // Direct: set for Steam rows, which get the Steam environment
    // Shell, and what a failed direct start falls back to (empty file: nothing).
    ShellCommand shell;
    std::string shellStatus{};   // the status line after the shell took the address
    std::string nothingStatus{}; // the status line when there is nothing to start
    std::string followFolder{};  // processes under it belong to the game; empty: none followed
};

LaunchPlan planLaunch(const LaunchSubject& subject);

// A quoted program followed by its arguments is split there; anything else is one address.
ShellCommand splitShellCommand(const std::string& command);

} // namespace corvandell
