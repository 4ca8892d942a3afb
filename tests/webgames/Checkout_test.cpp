// Checkout into a real temp folder from hand-made object sets: the commit and tree readers,
// the entry names refused on any platform, what is written, what is skipped, and how
// missing objects and endless trees end. (Hostile names are checked end to end in the
// clone tests, real trees against the git CLI.)
#include "webgames/Checkout.hpp"

#include "app/DataPaths.hpp"
#include "support/PackWriter.hpp"
#include "support/TempFolder.hpp"
#include "support/ThrownText.hpp"
#include "webgames/GitTree.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace corvandell::git {
namespace {

using Names = std::vector<std::string>;
using test::tree_entry;
const std::string kLoop(40, 'a');

std::string add(ObjectSet& objects, int type, const std::string& data) {
    const std::string name = test::git_object_name(type, data);
    objects[name] = GitObject{type, name, data};
    return name;
}

std::string error_of(const ObjectSet& objects, const std::string& tree, const std::filesystem::path& folder) {
    return test::thrownText([&] { checkout_tree(objects, tree, folder); });
}

TEST(Checkout, WritesFilesAndFoldersAndSkipsLinksAndSubmodules) {
    ObjectSet objects;
    const std::string page = add(objects, 3, "<html>");
    const std::string js = add(objects, 2, tree_entry("100755", "run.sh", page));
    const std::string root =
        add(objects, 2,
            tree_entry("100644", "\xC3\xA9t\xC3\xA9 #1.html", page) +
                tree_entry("100644", "empty", add(objects, 3, "")) + tree_entry("40000", "js", js) +
                tree_entry("120000", "link", page) + tree_entry("160000", "module", kLoop));
    const test::TempFolder temp;
    checkout_tree(objects, root, temp.path() / "game");
    EXPECT_EQ(temp.entryNames("game"), (Names{"empty", "js", "\xC3\xA9t\xC3\xA9 #1.html"}));
    EXPECT_EQ(test::readTestFile(temp.path() / "game" / "js" / "run.sh"), "<html>");
    EXPECT_EQ(std::filesystem::file_size(temp.path() / "game" / "empty"), 0U);
}

TEST(Checkout, MissingObjectsAndEndlessNestingThrow) {
    ObjectSet objects;
    const std::string missingBlob = add(
        objects, 2, tree_entry("100644", "a", add(objects, 3, "first")) + tree_entry("100644", "b", kLoop));
    const std::string loop = add(objects, 2, tree_entry("40000", "d", kLoop));
    objects[kLoop] = GitObject{2, kLoop, tree_entry("40000", "d", kLoop)};
    const test::TempFolder temp;
    EXPECT_EQ(error_of(objects, std::string(40, 'b'), temp.path()), "missing tree object in pack");
    EXPECT_EQ(error_of(objects, loop, temp.path()), "tree nesting too deep");
    objects.erase(kLoop);
    EXPECT_EQ(error_of(objects, loop, temp.path()), "missing tree object in pack");
    EXPECT_EQ(error_of(objects, missingBlob, temp.path()), "missing blob object in pack");
    EXPECT_EQ(test::readTestFile(temp.path() / "a"), "first");

    // Ten folders each naming the level below ten times: 10^10 entries from 11 objects.
    std::string level = add(objects, 2, "");
    for (int depth = 0; depth < 10; ++depth) {
        std::string fanOut;
        for (char name = '0'; name <= '9'; ++name) {
            fanOut += tree_entry("40000", std::string(1, name), level);
        }
        level = add(objects, 2, fanOut);
    }
    EXPECT_EQ(error_of(objects, level, temp.path() / "bomb"), "too many files in the repository");
    EXPECT_FALSE(std::filesystem::exists(temp.path() / "bomb"));
}

TEST(Checkout, WriteFileCreatesParentsAndNamesThePathItCannotWrite) {
    const test::TempFolder temp;
    const std::string bytes("a\0\r\n\x1A", 5);
    write_file(temp.path() / "no" / "folder" / "yet.bin", bytes);
    EXPECT_EQ(test::readTestFile(temp.path() / "no" / "folder" / "yet.bin"), bytes);
    const auto blocked = temp.writeFile("file", "x") / "below.txt";
    EXPECT_EQ(test::thrownText([&] { write_file(blocked, "y"); }), "cannot write " + pathToUtf8(blocked));
}

TEST(Checkout, ReadersStopAtMissingOrIncompleteData) {
    const std::string tree(40, 'e');
    EXPECT_EQ(root_tree_of("tree " + tree + "\nparent x\n"), tree);
    EXPECT_EQ(root_tree_of("tree " + tree.substr(1)), "");
    EXPECT_EQ(root_tree_of("object " + tree + "\ntype commit\n"), "");
    const std::string entry = tree_entry("40000", "d", tree);
    const auto entries = read_tree(entry + entry.substr(0, entry.size() - 1));
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].mode, 040000U);
    EXPECT_EQ(entries[0].id, tree);
}

TEST(Checkout, RefusesNamesThatEscapeTheFolderOrMeanSomethingElseOnWindows) {
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
