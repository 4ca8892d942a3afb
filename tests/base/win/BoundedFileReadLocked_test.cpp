// A file another program holds open without sharing is unreadable, not missing, and reads
// again once it is let go.
#include <windows.h>

#include "base/BoundedFileRead.hpp"
#include "base/win/UniqueHandle.hpp"
#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(BoundedFileReadLocked, AFileHeldWithoutSharingIsUnreadableUntilReleased) {
    const test::TempFolder temp;
    const auto file = temp.writeFile("settings.json", "{}");
    win::UniqueKernelHandle lock(
        CreateFileW(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(lock) << "error " << GetLastError();
    EXPECT_EQ(readFileBounded(file, 1024).status, FileReadStatus::Unreadable);
    lock.reset();
    const FileRead read = readFileBounded(file, 1024);
    EXPECT_EQ(read.status, FileReadStatus::Ok);
    EXPECT_EQ(read.bytes, "{}");
}

} // namespace
} // namespace corvandell
