#include "platform/wake.h"

#include <windows.h>

// A WakeEvent is the event's handle. The type distinguishes it from other handles.
static HANDLE HandleOf(WakeEvent* event) {
    return reinterpret_cast<HANDLE>(event);
}

WakeEvent* CreateWakeEvent(WakeReset reset) {
    return reinterpret_cast<WakeEvent*>(CreateEventW(nullptr, reset == WakeReset::Manual, FALSE, nullptr));
}

void CloseWakeEvent(WakeEvent* event) {
    if (event) {
        CloseHandle(HandleOf(event));
    }
}

void SignalWake(WakeEvent* event) {
    if (event) {
        SetEvent(HandleOf(event));
    }
}

int WaitForAny(WakeEvent* const* events, int count, uint32_t limitMilliseconds) {
    HANDLE handles[4];
    int indices[4];
    DWORD present = 0;
    for (int i = 0; i < count && i < 4; ++i) {
        if (events[i]) {
            handles[present] = HandleOf(events[i]);
            indices[present] = i;
            ++present;
        }
    }
    if (present == 0) {
        Sleep(limitMilliseconds);
        return -1;
    }
    DWORD result = WaitForMultipleObjects(present, handles, FALSE, limitMilliseconds);
    if (result >= WAIT_OBJECT_0 + present) {
        return -1;  // WAIT_TIMEOUT or WAIT_FAILED
    }
    return indices[result - WAIT_OBJECT_0];
}
