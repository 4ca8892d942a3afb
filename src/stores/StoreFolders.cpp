// The listing never throws: directory_iterator is driven through its error_code overloads.
#include "stores/StoreFolders.hpp"

#include <algorithm>

namespace corvandell {

std::vector<std::filesystem::path> listSubfolders(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> subfolders;
    std::error_code error;
    std::filesystem::directory_iterator it(folder, std::filesystem::directory_options::skip_permission_denied,
                                           error);
    for (const std::filesystem::directory_iterator end; !error && it != end; it.increment(error)) {
        std::error_code typeError;
        if (it->is_directory(typeError)) {
            subfolders.push_back(it->path());
        }
    }
    std::sort(subfolders.begin(), subfolders.end());
    return subfolders;
}

} // namespace corvandell
