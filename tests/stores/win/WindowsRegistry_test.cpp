// The real registry read back after the real reg.exe wrote it, in both views: a value a
// 32-bit installer wrote is found only through the WOW6432Node path.
#include <windows.h>

#include "stores/win/WindowsRegistry.hpp"

#include "base/win/WideText.hpp"
#include "stores/win/RegistryScratch.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace corvandell::win {
namespace {

class WindowsRegistryTest : public ::testing::Test {
protected:
    void TearDown() override {
        test::deleteKeyTreeInBothViews(HKEY_LOCAL_MACHINE, L"SOFTWARE\\" + name_);
        test::deleteKeyTreeInBothViews(HKEY_CURRENT_USER, L"Software\\" + name_);
    }

    void add(const std::wstring& key, const std::wstring& value, const std::wstring& data,
             const wchar_t* view, const wchar_t* type = L"REG_SZ") {
        const test::ChildResult result = test::regAdd(key, value, data, view, type);
        ASSERT_EQ(result.exitCode, 0u) << result.output;
    }

    const std::wstring name_ = test::uniqueKeyName();
    const std::wstring machineKey_ = L"HKLM\\SOFTWARE\\" + name_;
    const std::wstring userKey_ = L"HKCU\\Software\\" + name_;
    const std::string name8_ = narrow(name_);
    WindowsRegistry registry_;
};

TEST_F(WindowsRegistryTest, ReadsStringValuesThroughTheViewTheirPathNames) {
    const std::wstring longPath = L"C:\\Games\\" + std::wstring(300, L'x') + L"\\Game";
    SetEnvironmentVariableW(L"CORVANDELL_REGISTRY_TEST", L"D:\\Store");
    add(machineKey_, L"Only32", L"thirty-two", L"/reg:32");
    add(machineKey_, L"Only64", L"sixty-four", L"/reg:64");
    add(machineKey_, L"Expand", L"%CORVANDELL_REGISTRY_TEST%\\Games", L"/reg:64", L"REG_EXPAND_SZ");
    add(machineKey_, L"Long", longPath, L"/reg:64");
    add(machineKey_, L"Count", L"7", L"/reg:64", L"REG_DWORD");
    add(userKey_, L"Title", L"J\u00f6rg's Caf\u00e9 \u2122", L"/reg:64");

    const std::string wow = "SOFTWARE\\WOW6432Node\\" + name8_;
    const std::string native = "SOFTWARE\\" + name8_;
    struct Case {
        RegistryHive hive;
        std::string key;
        const char* value;
        std::optional<std::string> expected;
    };
    const Case cases[] = {
        {RegistryHive::LocalMachine, wow, "Only32", "thirty-two"},
        {RegistryHive::LocalMachine, native, "Only32", std::nullopt},
        {RegistryHive::LocalMachine, native, "Only64", "sixty-four"},
        {RegistryHive::LocalMachine, wow, "Only64", std::nullopt},
        {RegistryHive::LocalMachine, native, "Expand", "D:\\Store\\Games"},
        {RegistryHive::LocalMachine, native, "Long", narrow(longPath)},
        {RegistryHive::LocalMachine, native, "Count", std::nullopt},
        {RegistryHive::LocalMachine, native + "\\Missing", "Only64", std::nullopt},
        {RegistryHive::CurrentUser, "Software\\" + name8_, "Title", "J\xc3\xb6rg's Caf\xc3\xa9 \xe2\x84\xa2"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(registry_.readString(c.hive, c.key, c.value), c.expected) << c.key << " " << c.value;
    }
}

TEST_F(WindowsRegistryTest, ListsSubkeyNamesOfOneViewInUtf8) {
    add(userKey_ + L"\\Alpha", L"", L"", L"/reg:64");
    add(userKey_ + L"\\J\u00f6rg \u65e5\u672c", L"", L"", L"/reg:64");
    add(machineKey_ + L"\\1400000001", L"gameName", L"Lantern Harbor", L"/reg:32");
    add(machineKey_ + L"\\Native", L"", L"", L"/reg:64");

    struct Case {
        RegistryHive hive;
        std::string key;
        std::vector<std::string> expected;
    };
    const Case cases[] = {
        {RegistryHive::CurrentUser, "Software\\" + name8_, {"Alpha", "J\xc3\xb6rg \xe6\x97\xa5\xe6\x9c\xac"}},
        {RegistryHive::LocalMachine, "SOFTWARE\\WOW6432Node\\" + name8_, {"1400000001"}},
        {RegistryHive::LocalMachine, "SOFTWARE\\" + name8_, {"Native"}},
        {RegistryHive::LocalMachine, "SOFTWARE\\" + name8_ + "\\Missing", {}},
    };
    for (const auto& c : cases) {
        auto names = registry_.subkeyNames(c.hive, c.key);
        std::sort(names.begin(), names.end());
        EXPECT_EQ(names, c.expected) << c.key;
    }
}

} // namespace
} // namespace corvandell::win
