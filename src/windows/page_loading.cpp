#include "windows/page_loading.h"

#include "platform/files.h"
#include "platform/process.h"

#include <algorithm>

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
        page.replace(position, tag.size(), element);
    }
    return page;
}
