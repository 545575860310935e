// Runs the platform's input thread while a user is at the controls: logs every record that the sinks receive and follows
// the commands on standard input.
//
//   hook_probe.exe LOG
//
// Log lines:
//   ready
//   key <down|up> <virtual key> <injected 0|1> <pass|consume|throw>
//   mouse <move|press|release|wheel|hwheel> <button> <x> <y> <wheel delta> <injected 0|1> <pass|consume>
//   raw <dx> <dy>
//   session <console-disconnect|remote-disconnect|lock>
//   stopped
//
// Commands, one per line:
//   consume key <virtual key>       consumes its presses and releases from now on
//   consume button <code>           consumes its presses and releases from now on
//   throw key <virtual key>         the sink throws on this key
//   pass                            passes everything from now on
//   send key <scan code> <down|up>
//   send button <code> <down|up>
//   send to <x> <y>                 an absolute move in 65536ths of the screen
//   send by <dx> <dy>
//   session <change>                posts a session change (WTS_*) to the hidden window
//   quit
#include "line_log.h"
#include "platform/hooks.h"
#include "platform/input.h"
#include "platform/threads.h"

#include <windows.h>

#include <wtsapi32.h>

#include <atomic>
#include <cstdio>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

// Written by the command loop, read by the sinks on the input thread.
std::atomic<bool> consumedKeys[256];
std::atomic<bool> throwingKeys[256];
std::atomic<bool> consumedButtons[8];

// Set by the sinks when they are first called.
std::atomic<bool> keyHookSeen = false;
std::atomic<bool> mouseHookSeen = false;

HookDecision OnKey(const KeyHookRecord& record) {
    keyHookSeen = true;
    const uint32_t key = record.virtualKey & 0xFF;
    const char* result = throwingKeys[key] ? "throw" : consumedKeys[key] ? "consume" : "pass";
    LogLine("key %s %u %d %s", record.down ? "down" : "up", record.virtualKey, record.injected, result);
    if (throwingKeys[key]) {
        throw std::runtime_error("on purpose");
    }
    return consumedKeys[key] ? HookDecision::Consume : HookDecision::Pass;
}

const char* NameOf(PointerEvent kind) {
    switch (kind) {
    case PointerEvent::Move:
        return "move";
    case PointerEvent::Press:
        return "press";
    case PointerEvent::Release:
        return "release";
    case PointerEvent::Wheel:
        return "wheel";
    case PointerEvent::HorizontalWheel:
        return "hwheel";
    }
    return "";
}

HookDecision OnMouse(const MouseHookRecord& record) {
    mouseHookSeen = true;
    const bool consume = consumedButtons[record.button & 7];
    LogLine("mouse %s %u %d %d %d %d %s", NameOf(record.kind), record.button, record.x, record.y,
            record.wheelDelta, record.injected, consume ? "consume" : "pass");
    return consume ? HookDecision::Consume : HookDecision::Pass;
}

void OnRawMouse(const RawMouseRecord& record) {
    LogLine("raw %d %d", record.dx, record.dy);
}

void OnSessionChange(SessionChange change) {
    const char* const names[] = {"console-disconnect", "remote-disconnect", "lock"};
    LogLine("session %s", names[static_cast<int>(change)]);
}

void InputThread() {
    HookSinks sinks;
    sinks.onKey = OnKey;
    sinks.onMouse = OnMouse;
    sinks.onRawMouse = OnRawMouse;
    sinks.onSessionChange = OnSessionChange;
    RunInputThread(sinks);
}

void SendKey(uint16_t scanCode, bool down) {
    SendInputAction({.kind = InputKind::Key, .down = down, .scanCode = scanCode});
}

// The thread installs the hooks last. Only an event shows that they are installed.
void WaitForHooks() {
    for (int32_t step = 1; !keyHookSeen || !mouseHookSeen; step = -step) {
        SendInputAction({.kind = InputKind::MoveBy, .x = step});
        SendKey(0x2A, false);  // the left Shift, which is not down
        Sleep(5);
    }
}

HWND FindHiddenWindow() {
    return FindWindowExW(HWND_MESSAGE, nullptr, L"RawInputHiddenWindow", nullptr);
}

void PassEverything() {
    for (auto& flag : consumedKeys) {
        flag = false;
    }
    for (auto& flag : throwingKeys) {
        flag = false;
    }
    for (auto& flag : consumedButtons) {
        flag = false;
    }
}

void Send(std::istringstream& words) {
    std::string what;
    words >> what;
    if (what == "key" || what == "button") {
        uint32_t code = 0;
        std::string direction;
        words >> code >> direction;
        if (what == "key") {
            SendKey(static_cast<uint16_t>(code), direction == "down");
        } else {
            SendInputAction({.kind = InputKind::Button, .down = direction == "down", .button = code});
        }
    } else {
        InputAction move;
        move.kind = what == "to" ? InputKind::MoveTo : InputKind::MoveBy;
        words >> move.x >> move.y;
        SendInputAction(move);
    }
}

void RunCommand(const std::string& line) {
    std::istringstream words(line);
    std::string verb;
    std::string what;
    words >> verb;
    if (verb == "consume" || verb == "throw") {
        words >> what;
        uint32_t number = 0;
        words >> number;
        if (what == "button") {
            consumedButtons[number & 7] = true;
        } else if (verb == "throw") {
            throwingKeys[number & 0xFF] = true;
        } else {
            consumedKeys[number & 0xFF] = true;
        }
    } else if (verb == "pass") {
        PassEverything();
    } else if (verb == "send") {
        Send(words);
    } else if (verb == "session") {
        WPARAM change = 0;
        words >> change;
        PostMessageW(FindHiddenWindow(), WM_WTSSESSION_CHANGE, change, 0);
    }
    LogLine("done %s", line.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || !OpenLineLog(argv[1])) {
        fprintf(stderr, "usage: hook_probe LOG\n");
        return 2;
    }
    SetProcessDPIAware();
    // Pointer acceleration would bend the relative moves that the tests send.
    int mouse[3] = {0, 0, 0};
    SystemParametersInfoW(SPI_SETMOUSE, 0, mouse, 0);

    std::thread inputThread = StartThread("input", InputThread);
    WaitForHooks();
    LogLine("ready");

    char line[256];
    while (fgets(line, sizeof line, stdin)) {
        std::string command(line);
        while (!command.empty() && (command.back() == '\n' || command.back() == '\r')) {
            command.pop_back();
        }
        if (command == "quit") {
            break;
        }
        RunCommand(command);
    }
    StopInputThread();
    JoinThread(inputThread);
    LogLine("stopped %d", FindHiddenWindow() != nullptr);
    fclose(lineLogFile);
    return 0;
}
