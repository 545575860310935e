// A mutex that clang's thread-safety analysis can follow, and the attributes for it. On other compilers the attributes
// are empty. None of this throws.
#pragma once

#include <mutex>

#if defined(__clang__)
#define VRL_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define VRL_THREAD_ATTRIBUTE(x)
#endif

#define CAPABILITY(name) VRL_THREAD_ATTRIBUTE(capability(name))
#define SCOPED_CAPABILITY VRL_THREAD_ATTRIBUTE(scoped_lockable)
#define GUARDED_BY(lock) VRL_THREAD_ATTRIBUTE(guarded_by(lock))
#define REQUIRES(...) VRL_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) VRL_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ACQUIRE(...) VRL_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define TRY_ACQUIRE(...) VRL_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define RELEASE(...) VRL_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define NO_THREAD_SAFETY_ANALYSIS VRL_THREAD_ATTRIBUTE(no_thread_safety_analysis)

// Not recursive: the thread that holds it must not lock it again.
class CAPABILITY("mutex") Mutex {
  public:
    void Lock() ACQUIRE() { mutex_.lock(); }
    // Returns whether the lock was free and is now held.
    bool TryLock() TRY_ACQUIRE(true) { return mutex_.try_lock(); }
    void Unlock() RELEASE() { mutex_.unlock(); }

  private:
    std::mutex mutex_;
};

// Holds `mutex` from its construction to the end of its scope.
class SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.Lock(); }
    ~MutexLock() RELEASE() { mutex_.Unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

  private:
    Mutex& mutex_;
};
