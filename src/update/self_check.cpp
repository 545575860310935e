#include "update/self_check.h"

#include "base/build_settings.h"
#include "base/json_writer.h"
#include "base/numbers.h"
#include "base/text.h"
#include "platform/files.h"
#include "update/flat_fields.h"
#include "update/manifest.h"

#include <string_view>

namespace {

struct SelfCheck {
    std::string* report;
    P256KeyHolder key;  // of the last key line; null before one and after a bad one
    int cases = 0;
    bool passed = true;
};

void AddLine(SelfCheck& check, bool good, std::string_view what) {
    check.report->append(good ? "PASS " : "FAIL ").append(what).append("\n");
    check.passed = check.passed && good;
}

void CheckKey(SelfCheck& check, std::string_view line) {
    std::string blob;
    check.key.reset();
    if (DecodeHex(ReadFlatField(line, "hex"), &blob)) {
        check.key = ImportP256Key(blob);
    }
    AddLine(check, check.key != nullptr, "test key loads as a valid P-256 public key");
}

// Returns the five values of a case as a manifest. Escapes nothing, so that a case can contain any text.
std::string CaseManifest(std::string_view line) {
    std::string manifest;
    JsonWriter json(manifest);
    json.BeginObject();
    for (const char* key : {"tier", "version", "url", "sha256", "sig"}) {
        json.PlainTextField(key, ReadFlatField(line, key));
    }
    json.EndObject();
    return manifest;
}

void CheckCase(SelfCheck& check, std::string_view line) {
    ++check.cases;
    if (!check.key) {
        AddLine(check, false, "case before a valid key line - skipped");
        return;
    }
    UpdateManifestInfo info;
    const bool accepted =
        EvaluateManifest(check.key.get(), CaseManifest(line), ReadFlatField(line, "expectedTier"),
                         ReadFlatField(line, "ownVersion"), &info);
    std::string name = ReadFlatField(line, "name");
    if (name.empty()) {
        name = "case ";
        AppendInt(name, check.cases);
    }
    AddLine(check, accepted == ReadFlatTruth(line, "expect"), name);
}

void CheckHosts(SelfCheck& check) {
    const std::string site(kUpdateSiteHost);
    const std::string api(kApiHost);
    const std::string tester(kTesterSiteHost);
    const std::string secure = "https://";
    const struct {
        std::string url;
        bool allowed;
        std::string label;
    } rows[] = {
        {secure + site + "/download/", true, site + " allowed"},
        {secure + api + "/download/plus", true, api + " allowed"},
        {secure + site + ".elsewhere.example/x.exe", false, "look-alike subdomain rejected"},
        {secure + site + "@elsewhere.example/x.exe", false, "userinfo trick rejected"},
        {secure + site + ":8443/x.exe", false, "explicit port rejected"},
        {secure + "elsewhere.example/x.exe", false, "other site rejected"},
        {"http://" + site + "/x.exe", false, "plain http rejected"},
        {secure + tester + "/update/x.exe", false, "tester site rejected (Plus/Core build)"},
    };
    for (const auto& row : rows) {
        AddLine(check, IsAllowedDownloadUrl(row.url) == row.allowed, "host: " + row.label);
    }
}

}  // namespace

bool RunUpdateSelfCheck(const std::string& vectorsPath, std::string* report) {
    SelfCheck check{report, nullptr};
    std::string vectors;
    if (!ReadFileBytes(vectorsPath, &vectors)) {
        AddLine(check, false, "could not open vectors file: " + vectorsPath);
        return false;
    }
    TextLines lines(vectors);
    for (std::string_view line; lines.Next(&line);) {
        const std::string kind = ReadFlatField(line, "line");
        if (kind == "key") {
            CheckKey(check, line);
        } else if (kind == "case") {
            CheckCase(check, line);
        }
    }
    CheckHosts(check);
    if (check.cases == 0) {
        AddLine(check, false, "no cases found in vectors file");
    }
    return check.passed;
}
