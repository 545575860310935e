#include "platform/crypto.h"

#include <climits>
#include <cstring>
#include <openssl/core_names.h>
#include <openssl/ecdsa.h>
#include <openssl/evp.h>
#include <openssl/params.h>
#include <openssl/rand.h>

namespace {

template <auto Free> struct Release {
    template <typename T> void operator()(T* object) const { Free(object); }
};
using Context = std::unique_ptr<EVP_PKEY_CTX, Release<EVP_PKEY_CTX_free>>;
using Signature = std::unique_ptr<ECDSA_SIG, Release<ECDSA_SIG_free>>;
using Number = std::unique_ptr<BIGNUM, Release<BN_free>>;

constexpr std::string_view kBlobHeader("ECS1\x20\0\0\0", 8);
constexpr size_t kCoordinate = 32;

const unsigned char* Bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

Number ReadNumber(std::string_view bigEndian) {
    return Number(BN_bin2bn(Bytes(bigEndian), static_cast<int>(bigEndian.size()), nullptr));
}

}  // namespace

struct Sha256::State {
    std::unique_ptr<EVP_MD_CTX, Release<EVP_MD_CTX_free>> context{EVP_MD_CTX_new()};
    bool good = false;
};

Sha256::Sha256() : state_(std::make_unique<State>()) {
    state_->good = state_->context && EVP_DigestInit_ex(state_->context.get(), EVP_sha256(), nullptr) == 1;
}

Sha256::~Sha256() = default;

bool Sha256::Add(std::string_view bytes) {
    state_->good = state_->good && EVP_DigestUpdate(state_->context.get(), bytes.data(), bytes.size()) == 1;
    return state_->good;
}

bool Sha256::Finish(Sha256Digest* digest) {
    Sha256Digest result{};
    const bool good = state_->good && EVP_DigestFinal_ex(state_->context.get(), result.data(), nullptr) == 1;
    state_->good = false;
    if (good) {
        *digest = result;
    }
    return good;
}

struct P256Key {
    std::unique_ptr<EVP_PKEY, Release<EVP_PKEY_free>> key;
};

void P256KeyRelease::operator()(P256Key* key) const {
    delete key;
}

P256KeyHolder ImportP256Key(std::string_view blob) {
    if (blob.size() != kBlobHeader.size() + 2 * kCoordinate ||
        blob.substr(0, kBlobHeader.size()) != kBlobHeader) {
        return nullptr;
    }
    unsigned char point[1 + 2 * kCoordinate] = {POINT_CONVERSION_UNCOMPRESSED};
    std::memcpy(point + 1, blob.data() + kBlobHeader.size(), 2 * kCoordinate);
    char curve[] = "P-256";
    const OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_PKEY_PARAM_GROUP_NAME, curve, 0),
        OSSL_PARAM_construct_octet_string(OSSL_PKEY_PARAM_PUB_KEY, point, sizeof point),
        OSSL_PARAM_construct_end(),
    };
    const Context context(EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr));
    EVP_PKEY* key = nullptr;
    if (!context || EVP_PKEY_fromdata_init(context.get()) != 1 ||
        EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_PUBLIC_KEY, const_cast<OSSL_PARAM*>(parameters)) !=
            1) {
        return nullptr;
    }
    P256KeyHolder holder(new P256Key);
    holder->key.reset(key);
    return holder;
}

bool VerifyP256(const P256Key& key, const Sha256Digest& digest, std::string_view signature) {
    if (signature.size() != 2 * kCoordinate) {
        return false;
    }
    const Signature parts(ECDSA_SIG_new());
    Number r = ReadNumber(signature.substr(0, kCoordinate));
    Number s = ReadNumber(signature.substr(kCoordinate));
    if (!parts || !r || !s || ECDSA_SIG_set0(parts.get(), r.get(), s.get()) != 1) {
        return false;
    }
    // The signature owns both numbers now.
    static_cast<void>(r.release());
    static_cast<void>(s.release());
    unsigned char encoded[128];  // two numbers of at most 33 bytes and six bytes of frame
    unsigned char* end = encoded;
    const int length = i2d_ECDSA_SIG(parts.get(), &end);
    const Context context(EVP_PKEY_CTX_new_from_pkey(nullptr, key.key.get(), nullptr));
    return length > 0 && context && EVP_PKEY_verify_init(context.get()) == 1 &&
           EVP_PKEY_verify(context.get(), encoded, static_cast<size_t>(length), digest.data(),
                           digest.size()) == 1;
}

bool RandomBytes(void* bytes, size_t count) {
    return count <= INT_MAX && RAND_bytes(static_cast<unsigned char*>(bytes), static_cast<int>(count)) == 1;
}
