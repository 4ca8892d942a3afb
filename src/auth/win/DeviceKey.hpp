// This installation's ECDSA P-256 key pair, which signs the service's sign-in challenges.
//
// The private half never leaves the machine: device_key.bin in the data folder holds the
// key's private export sealed with the data-protection API for the current user, and
// nothing else. The public half travels as base64 of the 65-byte uncompressed point.
#pragma once

#include <windows.h>

#include <bcrypt.h>

#include "base/win/UniqueHandle.hpp"

#include <filesystem>
#include <string>
#include <string_view>

namespace corvandell::win {

using UniqueKeyHandle = UniqueHandle<NullEmptyTraits<BCRYPT_KEY_HANDLE, &BCryptDestroyKey>>;

class DeviceKey {
public:
    static constexpr std::string_view kKeyType = "ECDSA-P256";
    static constexpr std::wstring_view kFileName = L"device_key.bin";

    DeviceKey() = default;
    DeviceKey(const DeviceKey&) = delete;
    DeviceKey& operator=(const DeviceKey&) = delete;

    // Loads the key from the data folder, or creates and saves a new one when there is no
    // usable file (missing, sealed for someone else, damaged). True once a key is loaded.
    // Throws std::filesystem::filesystem_error only when the data folder cannot be created.
    bool ensure(const std::filesystem::path& dataFolder);
    bool load(const std::filesystem::path& dataFolder);
    bool create(const std::filesystem::path& dataFolder);

    bool isLoaded() const noexcept { return static_cast<bool>(key_); }
    const std::string& publicKeyText() const noexcept { return publicKeyText_; }

    // Base64 of the DER signature of SHA-256 over the message's bytes; "" on any failure.
    // One caller at a time.
    std::string sign(std::string_view message) const;

private:
    bool adopt(UniqueKeyHandle key);

    UniqueKeyHandle key_;
    std::string publicKeyText_;
};

} // namespace corvandell::win
