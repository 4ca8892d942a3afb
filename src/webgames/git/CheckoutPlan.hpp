// Deciding everything a checkout will write before anything is written.
//
// A clone empties the destination before writing the new files, so every reason the
// checkout could refuse (a missing object, a tree nested or expanded beyond the limits)
// has to be found first: the plan walks the whole tree and either throws or lists every
// folder and file, with each file's blob already found. Trees are read one at a time from
// an object source, so planning from an indexed pack holds only the open trees.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "webgames/git/ByteBudget.hpp"
#include "webgames/git/ObjectSource.hpp"
#include "webgames/git/Packfile.hpp"
#include "webgames/git/Sha1.hpp"

namespace corvandell::git {

struct CheckoutLimits {
    // A tree may name the same subtree many times over, so a small pack can describe
    // billions of entries; a browser game never comes near this many.
    std::size_t maxEntries = 1000000;
    // Bytes of all files written, which for the same reason can far exceed the pack's.
    std::uint64_t maxBytes = kMaxTotalBytes;
    std::size_t maxDepth = 10000;
};

struct CheckoutStep {
    enum class Kind : std::uint8_t { EnterFolder, LeaveFolder, WriteFile };
    Kind kind = Kind::LeaveFolder;
    // EnterFolder and WriteFile: one safe path component, UTF-8, in the plan's names.
    std::size_t nameOffset = 0;
    std::size_t nameLength = 0;
    Sha1Digest blob{};      // WriteFile: the blob's name, in the plan's object source
    std::uint64_t size = 0; // WriteFile: its bytes
};

struct CheckoutPlan {
    std::vector<CheckoutStep> steps;
    std::string names; // every step's name, one after another: one allocation, not one a step
    std::size_t fileCount = 0;
    std::uint64_t byteCount = 0;

    std::string_view name_of(const CheckoutStep& step) const {
        return std::string_view(names).substr(step.nameOffset, step.nameLength);
    }
};

// Throws std::runtime_error: "missing tree object in pack", "missing blob object in pack",
// "tree nesting too deep", "too many files in the repository" (counting every entry of
// every tree visited, as often as it is visited), "repository too large" (the files' bytes
// over limits.maxBytes). Unsafe entry names, symbolic links and submodules are left out.
CheckoutPlan plan_checkout(ObjectSource& objects, const std::string& treeName,
                           const CheckoutLimits& limits = {});
CheckoutPlan plan_checkout(const ObjectSet& objects, const std::string& treeName,
                           const CheckoutLimits& limits = {});

} // namespace corvandell::git
