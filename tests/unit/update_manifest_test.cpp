#include "update/manifest.h"

#include "base/build_settings.h"
#include "base/text.h"
#include "test_support.h"
#include "update/flat_fields.h"
#include "update/self_check.h"

namespace {

const std::string kSite(kUpdateSiteHost);
const std::string kApi(kApiHost);

bool Newer(std::string_view candidate, std::string_view own) {
    return IsNewerVersion(ParseVersion(candidate), ParseVersion(own));
}

// Provides the signed cases of the fixture: its key line, and each case line by its name.
class UpdateVectors : public ::testing::Test {
  protected:
    UpdateVectors() : text_(ReadFile(FixturePath("update/vectors.jsonl"))) {
        std::string blob;
        EXPECT_TRUE(DecodeHex(ReadFlatField(text_, "hex"), &blob));
        key_ = ImportP256Key(blob);
        EXPECT_TRUE(key_);
    }

    std::string KeyLine() const { return text_.substr(0, text_.find('\n') + 1); }

    std::string Case(std::string_view name) const {
        TextLines lines(text_);
        for (std::string_view line; lines.Next(&line);) {
            if (ReadFlatField(line, "name") == name) {
                return std::string(line);
            }
        }
        ADD_FAILURE() << "case not found: " << name;
        return {};
    }

    bool Evaluate(std::string_view body, UpdateManifestInfo* out = nullptr) const {
        UpdateManifestInfo info;
        return EvaluateManifest(key_.get(), body, "plus", "1.0.1", out ? out : &info);
    }

    std::string Report(std::string_view vectors, bool* passed) const {
        const std::string path = folder_.File("some vectors.jsonl");
        WriteFile(path, vectors);
        std::string report;
        *passed = RunUpdateSelfCheck(path, &report);
        return report;
    }

    TempFolder folder_;
    std::string text_;
    P256KeyHolder key_;
    const std::string hostRows_ = "PASS host: " + kSite + " allowed\n" + "PASS host: " + kApi + " allowed\n" +
                                  "PASS host: look-alike subdomain rejected\n"
                                  "PASS host: userinfo trick rejected\n"
                                  "PASS host: explicit port rejected\n"
                                  "PASS host: other site rejected\n"
                                  "PASS host: plain http rejected\n"
                                  "PASS host: tester site rejected (Plus/Core build)\n";
};

constexpr const char* kKeyPassed = "PASS test key loads as a valid P-256 public key\n";
constexpr const char* kKeyFailed = "FAIL test key loads as a valid P-256 public key\n";
constexpr const char* kSkipped = "FAIL case before a valid key line - skipped\n";

}  // namespace

TEST(UpdateFields, ReadTheStringAfterTheFirstKey) {
    EXPECT_EQ(ReadFlatField(R"({"tier":"plus"})", "tier"), "plus");
    EXPECT_EQ(ReadFlatField("\"tier\" \n : \n \"plus\"", "tier"), "plus");
    EXPECT_EQ(ReadFlatField(R"({"tier":"a","tier":"b"})", "tier"), "a");
    EXPECT_EQ(ReadFlatField(R"({"tier":12,"url":"x"})", "tier"), "url");
    EXPECT_EQ(ReadFlatField(R"({"name":"tier","tier":"x"})", "tier"), "x");
    EXPECT_EQ(ReadFlatField(R"({"tier":""})", "tier"), "");
    for (const char* text :
         {"", "tier", "\"tier\"", "\"tier\":", "\"tier\":12", "{\"Tier\":\"x\"}", "{\"a\":\"x\"}"}) {
        EXPECT_EQ(ReadFlatField(text, "tier"), "") << text;
    }
}

TEST(UpdateFields, UnescapeTheString) {
    EXPECT_EQ(ReadFlatField(R"({"a":"1\n2\r3\t4\"5\\6\/7\b8\u0041"})", "a"), "1\n2\r3\t4\"5\\6/7b8u0041");
    EXPECT_EQ(ReadFlatField(R"({"a":"left)", "a"), "left");
    EXPECT_EQ(ReadFlatField("{\"a\":\"left\\", "a"), "left");
    EXPECT_EQ(ReadFlatField("{\"a\":\"left\\\"", "a"), "left\"");
}

TEST(UpdateFields, TruthIsTheWordTrueAfterTheColon) {
    EXPECT_TRUE(ReadFlatTruth(R"({"expect":true})", "expect"));
    EXPECT_TRUE(ReadFlatTruth("{\"expect\" : \t true}", "expect"));
    EXPECT_FALSE(ReadFlatTruth(R"({"expect":false})", "expect"));
    EXPECT_FALSE(ReadFlatTruth(R"({"expect":"true"})", "expect"));
    EXPECT_FALSE(ReadFlatTruth(R"({"expect":True})", "expect"));
    EXPECT_FALSE(ReadFlatTruth(R"({"expectedTier":true})", "expect"));
    EXPECT_FALSE(ReadFlatTruth("", "expect"));
}

TEST(UpdateFields, HexIsDecodedInPairs) {
    std::string bytes = "before";
    for (const char* text : {"0", "0g", "x0", "00 ", "0x00", "0:"}) {
        EXPECT_FALSE(DecodeHex(text, &bytes)) << text;
    }
    EXPECT_EQ(bytes, "before");
    EXPECT_TRUE(DecodeHex("00aFFa", &bytes));
    EXPECT_EQ(bytes, std::string("\0\xAF\xFA", 3));
    EXPECT_TRUE(DecodeHex("", &bytes));
    EXPECT_EQ(bytes, "");
}

TEST(UpdateVersion, ParsesOneFormOnly) {
    const SemanticVersion stable = ParseVersion("001.20.99999");
    EXPECT_TRUE(stable.valid);
    EXPECT_EQ(stable.major, 1);
    EXPECT_EQ(stable.minor, 20);
    EXPECT_EQ(stable.patch, 99999);
    EXPECT_FALSE(stable.isPrerelease);
    const SemanticVersion preview = ParseVersion("1.1.0-preview.07");
    EXPECT_TRUE(preview.valid);
    EXPECT_TRUE(preview.isPrerelease);
    EXPECT_EQ(preview.prereleaseNumber, 7);
    for (const char* text : {"",
                             "1",
                             "1.0",
                             "1.0.",
                             "1..0",
                             ".0.1",
                             "1.0.1.2",
                             "1.0.1-rc.1",
                             "1.0.100000",
                             "100000.0.0",
                             "1.000000.0",
                             "v1.0.1",
                             "1.0.1 ",
                             " 1.0.1",
                             "+1.0.1",
                             "-1.0.1",
                             "1.0.1-preview",
                             "1.0.1-preview.",
                             "1.0.1-preview.100000",
                             "1.0.1-Preview.1",
                             "1.0.1-preview.1.",
                             "1.0.1-preview.x",
                             "1.0.1preview.1",
                             "1,0,1"}) {
        EXPECT_FALSE(ParseVersion(text).valid) << text;
        EXPECT_EQ(ParseVersion(text).major, 0) << text;
    }
}

TEST(UpdateVersion, ComparesNumbersThenPreview) {
    EXPECT_TRUE(Newer("1.0.2", "1.0.1"));
    EXPECT_FALSE(Newer("1.0.1", "1.0.1"));
    EXPECT_FALSE(Newer("1.0.1-preview.3", "1.0.1"));
    EXPECT_TRUE(Newer("2.0.0-preview.1", "1.0.1"));
    EXPECT_TRUE(Newer("1.1.0-preview.3", "1.1.0-preview.2"));
    EXPECT_FALSE(Newer("1.1.0-preview.2", "1.1.0-preview.2"));
    EXPECT_FALSE(Newer("1.1.0-preview.1", "1.1.0-preview.2"));
    EXPECT_TRUE(Newer("1.1.0", "1.1.0-preview.2"));
    EXPECT_TRUE(Newer("1.0.10", "1.0.9"));
    EXPECT_FALSE(Newer("1.9.9", "2.0.0"));
    EXPECT_FALSE(Newer("2.0.9", "2.1.0"));
}

TEST(UpdateUrl, AllowsOnlyTwoHosts) {
    for (const std::string& url :
         {"https://" + kSite, "https://" + kSite + "/", "https://" + kSite + "?a", "https://" + kSite + "#a",
          "https://" + kApi + "/download/plus", std::string("https://VARNELLE.Example/a")}) {
        EXPECT_TRUE(IsAllowedDownloadUrl(url)) << url;
    }
    for (const std::string& url :
         {std::string(), std::string("https://"), kSite, "HTTPS://" + kSite + "/", "http://" + kSite + "/",
          " https://" + kSite, "https:///" + kSite, "https://" + kSite + ":443/", "https://me@" + kSite + "/",
          "https://" + kSite + "@elsewhere.example/", "https://" + kSite + ".elsewhere.example/",
          "https://www." + kSite + "/", "https://" + kSite + "./",
          "https://" + kSite + "\\@elsewhere.example/",
          "https://" + std::string(kTesterSiteHost) + "/update/x.exe"}) {
        EXPECT_FALSE(IsAllowedDownloadUrl(url)) << url;
    }
}

TEST(UpdateMessage, HasTheHashBeforeTheUrl) {
    EXPECT_EQ(BuildSignedMessage("plus", "1.0.2", "abc", "https://x"),
              "VRL-UPDATE-1|plus|1.0.2|abc|https://x");
}

TEST_F(UpdateVectors, AnAcceptedManifestFillsTheRecord) {
    const std::string good = Case("newer patch");
    UpdateManifestInfo info;
    ASSERT_TRUE(Evaluate(good, &info));
    EXPECT_EQ(info.tier, "plus");
    EXPECT_EQ(info.version, "1.0.2");
    EXPECT_EQ(info.url, ReadFlatField(good, "url"));
    EXPECT_EQ(info.sha256, ReadFlatField(good, "sha256"));
    EXPECT_EQ(info.sig, ReadFlatField(good, "sig"));
    // Another order, more members, escapes.
    const std::string shuffled = "{\"sig\":\"" + info.sig + "\",\"more\":[1,2],\"url\":\"https:\\/\\/" +
                                 info.url.substr(8) + "\",\n\"sha256\" : \"" + info.sha256 +
                                 "\",\"version\":\"1.0.2\",\"tier\":\"pl\\us\"}";
    EXPECT_TRUE(Evaluate(shuffled));
}

// The caller that fetches a manifest and the tool that signs one enforce the limit of 16384 bytes.
TEST_F(UpdateVectors, AManifestIsValidatedByItsMembersAtAnyLength) {
    const std::string good = Case("newer patch");
    const std::string open = good.substr(0, good.rfind('}'));
    for (const size_t size : {size_t{16384}, size_t{16385}, size_t{1} << 20}) {
        const std::string filled = open + ",\"more\":\"" + std::string(size - open.size() - 11, 'x') + "\"}";
        ASSERT_EQ(filled.size(), size);
        EXPECT_TRUE(Evaluate(filled)) << size;
        EXPECT_TRUE(Evaluate(std::string(size - good.size(), ' ') + good)) << size;
    }
}

TEST_F(UpdateVectors, ARejectedManifestLeavesTheRecordUnchanged) {
    UpdateManifestInfo info;
    info.tier = "before";
    for (const char* name :
         {"same version", "another tier", "plain http", "signature of 126 digits", "without url"}) {
        EXPECT_FALSE(Evaluate(Case(name), &info)) << name;
    }
    EXPECT_FALSE(Evaluate("", &info));
    EXPECT_EQ(info.tier, "before");
    EXPECT_EQ(info.sig, "");
}

TEST_F(UpdateVectors, RejectsEveryManifestWithoutTheRightKey) {
    const std::string good = Case("newer patch");
    UpdateManifestInfo info;
    EXPECT_FALSE(EvaluateManifest(nullptr, good, "plus", "1.0.1", &info));
    const P256KeyHolder other =
        ImportP256Key({reinterpret_cast<const char*>(kUpdatePublicKey), sizeof kUpdatePublicKey});
    ASSERT_TRUE(other);
    EXPECT_FALSE(EvaluateManifest(other.get(), good, "plus", "1.0.1", &info));
    // A manifest for another tier is accepted by a build of that tier.
    EXPECT_TRUE(EvaluateManifest(key_.get(), Case("another tier"), "core", "1.0.1", &info));
    EXPECT_FALSE(EvaluateManifest(key_.get(), Case("unknown tier"), "nightly", "1.0.1", &info));
}

TEST_F(UpdateVectors, SelfCheckPassesEveryCase) {
    std::string report;
    EXPECT_TRUE(RunUpdateSelfCheck(FixturePath("update/vectors.jsonl"), &report));
    std::string expected = kKeyPassed;
    TextLines lines(text_);
    for (std::string_view line; lines.Next(&line);) {
        if (ReadFlatField(line, "line") == "case") {
            expected += "PASS " + ReadFlatField(line, "name") + "\n";
        }
    }
    EXPECT_EQ(report, expected + hostRows_);
}

TEST_F(UpdateVectors, SelfCheckFailsAWrongExpectation) {
    std::string wrong = Case("newer patch");
    wrong.replace(wrong.find("\"expect\":true"), 13, "\"expect\":false");
    bool passed = true;
    EXPECT_EQ(Report(KeyLine() + wrong, &passed), kKeyPassed + std::string("FAIL newer patch\n") + hostRows_);
    EXPECT_FALSE(passed);
}

TEST_F(UpdateVectors, SelfCheckNumbersUnnamedCases) {
    std::string nameless = Case("newer patch");
    nameless.replace(nameless.find("newer patch"), 11, "");
    bool passed = true;
    EXPECT_EQ(
        Report(nameless + "\r\n\r\n{\"line\":\"other\"}\nnothing\n" + KeyLine() + nameless + "\n", &passed),
        kSkipped + std::string(kKeyPassed) + "PASS case 2\n" + hostRows_);
    EXPECT_FALSE(passed);
}

TEST_F(UpdateVectors, SelfCheckSkipsCasesWithoutAValidKey) {
    const std::string good = Case("newer patch") + "\n";
    bool passed = true;
    for (const char* hex : {"", "4543", "zz", "454353", "4543533120000000"}) {
        const std::string bad = std::string("{\"line\":\"key\",\"hex\":\"") + hex + "\"}\n";
        EXPECT_EQ(Report(KeyLine() + bad + good, &passed),
                  kKeyPassed + std::string(kKeyFailed) + kSkipped + hostRows_);
        EXPECT_FALSE(passed);
        EXPECT_EQ(Report(bad + KeyLine() + good, &passed),
                  kKeyFailed + std::string(kKeyPassed) + "PASS newer patch\n" + hostRows_);
        EXPECT_FALSE(passed);
    }
}

TEST_F(UpdateVectors, SelfCheckFailsWithoutACase) {
    bool passed = true;
    EXPECT_EQ(Report("", &passed), hostRows_ + "FAIL no cases found in vectors file\n");
    EXPECT_FALSE(passed);
    EXPECT_EQ(Report(KeyLine(), &passed), kKeyPassed + hostRows_ + "FAIL no cases found in vectors file\n");
    EXPECT_FALSE(passed);
}

TEST_F(UpdateVectors, SelfCheckFailsWithoutItsFile) {
    const std::string path = folder_.File("none");
    std::string report;
    EXPECT_FALSE(RunUpdateSelfCheck(path, &report));
    EXPECT_EQ(report, "FAIL could not open vectors file: " + path + "\n");
}
