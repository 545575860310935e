#include "platform/threads.h"

#include "platform/linux/threads.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <sys/prctl.h>

namespace {

constexpr size_t kSignalStackBytes = 256 * 1024;  // the crash handler saves the session on it

// The calling thread's stack for signal handlers. The destructor removes it from the system before freeing it.
class SignalStack {
  public:
    SignalStack() {
        memory_ = std::malloc(kSignalStackBytes);
        if (memory_ == nullptr) {
            return;
        }
        stack_t stack{};
        stack.ss_sp = memory_;
        stack.ss_size = kSignalStackBytes;
        installed_ = sigaltstack(&stack, nullptr) == 0;
    }
    ~SignalStack() {
        if (installed_) {
            stack_t none{};
            none.ss_flags = SS_DISABLE;
            none.ss_size = kSignalStackBytes;
            sigaltstack(&none, nullptr);
        }
        std::free(memory_);
    }
    SignalStack(const SignalStack&) = delete;
    SignalStack& operator=(const SignalStack&) = delete;

  private:
    void* memory_ = nullptr;
    bool installed_ = false;
};

}  // namespace

void SetUpThread() {
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    thread_local SignalStack stack;
}

std::thread StartThread(const char* name, void (*body)()) {
    return std::thread([name, body] {
        char shortName[16] = {};  // the system accepts at most 15 characters
        std::strncpy(shortName, name, sizeof(shortName) - 1);
        pthread_setname_np(pthread_self(), shortName);
        SetUpThread();
        body();
    });
}

void JoinThread(std::thread& thread) {
    if (thread.joinable()) {
        thread.join();
    }
}
