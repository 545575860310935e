// What the low-level hooks and the session notice deliver, as the records of platform/hooks.h. Pure; any thread.
#pragma once

#include "platform/hooks.h"

#include <windows.h>

#include <optional>

// A message other than a key press counts as a release.
KeyHookRecord KeyHookRecordOf(WPARAM message, const KBDLLHOOKSTRUCT& event, int64_t counter);
// Returns nullopt for a message that is no mouse event known here.
std::optional<MouseHookRecord> MouseHookRecordOf(WPARAM message, const MSLLHOOKSTRUCT& event,
                                                 int64_t counter);
// Returns nullopt for a WM_WTSSESSION_CHANGE value that the sinks do not need.
std::optional<SessionChange> SessionChangeOf(WPARAM change);
