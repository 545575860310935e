#include "platform/linux/base_folders.h"

#include <cstdlib>
#include <sys/stat.h>

std::string EnvironmentText(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string BaseFolder(const char* variable, const char* inHome) {
    std::string folder = EnvironmentText(variable);
    if (folder.empty() || folder.front() != '/') {
        const std::string home = EnvironmentText("HOME");
        folder = home.empty() ? std::string() : home + "/" + inHome;
    }
    return folder;
}

void CreateFolderWithParents(const std::string& path) {
    for (size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        mkdir(path.substr(0, end).c_str(), 0700);
    }
    mkdir(path.c_str(), 0700);
}
