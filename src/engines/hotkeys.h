// Decides hotkeys inside the hooks. Any key or button can be one, and its press is hidden from the applications.
#pragma once

#include "platform/hooks.h"

#include <cstdint>
#include <string>
#include <string_view>

// Input thread. Apply a real key or button event to a capture and to the hotkeys. Consume hides it from the recorder
// and the applications.
HookDecision DecideKey(uint32_t virtualKey, bool down);
HookDecision DecideButton(uint32_t button, bool press);

// Input thread. Returns true if the press is consumed.
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

// Any thread. Returns the display name of a key or button code.
std::string KeyNameText(uint32_t code);
// Returns the name of a key by its virtual key, in the user's language, for lists of recorded events. Returns an empty
// string for a code that no key has. Unlike KeyNameText it distinguishes right from left keys, and the number pad from
// the main keys.
std::string EventKeyName(uint32_t virtualKey);

// Begins a capture: "rec", "play", "auto", "keyspamhotkey", "keyspamtarget", "unlock"; ignores another word.
void ReassignKey(std::string_view target);
// Returns the word for the current capture, empty for none.
const char* ReassignTargetText();
// Dispatcher thread: ends a capture that has its key, then applies the key. Throws std::bad_alloc if a key spammer
// target cannot be stored in the profile.
void ApplyCapturedKey();
// Sets one of the five bindings, named as in ReassignKey. Returns false, with nothing changed, for another word and for
// a code that a capture could not store.
bool SetHotkey(std::string_view target, uint32_t code);
// Returns the codes of the five bindings as JSON, by their words.
std::string HotkeyCodesReport();
// Cancels the wait for the place to click. Does nothing without one.
void CancelLocationPick();
// Any thread. Locks the hotkeys and stops what a press of the unlock hotkey stops; nothing if they are locked. Returns
// false if no key could unlock them: the lock or all hotkeys are off.
bool LockHotkeys();
// Sets the five bindings to F8, F7, F6, F9, F10.
void ResetHotkeys();
