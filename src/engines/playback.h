// Playback: performs the current macro at its recorded times while engineState.playing is set.
#pragma once

#include "model/event.h"

#include <cstdint>
#include <vector>

// Thread body, from start to shutdown.
void PlaybackThreadMain();

// State of one round of playback. Playback thread only, as are the functions below.
struct PlaybackRound {
    double lastTarget = 0.0;  // time of the last event played, divided by the speed, seconds
    int32_t fromX = 0;        // where a played event last placed the pointer
    int32_t fromY = 0;
    int32_t sentX = -1;  // the point that was sent last while gliding
    int32_t sentY = -1;
    int64_t roundStart = 0;  // counter at the start of the round; all times count from here
};

// Moves the pointer to the first event that has a position. Without one the pointer stays; the round starts from there.
void PositionForRound(PlaybackRound& round, const std::vector<UnifiedEvent>& events);
// Moves the pointer towards an absolute move that is due at `target`; both times are seconds since the start of the
// round. Sends nothing if the point is the last one sent.
void GlideTowards(PlaybackRound& round, const UnifiedEvent& event, double target, double elapsed);
// Sends the input of one event, or raises its tool request.
void PerformEvent(PlaybackRound& round, const UnifiedEvent& event);
