// Validates the small signed text that offers an update: does it name a newer, authentic, permitted one for this build?
// Pure logic, no network, no messages: a rejected manifest looks like no update at all. Any thread.
#pragma once

#include "platform/crypto.h"

#include <cstdint>
#include <string>
#include <string_view>

// An accepted manifest.
struct UpdateManifestInfo {
    std::string tier;     // the kind of build it is for
    std::string version;  // the offered version
    std::string url;      // where the installer is
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

SemanticVersion ParseVersion(std::string_view text);  // all at their defaults if the text is not a version
bool IsNewerVersion(const SemanticVersion& candidate, const SemanticVersion& own);

// Returns true for "https://" in lower case and a host that equals, in any case, that of the update site or the API.
bool IsAllowedDownloadUrl(std::string_view url);

std::string BuildSignedMessage(std::string_view tier, std::string_view version, std::string_view sha256,
                               std::string_view url);

// Returns false for a null key, and unless `sigHex` is 128 hexadecimal digits.
bool VerifyManifestSignature(const P256Key* key, std::string_view message, std::string_view sigHex);

// Fills *out if it returns true, and leaves it unchanged otherwise. A manifest has at most 16384 bytes. The code that
// fetches one enforces that limit; this function validates only the members.
bool EvaluateManifest(const P256Key* key, std::string_view body, std::string_view expectedTier,
                      std::string_view ownVersion, UpdateManifestInfo* out);
