// Shared by the unit tests: environment variables, fixtures and a clean engine state.
#pragma once

#include "model/engine_state.h"
#include "storage/data_folder.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>
#include <thread>

// Sets an environment variable, or removes it if `value` is null, and restores it at the end of the scope.
class ScopedEnv {
  public:
    ScopedEnv(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name)) {
            hadValue_ = true;
            before_ = before;
        }
        Put(value);
    }
    ~ScopedEnv() { Put(hadValue_ ? before_.c_str() : nullptr); }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

    void Put(const char* value) const {
#ifdef _WIN32
        _putenv_s(name_.c_str(), value ? value : "");
#else
        if (value) {
            setenv(name_.c_str(), value, 1);
        } else {
            unsetenv(name_.c_str());
        }
#endif
    }

  private:
    std::string name_;
    std::string before_;
    bool hadValue_ = false;
};

// Tests run with the project's root as their working directory.
inline std::string FixturePath(std::string_view name) {
    return std::string(VARNELLE_FIXTURES) + "/" + std::string(name);
}

// Waits until `condition` holds, checking every millisecond. Returns false if the limit passes first.
inline bool WaitUntil(const std::function<bool()>& condition, int limitSeconds = 30) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(limitSeconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// Resets the engine state before and after each test.
class EngineStateTest : public ::testing::Test {
  protected:
    EngineStateTest() { ResetEngineState(); }
    ~EngineStateTest() override { ResetEngineState(); }
};

// Each test also has a data folder of its own, which does not exist yet.
class DataFolderTest : public EngineStateTest {
  protected:
    DataFolderTest() { SetSessionPath(""); }
    ~DataFolderTest() override { SetSessionPath(""); }

    TempFolder root_;
    ScopedEnv localAppData_{"LOCALAPPDATA", root_.Path().c_str()};
};
