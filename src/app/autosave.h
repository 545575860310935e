// The autosave thread.
#pragma once

// Thread body: saves the session every 5 seconds until engineState.running is false.
void AutosaveThreadMain();
