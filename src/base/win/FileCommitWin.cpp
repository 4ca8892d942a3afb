// Windows half of the crash-safe file replacement: flush the temporary file's data to
// the disk, then swap it over the target with one MoveFileExW. MOVEFILE_WRITE_THROUGH
// makes the call return only after the rename itself is on disk.

#include <windows.h>

#include "base/FileCommit.hpp"
#include "base/win/UniqueHandle.hpp"

namespace corvandell {

bool commitTemporaryFile(const std::filesystem::path& temporary, const std::filesystem::path& target) {
    {
        win::UniqueKernelHandle file(CreateFileW(temporary.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                                 FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file || !FlushFileBuffers(file.get())) {
            return false;
        }
    }
    return MoveFileExW(temporary.c_str(), target.c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

} // namespace corvandell
