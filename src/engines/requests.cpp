#include "engines/requests.h"

#include "engines/engine_state.h"
#include "platform/wake.h"

void RaiseRequest(std::atomic<bool>& flag) {
    flag.store(true);
    SignalWake(engineState.dispatchEvent.load());
}
