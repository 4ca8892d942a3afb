// Replays a checkout plan on disk.
//
// Everything that could make the checkout refuse was settled by the plan, so what can
// still fail here is the file system itself. One folder text grows and shrinks with the
// walk, so a deep tree costs memory in proportion to its depth rather than to the square
// of it.
#include "webgames/git/Checkout.hpp"

#include "base/Utf8Path.hpp"
#include "webgames/git/Sha1.hpp"

#include <fstream>
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

} // namespace

void write_checkout(const CheckoutPlan& plan, ObjectSource& objects, const std::filesystem::path& folder) {
    using Kind = CheckoutStep::Kind;
    NativeText current = folder.native();
    std::vector<std::size_t> parentLengths;
    for (const CheckoutStep& step : plan.steps) {
        switch (step.kind) {
        case Kind::EnterFolder:
            parentLengths.push_back(current.size());
            append_component(current, plan.name_of(step));
            break;
        case Kind::LeaveFolder:
            current.resize(parentLengths.back());
            parentLengths.pop_back();
            break;
        case Kind::WriteFile: {
            const auto content = objects.read(raw_of(step.blob));
            if (!content) {
                throw std::runtime_error("missing blob object in pack");
            }
            write_file(std::filesystem::path(current) / pathFromUtf8(plan.name_of(step)), *content);
            break;
        }
        }
    }
}

void checkout_tree(const ObjectSet& objects, const std::string& treeName,
                   const std::filesystem::path& folder) {
    ObjectSetSource source(objects);
    write_checkout(plan_checkout(source, treeName), source, folder);
}

void write_file(const std::filesystem::path& path, std::string_view bytes) {
    const std::filesystem::path file = path.has_filename() ? path : path.parent_path();
    std::error_code ignored;
    std::filesystem::create_directories(file.parent_path(), ignored);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (out.is_open()) {
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out.close();
    }
    if (!out) {
        throw std::runtime_error("cannot write " + pathToUtf8(path));
    }
}

} // namespace corvandell::git
