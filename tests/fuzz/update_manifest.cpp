// Uses any text as a manifest, a version and a URL, and compares with second implementations of the rules. The key is
// the one of the signed fixtures: only manifests that it has signed may be accepted, and they must obey every rule.
#include "fuzz_input.h"

#include "base/build_settings.h"
#include "base/text.h"
#include "platform/files.h"
#include "update/flat_fields.h"
#include "update/manifest.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr const char* kVectors = "tests/fixtures/update/vectors.jsonl";

struct Signed {
    P256KeyHolder key;
    std::set<std::string> messages;  // all that the key has signed
};

Signed ReadSigned() {
    Signed all;
    std::string vectors;
    Require(ReadFileBytes(kVectors, &vectors));
    std::string blob;
    Require(DecodeHex(ReadFlatField(vectors, "hex"), &blob));
    all.key = ImportP256Key(blob);
    Require(all.key != nullptr);
    TextLines lines(vectors);
    for (std::string_view line; lines.Next(&line);) {
        const std::string message =
            BuildSignedMessage(ReadFlatField(line, "tier"), ReadFlatField(line, "version"),
                               ReadFlatField(line, "sha256"), ReadFlatField(line, "url"));
        if (VerifyManifestSignature(all.key.get(), message, ReadFlatField(line, "sig"))) {
            all.messages.insert(message);
        }
    }
    Require(all.messages.size() > 10);
    return all;
}

// ReadFlatField as a state machine.
std::string ReferenceField(const std::string& text, const std::string& key) {
    size_t at = text.find('"' + key + '"');
    if (at == std::string::npos) {
        return {};
    }
    at += key.size() + 2;
    enum { BeforeColon, BeforeQuote, Inside, Escaped } state = BeforeColon;
    std::string value;
    for (; at < text.size(); ++at) {
        const char byte = text[at];
        if (state == BeforeColon) {
            state = byte == ':' ? BeforeQuote : BeforeColon;
        } else if (state == BeforeQuote) {
            state = byte == '"' ? Inside : BeforeQuote;
        } else if (state == Escaped) {
            value += byte == 'n' ? '\n' : byte == 'r' ? '\r' : byte == 't' ? '\t' : byte;
            state = Inside;
        } else if (byte == '\\') {
            state = Escaped;
        } else if (byte == '"') {
            break;
        } else {
            value += byte;
        }
    }
    return value;
}

// Returns major, minor, patch, whether it is stable, and preview number, which compare like versions. Empty for a text
// that is not a version.
std::vector<int> ReferenceVersion(const std::string& text) {
    static const std::regex form("([0-9]{1,5})[.]([0-9]{1,5})[.]([0-9]{1,5})(-preview[.]([0-9]{1,5}))?");
    std::smatch parts;
    if (text.size() > 40 || !std::regex_match(text, parts, form)) {
        return {};
    }
    const bool stable = !parts[4].matched;
    return {std::stoi(parts[1]), std::stoi(parts[2]), std::stoi(parts[3]), stable ? 1 : 0,
            stable ? 0 : std::stoi(parts[5])};
}

bool ReferenceAllowed(const std::string& url) {
    for (const std::string_view host : {kUpdateSiteHost, kApiHost}) {
        const std::string wanted = "https://" + std::string(host);
        if (url.size() < wanted.size() || url.compare(0, 8, "https://") != 0) {
            continue;
        }
        const bool same = std::equal(wanted.begin(), wanted.end(), url.begin(), [](char a, char b) {
            return a == b || (b >= 'A' && b <= 'Z' && a == b + 32);
        });
        if (same && std::string("/?#").find(url.substr(wanted.size(), 1)) != std::string::npos) {
            return true;
        }
    }
    return false;
}

void RequireSameVersion(const std::string& a, const std::string& b) {
    const SemanticVersion first = ParseVersion(a);
    const SemanticVersion second = ParseVersion(b);
    const std::vector<int> referenceFirst = ReferenceVersion(a);
    const std::vector<int> referenceSecond = ReferenceVersion(b);
    Require(first.valid == !referenceFirst.empty() && second.valid == !referenceSecond.empty());
    if (first.valid && second.valid) {
        Require(IsNewerVersion(first, second) == (referenceFirst > referenceSecond));
        Require(IsNewerVersion(second, first) == (referenceSecond > referenceFirst));
    }
}

void RequireRefusedOrSigned(const Signed& known, const std::string& body, const std::string& tier,
                            const std::string& own) {
    UpdateManifestInfo info;
    if (!EvaluateManifest(known.key.get(), body, tier, own, &info)) {
        Require(info.tier.empty() && info.version.empty() && info.url.empty() && info.sha256.empty() &&
                info.sig.empty());
        return;
    }
    Require(known.messages.count("VRL-UPDATE-1|" + info.tier + "|" + info.version + "|" + info.sha256 + "|" +
                                 info.url) != 0);
    Require(info.tier == tier && ReferenceVersion(info.version) > ReferenceVersion(own));
    Require(ReferenceAllowed(info.url) && info.sha256.size() == 64 && info.sig.size() == 128);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Signed known = ReadSigned();
    const std::string text(reinterpret_cast<const char*>(data), size);

    for (const char* key : {"tier", "version", "url", "sha256", "sig"}) {
        Require(ReadFlatField(text, key) == ReferenceField(text, key));
    }
    RequireRefusedOrSigned(known, text, "plus", "1.0.1");
    RequireRefusedOrSigned(known, text, "core", "1.1.0-preview.1");

    // A line end separates two versions.
    const size_t middle = std::min(text.find('\n'), text.size());
    RequireSameVersion(text.substr(0, middle), middle < text.size() ? text.substr(middle + 1) : "1.0.1");
    RequireSameVersion(ReadFlatField(text, "version"), "1.1.0-preview.2");

    for (const std::string& url : {text, ReadFlatField(text, "url"), "https://" + text,
                                   "https://" + std::string(kUpdateSiteHost) + text}) {
        Require(IsAllowedDownloadUrl(url) == ReferenceAllowed(url));
    }

    std::string bytes;
    if (DecodeHex(text, &bytes)) {
        Require(bytes.size() * 2 == text.size());
        for (size_t i = 0; i < bytes.size(); ++i) {
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(bytes[i]));
            Require(std::tolower(text[i * 2]) == digits[0] && std::tolower(text[i * 2 + 1]) == digits[1]);
        }
    } else {
        Require(bytes.empty() && (text.size() % 2 != 0 ||
                                  text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos));
    }
    return 0;
}
