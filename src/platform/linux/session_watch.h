// Lock and disconnect of the log-on session, as the log-on manager reports them on the system bus. One thread. Nothing is
// reported without the bus, its library or the manager.
#pragma once

#include "platform/hooks.h"

struct SessionWatch;

// Returns null if there is no bus.
SessionWatch* OpenSessionWatch(void (*onChange)(SessionChange change));
void CloseSessionWatch(SessionWatch* watch);

// What to wait for: the descriptor (-1: none), its poll events, and the milliseconds until ReadSessionWatch is due anyway
// (-1: never). All accept null.
int SessionWatchFile(SessionWatch* watch);
short SessionWatchEvents(SessionWatch* watch);
int SessionWatchTimeout(SessionWatch* watch);

// Calls onChange for each change that has arrived. Returns false if the bus is lost: close the watch then.
bool ReadSessionWatch(SessionWatch* watch);
