// Replays a checkout plan on disk.
//
// Everything that could make the checkout refuse was settled by the plan, so what can
// still fail here is the file system itself. One folder text grows and shrinks with the
// walk, so a deep tree costs memory in proportion to its depth rather than to the square
// of it.
#include "webgames/git/Checkout.hpp"

#include "base/Utf8Path.hpp"
#include "webgames/git/FileWriters.hpp"
#include "webgames/git/Sha1.hpp"

#include <algorithm>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace corvandell::git {

namespace {

using NativeText = std::filesystem::path::string_type;

void append_component(NativeText& folder, std::string_view name) {
    if (!folder.empty() && folder.back() != std::filesystem::path::preferred_separator) {
        folder.push_back(std::filesystem::path::preferred_separator);
    }
    folder.append(pathFromUtf8(name).native());
}

// Creating a file waits on the file system far more than on the processor, so even a
// dual-core machine gains from four writers (under Wine too, whose one server process
// handles every create and close).
constexpr std::size_t kWriterThreads = 4;
constexpr std::uint64_t kMaxWaitingBytes = std::uint64_t{8} << 20;

void create_folder(const NativeText& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        throw std::runtime_error("cannot write " + pathToUtf8(folder));
    }
}

} // namespace

void write_checkout(const CheckoutPlan& plan, ObjectSource& objects, const std::filesystem::path& folder) {
    using Kind = CheckoutStep::Kind;
    NativeText current = folder.native();
    std::vector<std::size_t> parentLengths;
    std::size_t createdLevels = 0; // of the folders from `folder` down to `current`
    FileWriters writers(kWriterThreads, kMaxWaitingBytes);
    for (const CheckoutStep& step : plan.steps) {
        switch (step.kind) {
        case Kind::EnterFolder:
            parentLengths.push_back(current.size());
            append_component(current, plan.name_of(step));
            break;
        case Kind::LeaveFolder:
            current.resize(parentLengths.back());
            parentLengths.pop_back();
            createdLevels = std::min(createdLevels, parentLengths.size() + 1);
            break;
        case Kind::WriteFile: {
            auto content = objects.read(raw_of(step.blob));
            if (!content) {
                throw std::runtime_error("missing blob object in pack");
            }
            // Folders are made as their first file needs them, so an empty tree leaves none.
            if (createdLevels < parentLengths.size() + 1) {
                create_folder(current);
                createdLevels = parentLengths.size() + 1;
            }
            writers.write(std::filesystem::path(current) / pathFromUtf8(plan.name_of(step)),
                          std::move(content));
            break;
        }
        }
    }
    writers.finish();
}

void checkout_tree(const ObjectSet& objects, const std::string& treeName,
                   const std::filesystem::path& folder) {
    ObjectSetSource source(objects);
    write_checkout(plan_checkout(source, treeName), source, folder);
}

} // namespace corvandell::git
