// A setting that several threads read and write without a lock. A relaxed atomic behaves like the plain variable but is
// no data race. It orders nothing: other variables may seem to change before or after it.
#pragma once

#include <atomic>

template <typename T> class Relaxed {
  public:
    Relaxed(T value = T()) : value_(value) {}  // NOLINT(google-explicit-constructor): replaces a plain T
    Relaxed(const Relaxed& other) : value_(other.Get()) {}
    Relaxed& operator=(const Relaxed& other) {
        Set(other.Get());
        return *this;
    }
    Relaxed& operator=(T value) {
        Set(value);
        return *this;
    }
    operator T() const { return Get(); }  // NOLINT(google-explicit-constructor)
    T Get() const { return value_.load(std::memory_order_relaxed); }
    void Set(T value) { value_.store(value, std::memory_order_relaxed); }

  private:
    std::atomic<T> value_;
};
