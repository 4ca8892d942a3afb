// A real git repository in a temp folder, driven through the git command line. Every git
// run gets an isolated environment (no system or user configuration, fixed names and
// dates), so the repository's object names do not depend on the machine.
#pragma once

#include "support/TempFolder.hpp"

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace corvandell::test {

class GitRepo {
public:
    GitRepo(); // an empty repository on branch "main"

    const std::filesystem::path& path() const { return repo_; }
    // A folder beside the repository for a test's own output.
    std::filesystem::path scratch(const std::string& name) const;

    // Runs "git " + arguments (shell words) in the repository; throws when git fails.
    std::string git(const std::string& arguments, std::string_view input = {}) const;
    void write(const std::filesystem::path& relative, std::string_view bytes) const;
    void commit(const std::string& message); // stages everything first

    // What `git archive` of the commit extracts to with tar, keyed as files_under keys it.
    std::map<std::string, std::string> archive(const std::string& commitish) const;

private:
    TempFolder temp_;
    std::filesystem::path repo_;
    int commits_ = 0;
};

// The regular files ("name" -> bytes) and folders ("name/" -> "") under `folder`;
// symbolic links are left out.
std::map<std::string, std::string> files_under(const std::filesystem::path& folder);

} // namespace corvandell::test
