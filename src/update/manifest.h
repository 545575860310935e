// Validates an update manifest: a small signed text that must offer a newer, authentic and permitted update for this
// build. Pure functions without network or messages: a rejected manifest looks like no update. Any thread.
#pragma once

#include "platform/crypto.h"

#include <cstdint>
#include <string>
#include <string_view>

// An accepted manifest.
struct UpdateManifestInfo {
    std::string tier;     // the kind of build it is for
    std::string version;  // offered
    std::string url;      // of the installer
    std::string sha256;   // of the installer, 64 lower-case hexadecimal digits
    std::string sig;      // 128 hexadecimal digits, r then s
};

// A.B.C or A.B.C-preview.N, each number 0 to 99999.
struct SemanticVersion {
    int32_t major = 0;
    int32_t minor = 0;
    int32_t patch = 0;
    bool isPrerelease = false;
    int32_t prereleaseNumber = 0;
    bool valid = false;
};

// Returns a version with `valid` false if `text` is not a version.
SemanticVersion ParseVersion(std::string_view text);
// Compares two valid versions. A stable version is newer than its previews.
bool IsNewerVersion(const SemanticVersion& candidate, const SemanticVersion& own);

// Returns whether `url` starts with "https://" in lower case, followed by exactly the host of the update site or the API
// in any case.
bool IsAllowedDownloadUrl(std::string_view url);

// Returns the message that the signature of a manifest covers.
std::string BuildSignedMessage(std::string_view tier, std::string_view version, std::string_view sha256,
                               std::string_view url);

// Returns whether `sigHex`, 128 hexadecimal digits, is the signature of `message` by `key`. A null key verifies nothing.
bool VerifyManifestSignature(const P256Key* key, std::string_view message, std::string_view sigHex);

// Returns whether the manifest `body` offers an update to a build of `expectedTier` and `ownVersion`. Fills *out if so and
// leaves it unchanged otherwise. Checks the members only: the caller that fetches a manifest limits it to 16384 bytes.
bool EvaluateManifest(const P256Key* key, std::string_view body, std::string_view expectedTier,
                      std::string_view ownVersion, UpdateManifestInfo* out);
