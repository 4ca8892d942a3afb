// GitRepo: the git command line with an isolated configuration and fixed identities.
#include "support/posix/GitRepo.hpp"

#include "support/posix/Command.hpp"

#include <stdexcept>

namespace corvandell::test {

namespace fs = std::filesystem;

GitRepo::GitRepo() : repo_(temp_.path() / "repo") {
    fs::create_directories(repo_);
    git("init -q -b main");
}

fs::path GitRepo::scratch(const std::string& name) const {
    const fs::path folder = temp_.path() / name;
    fs::create_directories(folder);
    return folder;
}

std::string GitRepo::git(const std::string& arguments, std::string_view input) const {
    const std::string home = "'" + temp_.path().string() + "'";
    const std::string date = "'" + std::to_string(1700000000 + commits_ * 3600) + " +0000'";
    const std::string commandLine =
        "cd '" + repo_.string() + "' && GIT_CONFIG_NOSYSTEM=1 HOME=" + home + " XDG_CONFIG_HOME=" + home +
        " GIT_AUTHOR_NAME=Ada GIT_AUTHOR_EMAIL=ada@example.invalid GIT_AUTHOR_DATE=" + date +
        " GIT_COMMITTER_NAME=Ada GIT_COMMITTER_EMAIL=ada@example.invalid GIT_COMMITTER_DATE=" + date +
        " git <'" + temp_.writeFile("stdin", input).string() + "' " + arguments;
    int exitCode = -1;
    std::string output = run_shell(commandLine, exitCode);
    if (exitCode != 0) {
        throw std::runtime_error("failed: git " + arguments);
    }
    return output;
}

void GitRepo::write(const fs::path& relative, std::string_view bytes) const {
    temp_.writeFile(fs::path("repo") / relative, bytes);
}

void GitRepo::commit(const std::string& message) {
    ++commits_;
    git("add -A");
    git("commit -q -m '" + message + "'");
}

std::map<std::string, std::string> GitRepo::archive(const std::string& commitish) const {
    const fs::path folder = scratch("archive-" + commitish);
    git("archive --format=tar " + commitish + " | tar -x -C '" + folder.string() + "'");
    return files_under(folder);
}

std::map<std::string, std::string> files_under(const fs::path& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = entry.path().lexically_relative(folder).generic_string();
        if (entry.is_directory() && !entry.is_symlink()) {
            files[name + "/"] = "";
        } else if (entry.is_regular_file() && !entry.is_symlink()) {
            files[name] = readTestFile(entry.path());
        }
    }
    return files;
}

} // namespace corvandell::test
