// Hotkeys are decided inside the hooks: any key or button can be one, and its press is hidden from the applications.
#pragma once

#include "platform/hooks.h"

#include <cstdint>
#include <string>
#include <string_view>

// Hook thread. True if the press is consumed.
bool HotkeyPressed(uint32_t code);
// Hook thread; only for a press that HotkeyPressed consumed.
void HotkeyReleased(uint32_t code);
// Hook thread: WTS_* session change.
void SessionChanged(uint32_t change);
// Any thread: what the hooks may consume now.
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
