// SHA-256, ECDSA P-256 verification and random bytes, by the operating system's library. Throws only std::bad_alloc. A
// failure returns false or a null key. Any thread. One thread at a time uses an object, but several may verify with one
// key at once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

using Sha256Digest = std::array<uint8_t, 32>;

// A hash over bytes that arrive in pieces. Finish fails if a step before has failed.
class Sha256 {
  public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    bool Add(std::string_view bytes);
    bool Finish(Sha256Digest* digest);  // once, at the end; *digest is untouched on failure

  private:
    struct State;
    std::unique_ptr<State> state_;
};

// An imported public key. Its holder releases it.
struct P256Key;
struct P256KeyRelease {
    void operator()(P256Key* key) const;
};
using P256KeyHolder = std::unique_ptr<P256Key, P256KeyRelease>;

// `blob` is 72 bytes: "ECS1", the key length 32 as 32-bit little-endian, X, Y, each 32 bytes big-endian. Returns null for
// any other form, and for a point that is not on the curve if the library checks that.
P256KeyHolder ImportP256Key(std::string_view blob);

// `signature` is 64 bytes, r then s, each big-endian.
bool VerifyP256(const P256Key& key, const Sha256Digest& digest, std::string_view signature);

// Fills `bytes` with random bytes that are safe for secrets.
bool RandomBytes(void* bytes, size_t count);
