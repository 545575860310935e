// Hotkeys are decided inside the hooks: any key or button can be one, and its press is hidden from the applications.
#pragma once

#include "platform/hooks.h"

#include <cstdint>
#include <string>
#include <string_view>

// Input thread. What a real key event or mouse button does to a capture and to the hotkeys; Consume hides it from the
// recorder and the applications.
HookDecision DecideKey(uint32_t virtualKey, bool down);
HookDecision DecideButton(uint32_t button, bool press);

// Input thread. True if the press is consumed.
bool HotkeyPressed(uint32_t code);
// Input thread; only for a press that HotkeyPressed consumed.
void HotkeyReleased(uint32_t code);
// Input thread. Clears what is held and stops the tools of hold mode, since a release may go to another desktop.
void SessionChanged(SessionChange change);
// Input thread, and tests. Clears what is held and swallowed.
void ClearHeldInput();
// Any thread. Reads what the hooks may consume now. A swallowed press that is still held is not part of it: the backend
// keeps its reservation until the release.
void ReadHookInterest(HookInterest* interest);

// Any thread. Display text of a key or button code.
std::string KeyNameText(uint32_t code);

// Begins a capture: "rec", "play", "auto", "keyspamhotkey", "keyspamtarget", "unlock"; another word changes nothing.
void ReassignKey(std::string_view target);
// The word for the capture under way, empty for none.
const char* ReassignTargetText();
// Dispatcher thread: applies a captured key and ends the capture.
void ApplyCapturedKey();
// The five bindings to F8, F7, F6, F9, F10.
void ResetHotkeys();
