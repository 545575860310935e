// What the fuzz targets share: a check that aborts the run, a data folder, and values read from the input.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <system_error>

// Aborts unless `condition` holds, in every build.
inline void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

// A data folder for this run, deleted at its end.
class FuzzFolder {
  public:
    FuzzFolder()
        : path_(std::filesystem::temp_directory_path() /
                ("varnelle-fuzz-" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directory(path_);
        setenv("LOCALAPPDATA", path_.c_str(), 1);
    }
    ~FuzzFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    FuzzFolder(const FuzzFolder&) = delete;
    FuzzFolder& operator=(const FuzzFolder&) = delete;

    std::string File(const char* name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

// Reads values from the front of an input, then zeros once the input is used up.
class FuzzBytes {
  public:
    FuzzBytes(const uint8_t* data, size_t size) : data_(data), left_(size) {}

    size_t Left() const { return left_; }

    template <typename Value> Value Take() {
        unsigned char bytes[sizeof(Value)] = {};
        const size_t count = left_ < sizeof(Value) ? left_ : sizeof(Value);
        std::memcpy(bytes, data_, count);
        data_ += count;
        left_ -= count;
        Value value;
        std::memcpy(&value, bytes, sizeof(Value));
        return value;
    }

  private:
    const uint8_t* data_;
    size_t left_;
};
