#include "app/autosave.h"

#include "app/session_notices.h"
#include "engines/recorder.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "storage/session.h"

void AutosaveThreadMain() {
    constexpr int kRounds = 50;
    constexpr uint32_t kRoundMilliseconds = 100;
    while (engineState.running) {
        for (int round = 0; round < kRounds && engineState.running; ++round) {
            SleepMilliseconds(kRoundMilliseconds);
            GrowEventRoom();
        }
        if (engineState.running) {
            SaveSession();
            ShowSaveProblemOnPage();
        }
    }
}
