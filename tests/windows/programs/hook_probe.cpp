// The platform's input thread with a person at the controls: writes down every record that the sinks receive and does
// what it is told on standard input.
//
//   hook_probe.exe LOG
//
// Log lines:
//   ready
//   key <message> <virtual key> <injected 0|1> <answer>
//   mouse <message> <x> <y> <mouse data> <injected 0|1> <answer>          answer: pass, consume or throw
//   raw <dx> <dy>
//   session <change>
//   stopped
//
// Commands, one a line:
//   consume key <virtual key>       its presses and releases are consumed from now on
//   consume button <message>...     mouse events with these messages are consumed from now on
//   throw key <virtual key>         the sink throws on this key
//   pass                            everything passes from now on
//   send <type> <dx> <dy> <mouse data> <scan code> <flags>    one InputRecord
//   session <change>                posts a session change to the hidden window
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
std::atomic<bool> consumedMessages[0x300];

// Set by the sinks when they are first called.
std::atomic<bool> keyHookSeen = false;
std::atomic<bool> mouseHookSeen = false;

HookAnswer OnKey(const KeyHookRecord& record) {
    keyHookSeen = true;
    const uint32_t key = record.virtualKey & 0xFF;
    const char* answer = throwingKeys[key] ? "throw" : consumedKeys[key] ? "consume" : "pass";
    LogLine("key %u %u %d %s", record.message, record.virtualKey, record.injected, answer);
    if (throwingKeys[key]) {
        throw std::runtime_error("told to");
    }
    return consumedKeys[key] ? HookAnswer::Consume : HookAnswer::Pass;
}

HookAnswer OnMouse(const MouseHookRecord& record) {
    mouseHookSeen = true;
    const bool consume = record.message < 0x300 && consumedMessages[record.message];
    LogLine("mouse %u %d %d %u %d %s", record.message, record.x, record.y, record.mouseData, record.injected,
            consume ? "consume" : "pass");
    return consume ? HookAnswer::Consume : HookAnswer::Pass;
}

void OnRawMouse(const RawMouseRecord& record) {
    LogLine("raw %d %d", record.dx, record.dy);
}

void OnSessionChange(uint32_t change) {
    LogLine("session %u", change);
}

void HookThread() {
    HookSinks sinks;
    sinks.onKey = OnKey;
    sinks.onMouse = OnMouse;
    sinks.onRawMouse = OnRawMouse;
    sinks.onSessionChange = OnSessionChange;
    RunInputThread(sinks);
}

// The hooks come last in the thread's set-up, and nothing tells that they are there but an event.
void WaitForHooks() {
    InputRecord move;
    move.type = kInputMouse;
    move.dwFlags = kMouseMove;
    InputRecord keyUp;
    keyUp.type = kInputKeyboard;
    keyUp.wScan = 0x2A;  // the left Shift, which is not down
    keyUp.dwFlags = kKeyScanCode | kKeyUp;
    for (int32_t step = 1; !keyHookSeen || !mouseHookSeen; step = -step) {
        move.dx = step;
        SendInputRecord(move);
        SendInputRecord(keyUp);
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
    for (auto& flag : consumedMessages) {
        flag = false;
    }
}

void Obey(const std::string& line) {
    std::istringstream words(line);
    std::string verb;
    std::string what;
    words >> verb;
    if (verb == "consume" || verb == "throw") {
        words >> what;
        uint32_t number = 0;
        while (words >> number) {
            if (what == "button") {
                consumedMessages[number % 0x300] = true;
            } else if (verb == "throw") {
                throwingKeys[number & 0xFF] = true;
            } else {
                consumedKeys[number & 0xFF] = true;
            }
        }
    } else if (verb == "pass") {
        PassEverything();
    } else if (verb == "send") {
        InputRecord record;
        words >> record.type >> record.dx >> record.dy >> record.mouseData >> record.wScan >> record.dwFlags;
        SendInputRecord(record);
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

    std::thread hookThread = StartThread("hooks", HookThread);
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
        Obey(command);
    }
    StopInputThread();
    JoinThread(hookThread);
    LogLine("stopped %d", FindHiddenWindow() != nullptr);
    fclose(lineLogFile);
    return 0;
}
