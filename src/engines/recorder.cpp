#include "engines/recorder.h"

#include "editing/macro_history.h"
#include "editing/profiles.h"
#include "model/button_flags.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/input.h"
#include "platform/key_table.h"
#include "platform/process.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <optional>
#include <span>
#include <utility>

namespace {

// Seconds between the last kept event and the first one of a continued segment.
constexpr double kMinGapSeconds = 0.1;
// Added to the double-click time, so that two clicks across the join never count as a double click.
constexpr double kClickMarginSeconds = 0.05;
// Events that a recording has room for at its start: more than a minute of an ordinary mouse.
constexpr size_t kRecordingRoom = 65536;
// A list with less free room than this grows: two seconds of the fastest mouse.
constexpr size_t kLowRoom = 16384;

// Input thread only.
struct HookState {
    int32_t lastX = 0;  // last known position of the pointer
    int32_t lastY = 0;
    bool pressOnOwnWindow[8] =
        {};  // by button code: the press was on one of our windows, so its release counts as such too
};
HookState hookState;

bool IsButtonEvent(const MouseHookRecord& record) {
    return record.kind == PointerEvent::Press || record.kind == PointerEvent::Release;
}

void RememberPoint(const MouseHookRecord& record) {
    hookState.lastX = record.x;
    hookState.lastY = record.y;
}

// Returns true for the press that decides or cancels a location pick: nothing else may see it.
bool PickLocation(const MouseHookRecord& record) {
    if (!engineState.pickingLocation || record.kind != PointerEvent::Press || record.button > kMiddleButton) {
        return false;
    }
    if (record.button == kLeftButton) {
        autoclickerSettings.fixedX = record.x;
        autoclickerSettings.fixedY = record.y;
        autoclickerSettings.locationMode = 1;
    }
    engineState.pickingLocation = false;
    HookInterestChanged();
    if (record.button == kLeftButton) {
        try {
            SyncProfileSettings();
        } catch (const std::bad_alloc&) {
            // The location is set. Its copy in the profile follows with the next change of a setting.
        }
    }
    return true;
}

bool IsOwnWindowAt(int32_t x, int32_t y) {
    uint32_t process = 0;
    return ProcessAtPoint(x, y, &process) && (process == OwnProcessId() || IsOwnImage(process));
}

// Keeps clicks on our own windows out of the macro. A release is treated like its press, wherever the pointer is.
bool IsOwnClick(const MouseHookRecord& record) {
    bool& pressedOnOwn = hookState.pressOnOwnWindow[record.button];
    if (record.kind == PointerEvent::Press) {
        pressedOnOwn = IsOwnWindowAt(record.x, record.y);
        return pressedOnOwn;
    }
    const bool own = pressedOnOwn;
    pressedOnOwn = false;
    return own;
}

void RecordMove(const MouseHookRecord& record, double time) {
    if (macroSettings.recordRawMoves) {
        RememberPoint(record);
        return;
    }
    if (record.x == hookState.lastX && record.y == hookState.lastY) {
        return;
    }
    AppendRecordedEvent({.type = EvAbsMove, .time = time, .x = record.x, .y = record.y});
    RememberPoint(record);
}

void RecordButton(const MouseHookRecord& record, double time) {
    // Test first, even if buttons are not recorded, so that the table stays correct.
    const bool own = IsOwnClick(record);
    const uint32_t flags = ButtonFlagsOf({record.button, record.kind == PointerEvent::Press});
    if (macroSettings.recordButtons && !own && flags != 0) {
        AppendRecordedEvent(
            {.type = EvMouseButton, .time = time, .x = record.x, .y = record.y, .flags = flags});
    }
}

void RecordMouse(const MouseHookRecord& record) {
    const double time = RecordingSeconds(record.counter);
    if (IsButtonEvent(record)) {
        RecordButton(record, time);
    } else if (record.kind == PointerEvent::Move && macroSettings.recordMoves) {
        RecordMove(record, time);
    } else if (record.kind == PointerEvent::Wheel && macroSettings.recordWheel) {
        AppendRecordedEvent({.type = EvScroll, .time = time, .wheel = record.wheelDelta});
    }
}

bool IsPress(const UnifiedEvent& event) {
    if (event.type != EvMouseButton) {
        return false;
    }
    const std::optional<ButtonAction> action = ButtonActionOf(event.flags);
    return action && action->down;
}

std::optional<double> LargestTime(std::span<const UnifiedEvent> events) {
    std::optional<double> largest;
    for (const UnifiedEvent& event : events) {
        if (!std::isnan(event.time) && (!largest || event.time > *largest)) {
            largest = event.time;
        }
    }
    return largest;
}

std::optional<double> SmallestTime(std::span<const UnifiedEvent> events) {
    std::optional<double> smallest;
    for (const UnifiedEvent& event : events) {
        if (!std::isnan(event.time) && (!smallest || event.time < *smallest)) {
            smallest = event.time;
        }
    }
    return smallest;
}

// Returns the press with the largest time, the later one in the list on a tie; null if there is none.
const UnifiedEvent* LastPress(std::span<const UnifiedEvent> events) {
    const UnifiedEvent* last = nullptr;
    for (const UnifiedEvent& event : events) {
        if (IsPress(event) && !std::isnan(event.time) && (last == nullptr || event.time >= last->time)) {
            last = &event;
        }
    }
    return last;
}

// Returns the press with the smallest time, the earlier one in the list on a tie; null if there is none.
const UnifiedEvent* FirstPress(std::span<const UnifiedEvent> events) {
    const UnifiedEvent* first = nullptr;
    for (const UnifiedEvent& event : events) {
        if (IsPress(event) && !std::isnan(event.time) && (first == nullptr || event.time < first->time)) {
            first = &event;
        }
    }
    return first;
}

// Event lists that are no longer used. Declared before the lock is taken, so that their memory, which may be tens of
// megabytes, is freed after it is released.
struct OldLists {
    std::vector<UnifiedEvent> baseline;
    std::vector<UnifiedEvent> result;
    std::vector<UnifiedEvent> events;
};

void ForgetContinue(OldLists* old) REQUIRES(macroMutex) {
    macroState.continueProfile = -1;
    old->baseline = std::exchange(macroState.continueBaseline, {});
    old->result = std::exchange(macroState.continueResult, {});
    MarkEventAppended();  // a report of CanUndoContinue is out of date
}

// Returns an empty list for `count` events whose memory the system has already provided: a hook call that is the first to
// touch a page waits for it.
std::vector<UnifiedEvent> ListWithRoom(size_t count) {
    std::vector<UnifiedEvent> list(count);
    list.clear();
    return list;
}

void OpenTake() REQUIRES(macroMutex) {
    macroState.takeOpen = true;
    engineState.recordingStartCounter = ReadPerformanceCounter();
    engineState.recordedEvents = 0;
    engineState.recording = true;
}

// Joins the events that the recording has appended to the macro of profile `index`.
void JoinTake(int32_t index, double clickGap, OldLists* old) REQUIRES(macroMutex) {
    const size_t keepCount = std::exchange(macroState.continueKeepCount, 0);
    if (index < 0 || static_cast<size_t>(index) >= macroState.profiles.size()) {
        return;
    }
    std::vector<UnifiedEvent>& events = macroState.profiles[static_cast<size_t>(index)].events;
    JoinContinuedRecording(events, keepCount, kMinGapSeconds, clickGap);
    MarkMacroChanged();
    if (macroState.continueProfile == index) {
        try {
            macroState.continueResult = events;
        } catch (const std::bad_alloc&) {
            ForgetContinue(old);
        }
    }
}

}  // namespace

void InputThreadMain() {
    ResetInputState();
    RunInputThread({.onKey = KeyboardHook,
                    .onMouse = MouseHook,
                    .onRawMouse = RawMouseReport,
                    .onSessionChange = SessionChanged,
                    .readInterest = ReadHookInterest});
}

HookDecision KeyboardHook(const KeyHookRecord& record) {
    if (record.injected) {
        return HookDecision::Pass;
    }
    if (DecideKey(record.virtualKey, record.down) == HookDecision::Consume) {
        return HookDecision::Consume;
    }
    if (engineState.recording && macroSettings.recordKeys) {
        AppendRecordedEvent({.type = EvKey,
                             .time = RecordingSeconds(record.counter),
                             .virtualKey = record.virtualKey,
                             .down = record.down});
    }
    return HookDecision::Pass;
}

HookDecision MouseHook(const MouseHookRecord& record) {
    const bool isMove = record.kind == PointerEvent::Move;
    if (record.injected) {
        if (isMove) {
            RememberPoint(record);
        }
        return HookDecision::Pass;
    }
    if (IsButtonEvent(record)) {
        if (PickLocation(record)) {
            return HookDecision::Consume;
        }
        if (DecideButton(record.button, record.kind == PointerEvent::Press) == HookDecision::Consume) {
            return HookDecision::Consume;
        }
    }
    if (engineState.recording) {
        RecordMouse(record);
    } else if (isMove) {
        RememberPoint(record);
    }
    return HookDecision::Pass;
}

void RawMouseReport(const RawMouseRecord& record) {
    if (!engineState.recording || !macroSettings.recordMoves || !macroSettings.recordRawMoves) {
        return;
    }
    if (record.dx == 0 && record.dy == 0) {
        return;
    }
    AppendRecordedEvent(
        {.type = EvRelMove, .time = RecordingSeconds(record.counter), .x = record.dx, .y = record.dy});
}

void ResetInputState() {
    hookState = HookState{};
    ClearHeldInput();
}

void AppendRecordedEvent(const UnifiedEvent& event) {
    MutexLock lock(macroMutex);
    // Test again under the lock: a recording that was joined meanwhile must not grow.
    if (!engineState.recording) {
        return;
    }
    if (Profile* profile = CurrentProfile()) {
        try {
            profile->events.push_back(event);
            MarkEventAppended();
            engineState.recordedEvents.fetch_add(1);
        } catch (const std::bad_alloc&) {
            return;
        }
    }
}

double RecordingSeconds(int64_t counter) {
    const int64_t ticks = counter - engineState.recordingStartCounter;
    return static_cast<double>(ticks) / static_cast<double>(engineState.counterFrequency.load());
}

void GrowEventRoom() {
    if (!engineState.recording) {
        return;
    }
    std::vector<UnifiedEvent> larger;
    size_t count = 0;
    uint64_t edits = 0;
    {
        MutexLock lock(macroMutex);
        const Profile* profile = CurrentProfile();
        if (profile == nullptr || profile->events.capacity() - profile->events.size() >= kLowRoom) {
            return;
        }
        count = profile->events.size();
        edits = macroState.rewrittenRevision;
    }
    try {
        larger = ListWithRoom(count + count / 2 + kRecordingRoom);
    } catch (const std::bad_alloc&) {
        return;
    }
    for (;;) {
        {
            MutexLock lock(macroMutex);
            Profile* profile = CurrentProfile();
            // An edit may have changed what is copied already. The next call begins again.
            if (!engineState.recording || profile == nullptr || macroState.rewrittenRevision != edits) {
                return;
            }
            std::vector<UnifiedEvent>& events = profile->events;
            if (events.size() > larger.capacity()) {
                return;
            }
            const auto from = events.begin() + static_cast<std::ptrdiff_t>(larger.size());
            const size_t left = events.size() - larger.size();
            larger.insert(larger.end(), from,
                          from + static_cast<std::ptrdiff_t>(std::min(left, kEventsPerHold)));
            if (left <= kEventsPerHold) {
                events.swap(larger);
                return;  // the old list is freed after the lock is released
            }
        }
        // A thread that waits for the lock does not get it if it is taken again at once.
        SleepMilliseconds(1);
    }
}

void FinishRecording() {
    const double clickGap = ClickGapSeconds();
    OldLists old;
    MutexLock lock(macroMutex);
    macroState.takeOpen = false;
    JoinTake(macroState.currentProfile, clickGap, &old);
}

void MoveRecording(int32_t from, size_t keepCount, double clickGap) {
    if (macroState.takeOpen) {
        OldLists old;
        JoinTake(from, clickGap, &old);
        macroState.continueKeepCount = keepCount;
    }
}

double ClickGapSeconds() {
    return DoubleClickMilliseconds() / 1000.0 + kClickMarginSeconds;
}

void BeginFreshRecording() {
    OldLists old;
    try {
        old.events = ListWithRoom(kRecordingRoom);
    } catch (const std::bad_alloc&) {
        // The recording starts all the same and keeps what fits.
    }
    {
        DroppedSteps dropped;
        MutexLock lock(macroMutex);
        if (Profile* profile = CurrentProfile()) {
            KeepMacro(*profile, HistoryReason::Recording, &dropped);
            profile->events.swap(old.events);
        }
        ForgetContinue(&old);
        macroState.continueKeepCount = 0;
        MarkMacroChanged();
        OpenTake();
    }
    HookInterestChanged();
}

void BeginContinuedRecording() {
    size_t count = 0;
    {
        MutexLock lock(macroMutex);
        if (const Profile* profile = CurrentProfile()) {
            count = profile->events.size();
        }
    }
    OldLists old;
    DroppedSteps dropped;
    std::vector<UnifiedEvent> events = ListWithRoom(count + kRecordingRoom);
    {
        MutexLock lock(macroMutex);
        if (Profile* profile = CurrentProfile()) {
            events = profile->events;  // an assignment keeps the room
            DropRedo(*profile, &dropped);
            events.swap(profile->events);
        } else {
            events = {};
        }
        ForgetContinue(&old);
        macroState.continueBaseline = std::move(events);
        macroState.continueKeepCount = macroState.continueBaseline.size();
        macroState.continueProfile = macroState.currentProfile;
        OpenTake();
    }
    HookInterestChanged();
}

bool CanUndoContinue() {
    if (macroState.continueProfile != macroState.currentProfile || engineState.recording ||
        engineState.playing) {
        return false;
    }
    const Profile* profile = CurrentProfile();
    return profile != nullptr && profile->events == macroState.continueResult;
}

void UndoContinuedRecording() {
    OldLists old;
    DroppedSteps dropped;
    MutexLock lock(macroMutex);
    if (!CanUndoContinue()) {
        return;
    }
    Profile& profile = *CurrentProfile();
    KeepMacro(profile, HistoryReason::UndoContinue, &dropped);
    profile.events = std::move(macroState.continueBaseline);
    ForgetContinue(&old);
    MarkMacroChanged();
}

void JoinContinuedRecording(std::vector<UnifiedEvent>& events, size_t keepCount, double minGap,
                            double clickGap) {
    const size_t keep = std::min(keepCount, events.size());
    const std::span<UnifiedEvent> all(events);
    const std::span<UnifiedEvent> kept = all.first(keep);
    const std::span<UnifiedEvent> take = all.subspan(keep);
    const std::optional<double> firstTime = SmallestTime(take);
    if (!firstTime) {
        return;
    }
    const std::optional<double> lastTime = LargestTime(kept);
    const double start = lastTime ? *lastTime + minGap : 0.0;
    double shift = *firstTime - start;
    if (keep > 0 && clickGap > 0.0) {
        const UnifiedEvent* lastPress = LastPress(kept);
        const UnifiedEvent* firstPress = FirstPress(take);
        if (lastPress != nullptr && firstPress != nullptr && lastPress->flags == firstPress->flags) {
            const double gap = firstPress->time - shift - lastPress->time;
            if (gap < clickGap) {
                shift -= clickGap - gap;
            }
        }
    }
    for (UnifiedEvent& event : take) {
        event.time -= shift;
    }
}
