#include "update/manifest.h"

#include "base/build_settings.h"
#include "base/text.h"
#include "update/flat_fields.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::string_view kTiers[] = {"core", "plus", "preview", "mac-core", "mac-plus", "mac-preview"};
constexpr std::string_view kSecurePrefix = "https://";
constexpr size_t kSha256Digits = 64;
constexpr size_t kSignatureBytes = 64;
constexpr size_t kMaxVersionDigits = 5;

// Removes one to five digits from the front of *text. Returns false if there are none or more.
bool TakeNumber(std::string_view* text, int32_t* number) {
    size_t count = 0;
    int32_t value = 0;
    while (count < text->size() && (*text)[count] >= '0' && (*text)[count] <= '9') {
        if (count == kMaxVersionDigits) {
            return false;
        }
        value = value * 10 + ((*text)[count] - '0');
        ++count;
    }
    text->remove_prefix(count);
    *number = value;
    return count > 0;
}

// Removes `expected` from the front of *text. Returns false if it is not there.
bool TakeText(std::string_view* text, std::string_view expected) {
    if (!StartsWith(*text, expected)) {
        return false;
    }
    text->remove_prefix(expected.size());
    return true;
}

bool IsSha256Text(std::string_view text) {
    return text.size() == kSha256Digits && std::all_of(text.begin(), text.end(), [](char digit) {
               return (digit >= '0' && digit <= '9') || (digit >= 'a' && digit <= 'f');
           });
}

// Accepts visible ASCII without the separator of the signed message.
bool IsPlainUrl(std::string_view url) {
    return std::all_of(url.begin(), url.end(),
                       [](char byte) { return byte >= 0x21 && byte <= 0x7E && byte != '|'; });
}

}  // namespace

SemanticVersion ParseVersion(std::string_view text) {
    SemanticVersion version;
    if (!TakeNumber(&text, &version.major) || !TakeText(&text, ".") || !TakeNumber(&text, &version.minor) ||
        !TakeText(&text, ".") || !TakeNumber(&text, &version.patch)) {
        return {};
    }
    if (TakeText(&text, "-preview.")) {
        version.isPrerelease = true;
        if (!TakeNumber(&text, &version.prereleaseNumber)) {
            return {};
        }
    }
    if (!text.empty()) {
        return {};
    }
    version.valid = true;
    return version;
}

bool IsNewerVersion(const SemanticVersion& candidate, const SemanticVersion& own) {
    if (candidate.major != own.major) {
        return candidate.major > own.major;
    }
    if (candidate.minor != own.minor) {
        return candidate.minor > own.minor;
    }
    if (candidate.patch != own.patch) {
        return candidate.patch > own.patch;
    }
    if (candidate.isPrerelease != own.isPrerelease) {
        return own.isPrerelease;
    }
    return candidate.isPrerelease && candidate.prereleaseNumber > own.prereleaseNumber;
}

bool IsAllowedDownloadUrl(std::string_view url) {
    if (!StartsWith(url, kSecurePrefix)) {
        return false;
    }
    url.remove_prefix(kSecurePrefix.size());
    // Compare whole strings: a port, a user name or a longer domain makes a different string.
    const std::string host = LowerAscii(url.substr(0, url.find_first_of("/?#")));
    return host == kUpdateSiteHost || host == kApiHost;
}

std::string BuildSignedMessage(std::string_view tier, std::string_view version, std::string_view sha256,
                               std::string_view url) {
    std::string message = "VRL-UPDATE-1|";
    message.append(tier).append("|").append(version).append("|").append(sha256).append("|").append(url);
    return message;
}

bool VerifyManifestSignature(const P256Key* key, std::string_view message, std::string_view sigHex) {
    std::string signature;
    if (!key || !DecodeHex(sigHex, &signature) || signature.size() != kSignatureBytes) {
        return false;
    }
    Sha256 hash;
    Sha256Digest digest{};
    return hash.Add(message) && hash.Finish(&digest) && VerifyP256(*key, digest, signature);
}

bool EvaluateManifest(const P256Key* key, std::string_view body, std::string_view expectedTier,
                      std::string_view ownVersion, UpdateManifestInfo* out) {
    UpdateManifestInfo info{ReadFlatField(body, "tier"), ReadFlatField(body, "version"),
                            ReadFlatField(body, "url"), ReadFlatField(body, "sha256"),
                            ReadFlatField(body, "sig")};
    if (info.tier.empty() || info.version.empty() || info.url.empty() || info.sha256.empty() ||
        info.sig.empty()) {
        return false;
    }
    if (std::find(std::begin(kTiers), std::end(kTiers), info.tier) == std::end(kTiers)) {
        return false;
    }
    const SemanticVersion offered = ParseVersion(info.version);
    if (!offered.valid || !IsSha256Text(info.sha256) || !IsPlainUrl(info.url)) {
        return false;
    }
    // Check the signature before anything that depends on this build: an unsigned manifest must not probe the build.
    if (!VerifyManifestSignature(key, BuildSignedMessage(info.tier, info.version, info.sha256, info.url),
                                 info.sig)) {
        return false;
    }
    if (info.tier != expectedTier) {
        return false;
    }
    const SemanticVersion own = ParseVersion(ownVersion);
    if (!own.valid || !IsNewerVersion(offered, own)) {
        return false;
    }
    // Even a signed manifest may name only a permitted host.
    if (!IsAllowedDownloadUrl(info.url)) {
        return false;
    }
    *out = std::move(info);
    return true;
}
