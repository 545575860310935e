// What the targets share: the requirement that ends a run, a folder of its own, and an input taken apart byte by byte.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <system_error>

inline void Require(bool good) {
    if (!good) {
        std::abort();
    }
}

// A data folder of this run's own.
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

// Values off the front of an input; zeros once it is used up.
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
