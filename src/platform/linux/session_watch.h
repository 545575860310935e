// Lock and disconnect of the log-on session, as the log-on manager tells them on the system bus. Linux home only; one
// thread. Without the bus, its library or the manager there is simply nothing to hear.
#pragma once

#include <cstdint>

struct SessionWatch;

// Null where there is no bus.
SessionWatch* OpenSessionWatch(void (*onChange)(uint32_t change));
void CloseSessionWatch(SessionWatch* watch);

// What to wait for: the descriptor, -1 for none, its poll events, and the time in milliseconds after which
// ReadSessionWatch is due anyway, -1 for never. All take null.
int SessionWatchFile(SessionWatch* watch);
short SessionWatchEvents(SessionWatch* watch);
int SessionWatchTimeout(SessionWatch* watch);

// Calls onChange for what has arrived. False when the bus is gone: close the watch then.
bool ReadSessionWatch(SessionWatch* watch);
