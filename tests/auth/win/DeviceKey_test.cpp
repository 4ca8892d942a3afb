#include <windows.h>

#include <bcrypt.h>
#include <dpapi.h>

#include "auth/ChallengePayload.hpp"
#include "auth/win/DeviceKey.hpp"
#include "support/TempFolder.hpp"
#include "support/win/LinuxSide.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

struct Unsealed {
    bool ok = false;
    std::string bytes;
    std::wstring description;
};

Unsealed unseal(const std::string& sealed) {
    DATA_BLOB in{static_cast<DWORD>(sealed.size()),
                 reinterpret_cast<BYTE*>(const_cast<char*>(sealed.data()))};
    DATA_BLOB out{};
    LPWSTR description = nullptr;
    Unsealed result;
    result.ok = CryptUnprotectData(&in, &description, nullptr, nullptr, nullptr, 0, &out) != FALSE;
    if (result.ok) {
        result.bytes.assign(reinterpret_cast<const char*>(out.pbData), out.cbData);
        result.description = description;
        SecureZeroMemory(out.pbData, out.cbData);
        LocalFree(out.pbData);
        LocalFree(description);
    }
    return result;
}

std::string seal(const std::string& plain) {
    DATA_BLOB in{static_cast<DWORD>(plain.size()), reinterpret_cast<BYTE*>(const_cast<char*>(plain.data()))};
    DATA_BLOB out{};
    if (!CryptProtectData(&in, L"Corvandell device key", nullptr, nullptr, nullptr, 0, &out)) {
        return {};
    }
    std::string sealed(reinterpret_cast<const char*>(out.pbData), out.cbData);
    LocalFree(out.pbData);
    return sealed;
}

TEST(DeviceKey, EnsureCreatesTheSealedFileAndASecondKeyLoadsTheSameKey) {
    const test::TempFolder folder;
    const auto dataFolder = folder.path() / "Corvandell" / "nested";
    DeviceKey first;
    ASSERT_TRUE(first.ensure(dataFolder));
    const std::string text = first.publicKeyText(); // its form is checked by OpenSSL below
    EXPECT_TRUE(first.ensure(dataFolder)) << "a loaded key stays";
    EXPECT_EQ(first.publicKeyText(), text);

    // The file is the sealed private export and nothing else.
    const Unsealed plain = unseal(test::readTestFile(dataFolder / "device_key.bin"));
    ASSERT_TRUE(plain.ok);
    EXPECT_EQ(plain.description, L"Corvandell device key");
    ASSERT_EQ(plain.bytes.size(), sizeof(BCRYPT_ECCKEY_BLOB) + 3 * 32);
    BCRYPT_ECCKEY_BLOB header{};
    std::memcpy(&header, plain.bytes.data(), sizeof(header));
    EXPECT_EQ(header.dwMagic, static_cast<ULONG>(BCRYPT_ECDSA_PRIVATE_P256_MAGIC));
    EXPECT_EQ(header.cbKey, 32u);

    DeviceKey second;
    ASSERT_TRUE(second.load(dataFolder));
    EXPECT_EQ(second.publicKeyText(), text);
    DeviceKey third;
    ASSERT_TRUE(third.ensure(dataFolder));
    EXPECT_EQ(third.publicKeyText(), text) << "ensure loads before it creates";
}

TEST(DeviceKey, AnUnusableFileIsReplacedByANewKeyAndNothingElseIsTouched) {
    const std::string notAKey = seal("sealed, but not a key blob");
    ASSERT_FALSE(notAKey.empty());
    const test::TempFolder reference;
    DeviceKey original;
    ASSERT_TRUE(original.create(reference.path()));
    const std::string goodFile = test::readTestFile(reference.path() / "device_key.bin");
    std::string flipped = goodFile;
    flipped[flipped.size() / 2] = static_cast<char>(flipped[flipped.size() / 2] ^ 0x40);

    const struct {
        const char* name;
        std::string content;
    } cases[] = {
        {"not sealed at all", "garbage bytes that no one sealed"},
        {"sealed but not a key", notAKey},
        {"cut short", goodFile.substr(0, goodFile.size() / 2)},
        {"one bit flipped", flipped},
    };
    for (const auto& c : cases) {
        const test::TempFolder folder;
        folder.writeFile("device_key.bin", c.content);
        folder.writeFile("settings.json", "{\"keep\":true}");
        DeviceKey key;
        EXPECT_FALSE(key.load(folder.path())) << c.name;
        ASSERT_TRUE(key.ensure(folder.path())) << c.name;
        EXPECT_NE(key.publicKeyText(), original.publicKeyText()) << c.name;
        DeviceKey reloaded;
        ASSERT_TRUE(reloaded.load(folder.path())) << c.name << ": the file now holds the new key";
        EXPECT_EQ(reloaded.publicKeyText(), key.publicKeyText()) << c.name;
        EXPECT_EQ(test::readTestFile(folder.path() / "settings.json"), "{\"keep\":true}") << c.name;
        EXPECT_EQ(folder.entryNames(), (std::vector<std::string>{"device_key.bin", "settings.json"}))
            << c.name;
    }
}

// OpenSSL on the Linux side checks our signatures against the public key rebuilt from the
// point we publish, over exactly the canonical payload bytes; a signature over other bytes
// must fail, or the check proves nothing. Many signatures, so that halves with the top bit
// set and with leading zero bytes (shorter DER) both come up.
TEST(DeviceKey, OpenSslVerifiesItsSignaturesOverTheCanonicalPayload) {
    const test::TempFolder folder;
    DeviceKey key;
    ASSERT_TRUE(key.ensure(folder.path()));
    const std::string reply = R"({"challengeId":"c-1","payload":{"challengeId":"c-1","fingerprint":"ab12",)"
                              R"("issuer":"http://127.0.0.1:9","audience":"corvandell-client",)"
                              R"("expiry":"2030-01-01T00:05:00Z","nonce":"0f1e","clientTimestamp":)"
                              R"("2030-01-01T00:00:00Z"},"algorithm":"ES256"})";
    const std::string payload = buildChallengePayload(reply);
    ASSERT_FALSE(payload.empty());
    folder.writeFile("payload.txt", payload);
    folder.writeFile("other.txt", payload + " ");
    // SubjectPublicKeyInfo for id-ecPublicKey on prime256v1, up to the BIT STRING's point.
    folder.writeFile("spki-head.bin",
                     std::string("\x30\x59\x30\x13\x06\x07\x2a\x86\x48\xce\x3d\x02\x01\x06\x08"
                                 "\x2a\x86\x48\xce\x3d\x03\x01\x07\x03\x42\x00",
                                 26));
    folder.writeFile("point.b64", key.publicKeyText() + "\n");
    constexpr int kSignatures = 24;
    for (int i = 0; i < kSignatures; ++i) {
        const std::string signature = key.sign(payload);
        ASSERT_FALSE(signature.empty());
        ASSERT_LE(signature.size(), 96u);
        folder.writeFile("sig" + std::to_string(i) + ".b64", signature + "\n");
    }
    const std::string dir = test::linuxPathOf(folder.path());
    ASSERT_FALSE(dir.empty());
    const std::string verify = "openssl dgst -sha256 -verify pub.der -keyform DER -signature";
    EXPECT_TRUE(test::runLinuxShell(
        "cd '" + dir + "' && base64 -d point.b64 | cat spki-head.bin - > pub.der && " + "for i in $(seq 0 " +
        std::to_string(kSignatures - 1) + "); do " + "base64 -d sig$i.b64 > sig$i.der && " + verify +
        " sig$i.der payload.txt >/dev/null || exit 1; done"));
    EXPECT_FALSE(test::runLinuxShell("cd '" + dir + "' && " + verify + " sig0.der other.txt >/dev/null"));
}

} // namespace
} // namespace corvandell::win
