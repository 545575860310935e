// Finding and raising the master's window.
#pragma once

#include "platform/desktop.h"

// The master's window of this or another version, 0 if none.
WindowRef FindMainWindow();
