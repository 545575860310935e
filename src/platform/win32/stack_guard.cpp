// What the compiler's stack protector and buffer checks need, in place of the compiler's library. That library asks
// CryptAcquireContext for a random number before the first line of the program, and so loads libraries that may lie in
// the program's folder (see system_library.h).
#include <windows.h>

#include <cstdint>
#include <initializer_list>

extern "C" {
// Compared at the end of each protected function. The compiler knows the three by their names.
uintptr_t __stack_chk_guard = 0;
[[noreturn]] void __stack_chk_fail();
[[noreturn]] void __chk_fail();
}

namespace {

// Ends the process at once: nothing of ours may run on a stack that was overwritten.
[[noreturn]] void EndAtOnce() {
    RaiseFailFastException(nullptr, nullptr, FAIL_FAST_GENERATE_EXCEPTION_ADDRESS);
    __builtin_trap();
}

// Spreads each bit over the whole number.
uintptr_t Mix(uintptr_t number) {
    number = (number ^ (number >> 33)) * 0xFF51AFD7ED558CCDULL;
    number = (number ^ (number >> 33)) * 0xC4CEB9FE1A85EC53ULL;
    return number ^ (number >> 33);
}

// From what differs from start to start, as Microsoft's own start-up code does it. Runs before every other constructor
// of the program and is itself unprotected, since the guard changes meanwhile.
__attribute__((constructor(101), optimize("no-stack-protector"))) void SetGuard() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    LARGE_INTEGER counter;
    QueryPerformanceCounter(&counter);
    uintptr_t guard = Mix(reinterpret_cast<uintptr_t>(&time));
    for (const uint64_t part :
         {uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime, static_cast<uint64_t>(counter.QuadPart),
          uint64_t{__builtin_ia32_rdtsc()}, uint64_t{GetCurrentProcessId()} << 32 | GetCurrentThreadId()}) {
        guard = Mix(guard ^ part);
    }
    // A zero byte ends every overflow by a string function.
    __stack_chk_guard = guard & ~uintptr_t{0xFF};
}

}  // namespace

void __stack_chk_fail() {
    EndAtOnce();
}

void __chk_fail() {
    EndAtOnce();
}
