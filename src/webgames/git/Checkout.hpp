// Writing one tree of a decoded pack to disk as plain files.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "webgames/git/CheckoutPlan.hpp"
#include "webgames/git/ObjectSource.hpp"
#include "webgames/git/Packfile.hpp"

namespace corvandell::git {

// Writes the planned files under `folder`: this thread reads each blob from `objects`
// (which need not be thread-safe) while writer threads write the ones before it, with a
// few megabytes waiting at most. Folders are created as files need them, so an empty tree
// leaves no folder. Throws "cannot write " + path, or "missing blob object in pack" should
// the source no longer give a planned blob; every file is written or abandoned on return.
void write_checkout(const CheckoutPlan& plan, ObjectSource& objects, const std::filesystem::path& folder);

// plan_checkout then write_checkout, for callers with nothing to do in between.
void checkout_tree(const ObjectSet& objects, const std::string& treeName,
                   const std::filesystem::path& folder);

} // namespace corvandell::git
