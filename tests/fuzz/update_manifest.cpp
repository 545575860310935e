// Any text as a manifest, a version and an address: nothing is accepted that nobody signed, what is accepted obeys the
// rules, and the order of versions is an order.
#include "base/build_settings.h"
#include "update/flat_fields.h"
#include "update/manifest.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void Require(bool good) {
    if (!good) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    static const P256KeyHolder kKey =
        ImportP256Key({reinterpret_cast<const char*>(kUpdatePublicKey), sizeof kUpdatePublicKey});
    Require(kKey != nullptr);

    UpdateManifestInfo info;
    Require(!EvaluateManifest(kKey.get(), text, "plus", "1.0.1", &info));
    Require(info.tier.empty() && info.sig.empty());
    for (const char* key : {"tier", "version", "url", "sha256", "sig"}) {
        Require(ReadFlatField(text, key).size() <= text.size());
    }

    const SemanticVersion offered = ParseVersion(ReadFlatField(text, "version"));
    const SemanticVersion whole = ParseVersion(text);
    Require(!IsNewerVersion(offered, offered));
    Require(!(IsNewerVersion(offered, whole) && IsNewerVersion(whole, offered)));

    if (IsAllowedDownloadUrl(text)) {
        const std::string_view rest = text.substr(8);
        Require(rest.size() >= kUpdateSiteHost.size());
        Require(rest.substr(0, rest.find_first_of("/?#")).find_first_of("@: \\") == std::string_view::npos);
    }
    std::string bytes;
    Require(!DecodeHex(text, &bytes) || bytes.size() * 2 == text.size());
    return 0;
}
