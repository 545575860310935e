// Control of the simulated platform: a virtual clock, threads that run one at a time in an order chosen by a seed, a
// scripted user at keyboard and mouse, an in-memory desktop, and failures on demand.
//
// The thread that calls SimBegin is the driver. It takes part like any other thread, and it is the one that calls the
// functions of these headers unless one says otherwise. The clock stands still while any thread can run, and advances
// to the earliest deadline when all wait. The same seed and the same calls give the same run, byte for byte.
#pragma once

#include "platform/simulated/clock.h"
#include "platform/simulated/desktop.h"
#include "platform/simulated/dialogs.h"
#include "platform/simulated/end_request.h"
#include "platform/simulated/files.h"
#include "platform/simulated/hooks.h"
#include "platform/simulated/input.h"
#include "platform/simulated/keys.h"
#include "platform/simulated/page_host.h"
#include "platform/simulated/process.h"
#include "platform/simulated/scheduler.h"
#include "platform/simulated/session.h"
#include "platform/simulated/shell.h"
#include "platform/simulated/window_frame.h"

// Resets every part of the simulated platform to its defaults and the clock to its start.
void SimBegin(const SimOptions& options = {});
