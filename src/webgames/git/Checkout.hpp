// Writing one tree of a decoded pack to disk as plain files.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "webgames/git/CheckoutPlan.hpp"
#include "webgames/git/ObjectSource.hpp"
#include "webgames/git/Packfile.hpp"

namespace corvandell::git {

// Writes the planned files under `folder`, reading each blob from `objects` as it is
// written and creating folders as files need them (so an empty tree leaves no folder);
// throws "cannot write " + path, or "missing blob object in pack" should the source no
// longer give a planned blob.
void write_checkout(const CheckoutPlan& plan, ObjectSource& objects, const std::filesystem::path& folder);

// plan_checkout then write_checkout, for callers with nothing to do in between.
void checkout_tree(const ObjectSet& objects, const std::string& treeName,
                   const std::filesystem::path& folder);

// Creates missing parent folders and writes the bytes; throws "cannot write " + path.
void write_file(const std::filesystem::path& path, std::string_view bytes);

} // namespace corvandell::git
