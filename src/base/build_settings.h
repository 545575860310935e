// What a deployment of the program sets at build time: the hosts of its updates and its help, and the key whose
// signature on an update it accepts. The default hosts are in a reserved domain that nobody can own.
#pragma once

#include <cstdint>
#include <string_view>

inline constexpr std::string_view kProgramVersion = "1.0.1";
inline constexpr std::string_view kUpdateTier = "plus";  // the kind of build, as manifests name it

// Host names in lower case, without a port.
inline constexpr std::string_view kUpdateSiteHost = "varnelle.example";
inline constexpr std::string_view kApiHost = "api.varnelle.example";
inline constexpr std::string_view kTesterSiteHost = "testers.varnelle.example";

inline constexpr std::string_view kDocumentationUrl = "https://docs.varnelle.example/";
inline constexpr std::string_view kCommunityUrl = "https://community.varnelle.example/";

// The P-256 key that verifies update manifests: "ECS1", the key length 32 in little-endian order, X, Y. The private half
// of this default was never kept: a build that does not set its own key accepts no update.
inline constexpr uint8_t kUpdatePublicKey[72] = {
    0x45, 0x43, 0x53, 0x31, 0x20, 0x00, 0x00, 0x00, 0xfa, 0xa6, 0x02, 0x13, 0x90, 0x54, 0x8f,
    0x8a, 0xc7, 0xc5, 0x6c, 0x57, 0xca, 0xfa, 0x51, 0x13, 0xf7, 0xdd, 0xa8, 0xae, 0x31, 0x5d,
    0x3c, 0x66, 0x86, 0x90, 0x97, 0x83, 0x2e, 0x30, 0xda, 0xc2, 0xc2, 0xde, 0x52, 0x3f, 0xfa,
    0x7f, 0x48, 0x12, 0x68, 0x89, 0xd5, 0x13, 0x7f, 0xfb, 0xc9, 0x08, 0x53, 0xe5, 0x82, 0xe4,
    0x97, 0xfa, 0xe1, 0xbb, 0x35, 0x4b, 0x78, 0xba, 0xc4, 0x43, 0xe1, 0xd4,
};
