#include "windows/page_loading.h"

#include "platform/crypto.h"
#include "platform/files.h"
#include "platform/process.h"
#include "themes/base64.h"

#include <algorithm>
#include <utility>

namespace {

// In this order, relative to the folder ui.
constexpr const char* kInlinableScripts[] = {"vendor/Sortable.min.js", "timeline.js"};

std::string PathInUi(const std::string& programDirectory, std::string name) {
    std::replace(name.begin(), name.end(), '/', kPathSeparator);
    return programDirectory + kPathSeparator + "ui" + kPathSeparator + name;
}

// A page is a text file: its line ends count as one character on every platform.
void JoinLineEnds(std::string* text) {
    size_t kept = 0;
    for (size_t i = 0; i < text->size(); ++i) {
        if ((*text)[i] == '\r' && i + 1 < text->size() && (*text)[i + 1] == '\n') {
            continue;
        }
        (*text)[kept++] = (*text)[i];
    }
    text->resize(kept);
}

// The script as the browser hashes it: its parser reads every line end as LF.
std::string ScriptAsParsed(std::string_view script) {
    std::string parsed;
    for (size_t i = 0; i < script.size(); ++i) {
        if (script[i] != '\r') {
            parsed += script[i];
        } else if (i + 1 == script.size() || script[i + 1] != '\n') {
            parsed += '\n';
        }
    }
    return parsed;
}

// The position behind the word script-src of the page's policy, or npos.
size_t FindScriptPolicy(const std::string& page) {
    constexpr std::string_view kDirective = "script-src ";
    const size_t policy = page.find("http-equiv=\"Content-Security-Policy\"");
    const size_t end = page.find('>', policy);
    const size_t directive = page.find(kDirective, policy);
    return policy == std::string::npos || directive >= end ? std::string::npos
                                                           : directive + kDirective.size();
}

}  // namespace

bool ReadPage(const std::string& programDirectory, const char* name, std::string* page, std::string* path) {
    *path = PathInUi(programDirectory, name);
    if (!ReadFileBytes(*path, page)) {
        return false;
    }
    JoinLineEnds(page);
    return true;
}

std::string InlineScripts(std::string page, const std::string& programDirectory) {
    for (const char* name : kInlinableScripts) {
        const std::string tag = std::string("<script src=\"") + name + "\"></script>";
        const size_t position = page.find(tag);
        if (position == std::string::npos) {
            continue;
        }
        std::string content;
        if (!ReadFileBytes(PathInUi(programDirectory, name), &content)) {
            continue;
        }
        if (content.find("</script>") != std::string::npos) {
            continue;  // would end the element early
        }
        const std::string element = "<script>" + content + "</script>";
        if (page.size() - tag.size() + element.size() > kPageSizeLimit) {
            continue;
        }
        std::string extended = page;
        extended.replace(position, tag.size(), element);
        AllowScript(&extended, content);
        if (extended.size() <= kPageSizeLimit) {
            page = std::move(extended);
        }
    }
    return page;
}

void AllowScript(std::string* page, std::string_view script) {
    const size_t position = FindScriptPolicy(*page);
    if (position == std::string::npos) {
        return;
    }
    Sha256 hash;
    Sha256Digest digest;
    hash.Add(ScriptAsParsed(script));
    if (!hash.Finish(&digest)) {
        return;  // the script does not run
    }
    const std::string_view bytes(reinterpret_cast<const char*>(digest.data()), digest.size());
    page->insert(position, "'sha256-" + EncodeBase64(bytes) + "' ");
}
