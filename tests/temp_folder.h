// Files for tests of every kind: a temporary folder, whole files read and written.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <system_error>

// A new, empty folder, deleted with its content at the end of the scope.
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

// Returns the bytes of the file, or an empty string if it cannot be read.
inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Writes the file and creates its folders. Fails the test if it cannot.
inline void WriteFile(const std::string& path, std::string_view bytes) {
    std::error_code there;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), there);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    ASSERT_TRUE(out.good()) << path;
}
