// Commit and tree readers on hand-made objects, and the table of entry names the checkout
// must refuse on any platform. (Real trees are read in the tests against the git CLI.)
#include "webgames/GitTree.hpp"

#include "support/PackWriter.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell::git {
namespace {

TEST(GitTree, ReadersStopAtMissingOrIncompleteData) {
    const std::string tree(40, 'e');
    EXPECT_EQ(root_tree_of("tree " + tree + "\nparent x\n"), tree);
    EXPECT_EQ(root_tree_of("tree " + tree.substr(1)), "");
    EXPECT_EQ(root_tree_of("object " + tree + "\ntype commit\n"), "");
    const std::string entry = test::tree_entry("40000", "d", tree);
    const auto entries = read_tree(entry + entry.substr(0, entry.size() - 1));
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].mode, 040000U);
    EXPECT_EQ(entries[0].id, tree);
}

TEST(GitTree, RefusesNamesThatEscapeTheFolderOrMeanSomethingElseOnWindows) {
    const std::vector<std::string> unsafe = {
        "",       ".",           "..",      ".git",     ".GIT",   ".Git",        "a/b",         "a\\b",
        "C:x",    "file:stream", "CON",     "con.txt",  "Nul",    "aux.tar.gz",  "PRN",         "Com1.tar.gz",
        "com9",   "LPT1",        "lpt9.md", "CON .txt", "CONIN$", "conout$.log", "COM\xC2\xB9", "trail.",
        "trail ", "...",
    };
    const std::vector<std::string> safe = {
        "index.html",  ".gitignore", ".github",     "git",
        "a b",         "#1",         "console.log", "com10",
        "com0",        "lpt",        "nul1",        "auxiliary.js",
        "com\xC2\xB4", "lpt12",      ".hidden",     "\xC3\xA9t\xC3\xA9.png",
    };
    EXPECT_FALSE(is_safe_entry_name(std::string("a\0b", 3)));
    for (const std::string& name : unsafe) {
        EXPECT_FALSE(is_safe_entry_name(name)) << name;
    }
    for (const std::string& name : safe) {
        EXPECT_TRUE(is_safe_entry_name(name)) << name;
    }
}

} // namespace
} // namespace corvandell::git
