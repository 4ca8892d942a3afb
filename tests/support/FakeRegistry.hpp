// A registry made of maps for native tests of the store scanners. Like the real one it
// ignores case in key and value names, and a key exists once any value or subkey is set.
#pragma once

#include "stores/Registry.hpp"

#include <map>
#include <set>
#include <string>
#include <tuple>

namespace corvandell::test {

class FakeRegistry final : public Registry {
public:
    void set(RegistryHive hive, std::string_view keyPath, std::string_view valueName, std::string value) {
        values_[{hive, lower(keyPath), lower(valueName)}] = std::move(value);
        addKey(hive, keyPath);
    }
    // A key with no values, as an uninstaller can leave behind.
    void addKey(RegistryHive hive, std::string_view keyPath) {
        std::string path(keyPath);
        for (size_t slash = path.rfind('\\'); slash != std::string::npos; slash = path.rfind('\\')) {
            children_[{hive, lower(path.substr(0, slash))}].insert(path.substr(slash + 1));
            path.resize(slash);
        }
    }

    std::optional<std::string> readString(RegistryHive hive, std::string_view keyPath,
                                          std::string_view valueName) const override {
        const auto found = values_.find({hive, lower(keyPath), lower(valueName)});
        return found == values_.end() ? std::nullopt : std::optional<std::string>(found->second);
    }
    std::vector<std::string> subkeyNames(RegistryHive hive, std::string_view keyPath) const override {
        const auto found = children_.find({hive, lower(keyPath)});
        return found == children_.end()
                   ? std::vector<std::string>{}
                   : std::vector<std::string>(found->second.begin(), found->second.end());
    }

private:
    static std::string lower(std::string_view text) {
        std::string out(text);
        for (char& c : out) {
            if (c >= 'A' && c <= 'Z') {
                c = static_cast<char>(c - 'A' + 'a');
            }
        }
        return out;
    }

    std::map<std::tuple<RegistryHive, std::string, std::string>, std::string> values_;
    std::map<std::pair<RegistryHive, std::string>, std::set<std::string>> children_;
};

} // namespace corvandell::test
