#include "launch/ProcessImage.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(ProcessImage, AnImageBelongsToAFolderOnlyWhenItLiesInsideIt) {
    const struct {
        const wchar_t* image;
        const wchar_t* folder;
        bool isInside;
    } cases[] = {
        {L"C:\\Games\\Lantern\\bin\\Lantern.exe", L"C:\\Games\\Lantern", true},
        {L"c:\\games\\LANTERN\\Lantern.exe", L"C:/Games/Lantern/", true},
        {L"C:\\Games\\Lantern Tools\\x.exe", L"C:\\Games\\Lantern", false}, // a sibling sharing the prefix
        {L"C:\\Games\\Lantern", L"C:\\Games\\Lantern", false},              // the folder itself
        {L"D:\\Games\\Lantern\\a.exe", L"C:\\Games\\Lantern", false},
        {L"C:\\Games\\Lantern\\a.exe", L"", false},
    };
    for (const auto& [image, folder, isInside] : cases) {
        EXPECT_EQ(isImageUnderFolder(image, folder), isInside) << image << " in " << folder;
    }
}

} // namespace
} // namespace corvandell
