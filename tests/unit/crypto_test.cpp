#include "platform/crypto.h"

#include "base/build_settings.h"
#include "test_support.h"
#include "update/flat_fields.h"

namespace {

std::string HexOf(const Sha256Digest& digest) {
    std::string text;
    for (const uint8_t byte : digest) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 15];
    }
    return text;
}

std::string HashOf(std::initializer_list<std::string_view> pieces) {
    Sha256 hash;
    for (const std::string_view piece : pieces) {
        EXPECT_TRUE(hash.Add(piece));
    }
    Sha256Digest digest{};
    EXPECT_TRUE(hash.Finish(&digest));
    return HexOf(digest);
}

std::string EmbeddedKey() {
    return {reinterpret_cast<const char*>(kUpdatePublicKey), sizeof kUpdatePublicKey};
}

// The published example of P-256 with SHA-256 and the message "sample".
constexpr std::string_view kKnownKey = "4543533120000000"
                                       "60fed4ba255a9d31c961eb74c6356d68c049b8923b61fa6ce669622e60f29fb6"
                                       "7903fe1008b8bc99a41ae9e95628bc64f2f1b20c2d7e9f5177a3c294d4462299";
constexpr std::string_view kKnownSignature =
    "efd48b2aacb6a8fd1140dd9cd45e81d69d2c877b56aaf991c34d0ea84eaf3716"
    "f7cb1c942d657c41d436c7a1b6e29f65f3e900dbb9aff4064dc4ab2f843acda8";

std::string FromHex(std::string_view hex) {
    std::string bytes;
    EXPECT_TRUE(DecodeHex(hex, &bytes));
    return bytes;
}

}  // namespace

TEST(Crypto, HashesKnownStrings) {
    EXPECT_EQ(HashOf({}), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(HashOf({"abc"}), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(HashOf({"a", "", "bc"}), HashOf({"abc"}));
    const std::string million(1'000'000, 'a');
    EXPECT_EQ(HashOf({million}), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Crypto, AHashCanBeFinishedOnce) {
    Sha256 hash;
    Sha256Digest digest{};
    ASSERT_TRUE(hash.Finish(&digest));
    const Sha256Digest first = digest;
    EXPECT_FALSE(hash.Finish(&digest));
    EXPECT_FALSE(hash.Add("more"));
    EXPECT_EQ(digest, first);
}

TEST(Crypto, VerifiesAKnownSignature) {
    const P256KeyHolder key = ImportP256Key(FromHex(kKnownKey));
    ASSERT_TRUE(key);
    Sha256 hash;
    Sha256Digest digest{};
    ASSERT_TRUE(hash.Add("sample") && hash.Finish(&digest));
    const std::string signature = FromHex(kKnownSignature);
    EXPECT_TRUE(VerifyP256(*key, digest, signature));
    for (const size_t at : {0U, 31U, 32U, 63U}) {
        std::string changed = signature;
        changed[at] = static_cast<char>(changed[at] ^ 1);
        EXPECT_FALSE(VerifyP256(*key, digest, changed)) << at;
    }
    EXPECT_FALSE(VerifyP256(*key, digest, signature.substr(1)));
    EXPECT_FALSE(VerifyP256(*key, digest, signature + '\0'));
    EXPECT_FALSE(VerifyP256(*key, digest, std::string(64, '\0')));
    EXPECT_FALSE(VerifyP256(*key, digest, std::string(64, '\xFF')));
    digest[5] ^= 1;
    EXPECT_FALSE(VerifyP256(*key, digest, signature));
}

TEST(Crypto, RejectsKeysOfAnotherLengthOrKind) {
    const std::string blob = EmbeddedKey();
    EXPECT_TRUE(ImportP256Key(blob));
    EXPECT_FALSE(ImportP256Key(""));
    EXPECT_FALSE(ImportP256Key(blob.substr(0, 71)));
    EXPECT_FALSE(ImportP256Key(blob + "x"));
    std::string changed = blob;
    changed[3] = '3';
    EXPECT_FALSE(ImportP256Key(changed));
    changed = blob;
    changed[4] = 48;
    EXPECT_FALSE(ImportP256Key(changed));
}

#ifndef _WIN32
// NOTE: Wine's BCrypt imports a point that is not on the curve, so Windows builds cannot run this test there.
TEST(Crypto, RejectsAPointThatIsNotOnTheCurve) {
    std::string blob = EmbeddedKey();
    blob[71] = static_cast<char>(blob[71] ^ 1);
    EXPECT_FALSE(ImportP256Key(blob));
    EXPECT_FALSE(ImportP256Key(blob.substr(0, 8) + std::string(64, '\0')));
}
#endif

TEST(Crypto, RandomBytesDiffer) {
    std::array<uint8_t, 32> first{};
    std::array<uint8_t, 32> second{};
    ASSERT_TRUE(RandomBytes(first.data(), first.size()));
    ASSERT_TRUE(RandomBytes(second.data(), second.size()));
    EXPECT_NE(first, second);
    EXPECT_TRUE(RandomBytes(first.data(), 0));
}
