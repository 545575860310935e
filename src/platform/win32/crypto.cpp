#include "platform/crypto.h"

#include "platform/win32/system_library.h"

#include <algorithm>
#include <climits>
#include <cstddef>
// In this order: the second header needs the types of the first.
// clang-format off
#include <windows.h>
#include <bcrypt.h>
// clang-format on

namespace {

constexpr std::string_view kBlobHeader("ECS1\x20\0\0\0", 8);
constexpr size_t kCoordinate = 32;
static_assert(BCRYPT_ECDSA_PUBLIC_P256_MAGIC == ('E' | 'C' << 8 | 'S' << 16 | '1' << 24));
static_assert(sizeof(BCRYPT_ECCKEY_BLOB) == kBlobHeader.size() && offsetof(BCRYPT_ECCKEY_BLOB, cbKey) == 4);
static_assert(std::tuple_size_v<Sha256Digest> == 32);

// The functions are there on every Windows that runs this program; a null one counts as a failure of the first call.
struct BcryptFunctions {
    SystemLibrary library{L"bcrypt.dll"};
    decltype(&BCryptOpenAlgorithmProvider) openAlgorithmProvider =
        library.Find("BCryptOpenAlgorithmProvider");
    decltype(&BCryptCloseAlgorithmProvider) closeAlgorithmProvider =
        library.Find("BCryptCloseAlgorithmProvider");
    decltype(&BCryptCreateHash) createHash = library.Find("BCryptCreateHash");
    decltype(&BCryptDestroyHash) destroyHash = library.Find("BCryptDestroyHash");
    decltype(&BCryptHashData) hashData = library.Find("BCryptHashData");
    decltype(&BCryptFinishHash) finishHash = library.Find("BCryptFinishHash");
    decltype(&BCryptDestroyKey) destroyKey = library.Find("BCryptDestroyKey");
    decltype(&BCryptImportKeyPair) importKeyPair = library.Find("BCryptImportKeyPair");
    decltype(&BCryptVerifySignature) verifySignature = library.Find("BCryptVerifySignature");
    decltype(&BCryptGenRandom) genRandom = library.Find("BCryptGenRandom");

    bool Complete() const {
        return openAlgorithmProvider && closeAlgorithmProvider && createHash && destroyHash && hashData &&
               finishHash && destroyKey && importKeyPair && verifySignature && genRandom;
    }
};

const BcryptFunctions& Bcrypt() {
    static const BcryptFunctions functions;
    return functions;
}

bool Good(NTSTATUS status) {
    return status >= 0;
}

// The library takes non-const pointers also to data that it only reads.
PUCHAR Bytes(const void* bytes) {
    return static_cast<PUCHAR>(const_cast<void*>(bytes));
}

class Provider {
  public:
    explicit Provider(const wchar_t* algorithm) {
        if (!Bcrypt().Complete() || !Good(Bcrypt().openAlgorithmProvider(&handle_, algorithm, nullptr, 0))) {
            handle_ = nullptr;
        }
    }
    ~Provider() {
        if (handle_) {
            Bcrypt().closeAlgorithmProvider(handle_, 0);
        }
    }
    Provider(const Provider&) = delete;
    Provider& operator=(const Provider&) = delete;
    BCRYPT_ALG_HANDLE Handle() const { return handle_; }

  private:
    BCRYPT_ALG_HANDLE handle_ = nullptr;
};

}  // namespace

struct Sha256::State {
    State() {
        good = provider.Handle() &&
               Good(Bcrypt().createHash(provider.Handle(), &hash, nullptr, 0, nullptr, 0, 0));
    }
    ~State() {
        if (hash) {
            Bcrypt().destroyHash(hash);
        }
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    Provider provider{BCRYPT_SHA256_ALGORITHM};
    BCRYPT_HASH_HANDLE hash = nullptr;
    bool good = false;
};

Sha256::Sha256() : state_(std::make_unique<State>()) {}

Sha256::~Sha256() = default;

bool Sha256::Add(std::string_view bytes) {
    while (state_->good && !bytes.empty()) {
        const size_t count = std::min<size_t>(bytes.size(), INT_MAX);
        state_->good =
            Good(Bcrypt().hashData(state_->hash, Bytes(bytes.data()), static_cast<ULONG>(count), 0));
        bytes.remove_prefix(count);
    }
    return state_->good;
}

bool Sha256::Finish(Sha256Digest* digest) {
    Sha256Digest result{};
    const bool good = state_->good && Good(Bcrypt().finishHash(state_->hash, result.data(),
                                                               static_cast<ULONG>(result.size()), 0));
    state_->good = false;
    if (good) {
        *digest = result;
    }
    return good;
}

struct P256Key {
    P256Key() = default;
    ~P256Key() {
        if (key) {
            Bcrypt().destroyKey(key);
        }
    }
    P256Key(const P256Key&) = delete;
    P256Key& operator=(const P256Key&) = delete;

    Provider provider{BCRYPT_ECDSA_P256_ALGORITHM};
    BCRYPT_KEY_HANDLE key = nullptr;
};

void P256KeyRelease::operator()(P256Key* key) const {
    delete key;
}

P256KeyHolder ImportP256Key(std::string_view blob) {
    if (blob.size() != kBlobHeader.size() + 2 * kCoordinate ||
        blob.substr(0, kBlobHeader.size()) != kBlobHeader) {
        return nullptr;
    }
    P256KeyHolder holder(new P256Key);
    if (!holder->provider.Handle()) {
        return nullptr;
    }
    if (!Good(Bcrypt().importKeyPair(holder->provider.Handle(), nullptr, BCRYPT_ECCPUBLIC_BLOB, &holder->key,
                                     Bytes(blob.data()), static_cast<ULONG>(blob.size()), 0))) {
        holder->key = nullptr;
        return nullptr;
    }
    return holder;
}

bool VerifyP256(const P256Key& key, const Sha256Digest& digest, std::string_view signature) {
    return signature.size() == 2 * kCoordinate &&
           Good(Bcrypt().verifySignature(key.key, nullptr, Bytes(digest.data()),
                                         static_cast<ULONG>(digest.size()), Bytes(signature.data()),
                                         static_cast<ULONG>(signature.size()), 0));
}

bool RandomBytes(void* bytes, size_t count) {
    return count <= INT_MAX && Bcrypt().Complete() &&
           Good(Bcrypt().genRandom(nullptr, static_cast<PUCHAR>(bytes), static_cast<ULONG>(count),
                                   BCRYPT_USE_SYSTEM_PREFERRED_RNG));
}
