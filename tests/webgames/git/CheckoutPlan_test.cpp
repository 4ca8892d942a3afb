// Planning a checkout on object sets made in the test: each limit is met exactly and missed
// by one, a subtree counts as often as it is named, skipped entries are never looked up,
// and a wide tree of distinct folders is planned whole.
#include "webgames/git/CheckoutPlan.hpp"

#include "support/PackWriter.hpp"
#include "support/ThrownText.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell::git {
namespace {

using test::git_object_name;
using test::tree_entry;

struct Objects {
    ObjectSet set;

    // Adds the object and returns its name.
    std::string add(int type, const std::string& content) {
        const std::string name = git_object_name(type, content);
        set[name] = GitObject{type, name, content};
        return name;
    }
};

CheckoutLimits limits_of(std::size_t maxEntries, std::uint64_t maxBytes, std::size_t maxDepth) {
    CheckoutLimits limits;
    limits.maxEntries = maxEntries;
    limits.maxBytes = maxBytes;
    limits.maxDepth = maxDepth;
    return limits;
}

TEST(CheckoutPlan, EachLimitHoldsExactlyAndEveryFileIsFoundBeforeAnythingIsWritten) {
    Objects objects;
    const std::string page = objects.add(3, "<p>play</p>"); // 11 bytes
    const std::string missing(40, '0');
    // Four entries: a page, a page under a name Windows refuses (skipped, so its missing
    // blob is never looked up), a symbolic link and a folder holding one more page.
    const std::string folder = objects.add(2, tree_entry("100644", "inner.html", page));
    const std::string root = objects.add(
        2, tree_entry("100644", "index.html", page) + tree_entry("100644", "CON.txt", missing) +
               tree_entry("120000", "link", page) + tree_entry("40000", "sub", git_object_name(2, "")));
    objects.add(2, "");
    const std::string withFolder =
        objects.add(2, tree_entry("100644", "index.html", page) + tree_entry("40000", "sub", folder));
    // The same folder named twice: its entry and its file count twice.
    const std::string twice =
        objects.add(2, tree_entry("40000", "a", folder) + tree_entry("40000", "b", folder));
    std::string nested = objects.add(2, tree_entry("100644", "deepest.html", page));
    for (int level = 0; level < 3; ++level) {
        nested = objects.add(2, tree_entry("40000", "d", nested));
    }
    // A thousand distinct folders, each holding a file of its own.
    std::string wideTree;
    for (int index = 0; index < 1000; ++index) {
        const std::string content = "file " + std::to_string(index);
        wideTree += tree_entry("40000", "f" + std::to_string(index),
                               objects.add(2, tree_entry("100644", "page.html", objects.add(3, content))));
    }
    const std::string wide = objects.add(2, wideTree);
    const std::string missingBlob = objects.add(2, tree_entry("100644", "index.html", missing));
    const std::string missingTree = objects.add(2, tree_entry("40000", "sub", missing));

    struct Case {
        const char* what;
        std::string tree;
        CheckoutLimits limits;
        std::string error;
        std::size_t files = 0;
        std::uint64_t bytes = 0;
    };
    const std::uint64_t kAny = 1 << 20;
    const std::vector<Case> cases = {
        {"entries at the limit", root, limits_of(4, kAny, 1), "", 1, 11},
        {"one entry over", root, limits_of(3, kAny, 1), "too many files in the repository"},
        {"bytes at the limit", withFolder, limits_of(3, 22, 1), "", 2, 22},
        {"one byte over", withFolder, limits_of(3, 21, 1), "repository too large"},
        {"a folder named twice counts twice", twice, limits_of(4, 22, 1), "", 2, 22},
        {"and one entry over", twice, limits_of(3, kAny, 1), "too many files in the repository"},
        {"nesting at the limit", nested, limits_of(4, kAny, 3), "", 1, 11},
        {"one level over", nested, limits_of(4, kAny, 2), "tree nesting too deep"},
        {"a thousand distinct folders", wide, limits_of(2000, kAny, 1), "", 1000, 7890},
        {"a missing blob", missingBlob, {}, "missing blob object in pack"},
        {"a missing tree", missingTree, {}, "missing tree object in pack"},
        {"a missing root", missing, {}, "missing tree object in pack"},
    };
    for (const Case& test : cases) {
        CheckoutPlan plan;
        EXPECT_EQ(test::thrownText([&] { plan = plan_checkout(objects.set, test.tree, test.limits); }),
                  test.error)
            << test.what;
        EXPECT_EQ(plan.fileCount, test.files) << test.what;
        EXPECT_EQ(plan.byteCount, test.bytes) << test.what;
    }
}

} // namespace
} // namespace corvandell::git
