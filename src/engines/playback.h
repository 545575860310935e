// Plays the macro on its recorded schedule. Driven by engineState.playing alone.
#pragma once

#include "model/event.h"

#include <cstdint>
#include <vector>

// Thread body, from start to shutdown.
void PlaybackThreadMain();

// What one round of playback keeps: where the pointer is and from when the schedule counts.
struct PlaybackRound {
    double lastTarget = 0.0;  // scaled schedule time of the event just played, seconds
    int32_t fromX = 0;        // where a played event last placed the pointer
    int32_t fromY = 0;
    int32_t sentX = -1;  // the point last sent while gliding
    int32_t sentY = -1;
    int64_t roundStart = 0;  // counter at the start of the round: the origin of every target
};

// Puts the pointer where the round's first positioned event wants it, and notes where that is.
void PositionForRound(PlaybackRound& round, const std::vector<UnifiedEvent>& events);
// Glides the pointer towards an absolute move `elapsed` seconds into the round; sends only a new point.
void GlideTowards(PlaybackRound& round, const UnifiedEvent& event, double target, double elapsed);
// Sends one event's input, or raises its tool request.
void PerformEvent(PlaybackRound& round, const UnifiedEvent& event);
