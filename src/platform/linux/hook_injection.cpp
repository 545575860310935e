#include "platform/linux/hook_injection.h"

#include "platform/clock.h"
#include "platform/linux/hook_gate.h"
#include "platform/linux/input_thread_wake.h"

#include <X11/extensions/XTest.h>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

// NOTE: the input thread receives every event of a held device, also those that this program sends. Replaying them
// leaves a moment in which the release of the held key may reach the application.
// HACK: while a device is held, senders pass fake input for it to the input thread, which releases the device, sends,
// and grabs it again at once on its own connection. The sender waits, so that its input keeps its order.
namespace {

enum class FakeKind { Key, Button, Position, Motion };

struct FakeInput {
    FakeKind kind = FakeKind::Key;
    uint32_t code = 0;
    bool press = false;
    int32_t x = 0;
    int32_t y = 0;
    bool sent = false;  // guarded by the list's mutex
};

// After this a sender sends by itself: the input thread may be busy in a sink.
constexpr auto kHandOverLimit = std::chrono::milliseconds(50);

// Written by the input thread, read by the senders.
std::atomic<bool> keyboardHeld{false};
std::atomic<bool> pointerHeld{false};

// NOTE: a server queues sent input without limit where it is slow: in the socket of the input thread, and while a window
// manager holds the pointer for each click. After a stop the queue would go on for seconds.
// HACK: the reports to the input thread show how far the server is. A sender that is too far ahead waits for them.
constexpr uint64_t kMostAhead = 128;
constexpr int kMostWaitMilliseconds = 20;  // then the reports count as lost
std::atomic<bool> reporting{false};
std::atomic<uint64_t> sentCount{0};
std::atomic<uint64_t> reportedCount{0};  // more than were sent if other programs send too

std::mutex handOverMutex;
std::condition_variable handOverDone;
std::vector<FakeInput*> handedOver;  // guarded by handOverMutex; each lives on its sender's stack
thread_local bool isInputThread = false;

// The protocol has 16 bits for a position. No screen is wider.
int ShortNumber(int32_t value) {
    return std::clamp<int32_t>(value, INT16_MIN, INT16_MAX);
}

bool IsReported(FakeKind kind) {
    return kind == FakeKind::Key || kind == FakeKind::Button;
}

bool IsFarAhead() {
    return reporting.load() && sentCount.load() > reportedCount.load() + kMostAhead;
}

void AwaitReports() {
    for (int waited = 0; IsFarAhead(); ++waited) {
        if (waited == kMostWaitMilliseconds) {
            sentCount.store(reportedCount.load());
            return;
        }
        SleepMilliseconds(1);
    }
}

void CountSent() {
    const uint64_t reported = reportedCount.load();
    if (sentCount.load() < reported) {
        sentCount.store(reported);
    }
    sentCount.fetch_add(1);
}

void SendNow(Display* display, const FakeInput& input) {
    if (IsReported(input.kind)) {
        CountSent();
    }
    switch (input.kind) {
    case FakeKind::Key:
        XTestFakeKeyEvent(display, input.code, input.press ? True : False, CurrentTime);
        break;
    case FakeKind::Button:
        XTestFakeButtonEvent(display, input.code, input.press ? True : False, CurrentTime);
        break;
    case FakeKind::Position:
        XTestFakeMotionEvent(display, -1, ShortNumber(input.x), ShortNumber(input.y), CurrentTime);
        break;
    case FakeKind::Motion:
        XTestFakeRelativeMotionEvent(display, ShortNumber(input.x), ShortNumber(input.y), CurrentTime);
        break;
    }
}

bool SendThroughInputThread(FakeInput& input) {
    std::unique_lock lock(handOverMutex);
    handedOver.push_back(&input);
    WakeInputThread();
    handOverDone.wait_for(lock, kHandOverLimit, [&] { return input.sent; });
    if (!input.sent) {
        std::erase(handedOver, &input);
    }
    return input.sent;
}

void Send(Display* display, FakeInput& input) {
    const std::atomic<bool>& held = input.kind == FakeKind::Key ? keyboardHeld : pointerHeld;
    if (held.load() && !isInputThread && SendThroughInputThread(input)) {
        return;
    }
    SendNow(display, input);
    XFlush(display);
    if (!isInputThread) {
        AwaitReports();
    }
}

}  // namespace

void SendFakeKey(Display* display, uint32_t keycode, bool press) {
    FakeInput input;
    input.kind = FakeKind::Key;
    input.code = keycode;
    input.press = press;
    Send(display, input);
}

void SendFakeButton(Display* display, uint32_t button, bool press) {
    FakeInput input;
    input.kind = FakeKind::Button;
    input.code = button;
    input.press = press;
    Send(display, input);
}

void SendFakePosition(Display* display, int32_t rootX, int32_t rootY) {
    FakeInput input;
    input.kind = FakeKind::Position;
    input.x = rootX;
    input.y = rootY;
    Send(display, input);
}

void SendFakeMotion(Display* display, int32_t dx, int32_t dy) {
    FakeInput input;
    input.kind = FakeKind::Motion;
    input.x = dx;
    input.y = dy;
    Send(display, input);
}

void CountReport() {
    reportedCount.fetch_add(1);
}

void SetReporting(bool serving) {
    sentCount.store(0);
    reportedCount.store(0);
    reporting.store(serving);
}

void PublishHolds(const InputThread& thread) {
    isInputThread = true;
    keyboardHeld.store(thread.keyboard.held);
    pointerHeld.store(thread.pointer.held);
}

bool HasHandedOverInput() {
    const std::lock_guard lock(handOverMutex);
    return !handedOver.empty();
}

void SendHandedOver(InputThread& thread) {
    const std::lock_guard lock(handOverMutex);
    for (FakeInput* input : handedOver) {
        Gate& gate = input->kind == FakeKind::Key ? thread.keyboard : thread.pointer;
        PauseHold(thread, gate);
        SendNow(thread.display, *input);
        AdjustHold(thread, gate);
        input->sent = true;
    }
    handedOver.clear();
    XFlush(thread.display);
    handOverDone.notify_all();
}
