// What the tests of every kind do with files: a folder of their own, whole files in and out.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <system_error>

// A new, empty folder that goes away with everything in it.
class TempFolder {
  public:
    TempFolder() {
        std::random_device random;
        do {
            path_ = std::filesystem::temp_directory_path() / ("varnelle-test-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(path_));
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::string Path() const { return path_.string(); }
    std::string File(std::string_view name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

// The whole file, byte for byte; empty if there is none.
inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Makes the folders above it too.
inline void WriteFile(const std::string& path, std::string_view bytes) {
    std::error_code there;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), there);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    ASSERT_TRUE(out.good()) << path;
}
