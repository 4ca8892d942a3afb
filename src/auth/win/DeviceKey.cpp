// CNG holds the key; DPAPI seals its private export for the file.
//
// Plain private-key bytes exist only in two buffers: the export before sealing and the
// unsealed blob before import. Both are wiped as soon as they have been used, on every
// path, including the ones that fail.
#include <windows.h>

#include <bcrypt.h>
#include <dpapi.h>

#include "auth/Base64.hpp"
#include "auth/DerSignature.hpp"
#include "auth/win/DeviceKey.hpp"
#include "base/BoundedFileRead.hpp"
#include "base/FileCommit.hpp"

#include <array>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace corvandell::win {
namespace {

// A sealed P-256 private blob is a few hundred bytes; anything far larger is not ours.
constexpr std::size_t kMaxKeyFileBytes = 64 * 1024;
constexpr ULONG kP256CoordinateBytes = 32;

bool succeeded(NTSTATUS status) {
    return status >= 0;
}

// Opened once per process and never closed; null when the provider is unavailable.
BCRYPT_ALG_HANDLE openProvider(const wchar_t* algorithm, std::once_flag& once, BCRYPT_ALG_HANDLE& handle) {
    std::call_once(once, [&] {
        BCRYPT_ALG_HANDLE opened = nullptr;
        if (succeeded(BCryptOpenAlgorithmProvider(&opened, algorithm, nullptr, 0))) {
            handle = opened;
        }
    });
    return handle;
}

BCRYPT_ALG_HANDLE ecdsaProvider() {
    static std::once_flag once;
    static BCRYPT_ALG_HANDLE handle = nullptr;
    return openProvider(BCRYPT_ECDSA_P256_ALGORITHM, once, handle);
}

BCRYPT_ALG_HANDLE sha256Provider() {
    static std::once_flag once;
    static BCRYPT_ALG_HANDLE handle = nullptr;
    return openProvider(BCRYPT_SHA256_ALGORITHM, once, handle);
}

// A byte buffer that is wiped before its memory goes back.
class SecretBytes {
public:
    explicit SecretBytes(std::size_t size) : bytes_(size, 0) {}
    SecretBytes(const SecretBytes&) = delete;
    SecretBytes& operator=(const SecretBytes&) = delete;
    ~SecretBytes() { SecureZeroMemory(bytes_.data(), bytes_.size()); }
    BYTE* data() noexcept { return bytes_.data(); }
    ULONG size() const noexcept { return static_cast<ULONG>(bytes_.size()); }

private:
    std::vector<BYTE> bytes_;
};

// A DATA_BLOB whose memory the data-protection API allocated; wiped first when it held
// plain key bytes.
class LocalBlob {
public:
    explicit LocalBlob(bool isSecret) : isSecret_(isSecret) {}
    LocalBlob(const LocalBlob&) = delete;
    LocalBlob& operator=(const LocalBlob&) = delete;
    ~LocalBlob() {
        if (blob.pbData == nullptr) {
            return;
        }
        if (isSecret_) {
            SecureZeroMemory(blob.pbData, blob.cbData);
        }
        LocalFree(blob.pbData);
    }
    DATA_BLOB blob{};

private:
    bool isSecret_;
};

std::filesystem::path keyFile(const std::filesystem::path& dataFolder) {
    return dataFolder / DeviceKey::kFileName;
}

// 0x04 || X || Y in base64, or "" when the key's public export is not a P-256 point.
std::string publicKeyTextOf(BCRYPT_KEY_HANDLE key) {
    ULONG size = 0;
    if (!succeeded(BCryptExportKey(key, nullptr, BCRYPT_ECCPUBLIC_BLOB, nullptr, 0, &size, 0))) {
        return {};
    }
    std::vector<BYTE> blob(size, 0);
    if (!succeeded(BCryptExportKey(key, nullptr, BCRYPT_ECCPUBLIC_BLOB, blob.data(), size, &size, 0))) {
        return {};
    }
    if (size < sizeof(BCRYPT_ECCKEY_BLOB) + 2 * kP256CoordinateBytes) {
        return {};
    }
    BCRYPT_ECCKEY_BLOB header{};
    std::memcpy(&header, blob.data(), sizeof(header));
    if (header.cbKey != kP256CoordinateBytes) {
        return {};
    }
    std::string point(1, '\x04');
    point.append(reinterpret_cast<const char*>(blob.data() + sizeof(header)), 2 * kP256CoordinateBytes);
    return base64Encode(point);
}

std::array<BYTE, 32> sha256Of(std::string_view message, bool& ok) {
    std::array<BYTE, 32> digest{};
    ok = false;
    BCRYPT_ALG_HANDLE provider = sha256Provider();
    if (provider == nullptr) {
        return digest;
    }
    BCRYPT_HASH_HANDLE hash = nullptr;
    if (!succeeded(BCryptCreateHash(provider, &hash, nullptr, 0, nullptr, 0, 0))) {
        return digest;
    }
    const UniqueHandle<NullEmptyTraits<BCRYPT_HASH_HANDLE, &BCryptDestroyHash>> ownedHash(hash);
    // BCryptHashData takes a non-const pointer but only reads.
    auto* bytes = reinterpret_cast<PUCHAR>(const_cast<char*>(message.data()));
    ok = succeeded(BCryptHashData(hash, bytes, static_cast<ULONG>(message.size()), 0)) &&
         succeeded(BCryptFinishHash(hash, digest.data(), static_cast<ULONG>(digest.size()), 0));
    return digest;
}

} // namespace

bool DeviceKey::ensure(const std::filesystem::path& dataFolder) {
    if (key_) {
        return true;
    }
    return load(dataFolder) || create(dataFolder);
}

bool DeviceKey::load(const std::filesystem::path& dataFolder) {
    BCRYPT_ALG_HANDLE provider = ecdsaProvider();
    if (provider == nullptr) {
        return false;
    }
    FileRead file = readFileBounded(keyFile(dataFolder), kMaxKeyFileBytes);
    if (file.status != FileReadStatus::Ok || file.bytes.empty()) {
        return false;
    }
    DATA_BLOB sealed{static_cast<DWORD>(file.bytes.size()), reinterpret_cast<BYTE*>(file.bytes.data())};
    LocalBlob plain(true);
    if (!CryptUnprotectData(&sealed, nullptr, nullptr, nullptr, nullptr, 0, &plain.blob)) {
        return false;
    }
    BCRYPT_KEY_HANDLE imported = nullptr;
    const NTSTATUS status = BCryptImportKeyPair(provider, nullptr, BCRYPT_ECCPRIVATE_BLOB, &imported,
                                                plain.blob.pbData, plain.blob.cbData, 0);
    if (!succeeded(status)) {
        return false;
    }
    return adopt(UniqueKeyHandle(imported));
}

bool DeviceKey::create(const std::filesystem::path& dataFolder) {
    BCRYPT_ALG_HANDLE provider = ecdsaProvider();
    if (provider == nullptr) {
        return false;
    }
    BCRYPT_KEY_HANDLE generated = nullptr;
    if (!succeeded(BCryptGenerateKeyPair(provider, &generated, 256, 0))) {
        return false;
    }
    UniqueKeyHandle key(generated);
    if (!succeeded(BCryptFinalizeKeyPair(key.get(), 0))) {
        return false;
    }
    ULONG size = 0;
    if (!succeeded(BCryptExportKey(key.get(), nullptr, BCRYPT_ECCPRIVATE_BLOB, nullptr, 0, &size, 0))) {
        return false;
    }
    LocalBlob sealed(false);
    {
        SecretBytes exported(size);
        if (!succeeded(BCryptExportKey(key.get(), nullptr, BCRYPT_ECCPRIVATE_BLOB, exported.data(),
                                       exported.size(), &size, 0))) {
            return false;
        }
        DATA_BLOB plain{size, exported.data()};
        if (!CryptProtectData(&plain, L"Corvandell device key", nullptr, nullptr, nullptr, 0, &sealed.blob)) {
            return false;
        }
    } // the plain export is wiped here
    std::filesystem::create_directories(dataFolder);
    try {
        // Through a temporary and a rename: a crash mid-write must not leave a torn key file
        // that would cost this device its link to the account.
        replaceFileAtomically(
            keyFile(dataFolder),
            std::string_view(reinterpret_cast<const char*>(sealed.blob.pbData), sealed.blob.cbData));
    } catch (const std::runtime_error&) {
        return false;
    }
    return adopt(std::move(key));
}

bool DeviceKey::adopt(UniqueKeyHandle key) {
    std::string text = publicKeyTextOf(key.get());
    if (text.empty()) {
        return false;
    }
    key_ = std::move(key);
    publicKeyText_ = std::move(text);
    return true;
}

std::string DeviceKey::sign(std::string_view message) const {
    if (!key_) {
        return {};
    }
    bool hashed = false;
    std::array<BYTE, 32> digest = sha256Of(message, hashed);
    if (!hashed) {
        return {};
    }
    std::array<std::uint8_t, kP256SignatureBytes> rs{};
    ULONG written = 0;
    if (!succeeded(BCryptSignHash(key_.get(), nullptr, digest.data(), static_cast<ULONG>(digest.size()),
                                  rs.data(), static_cast<ULONG>(rs.size()), &written, 0)) ||
        written != rs.size()) {
        return {};
    }
    return base64Encode(derEncodeSignature(rs));
}

} // namespace corvandell::win
