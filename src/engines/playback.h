// Plays the macro on its recorded schedule. Controlled only by engineState.playing.
#pragma once

#include "model/event.h"

#include <cstdint>
#include <vector>

// Thread body, from start to shutdown.
void PlaybackThreadMain();

// The state of one round of playback: the position of the pointer and the start of the schedule.
struct PlaybackRound {
    double lastTarget = 0.0;  // scaled schedule time of the event just played, seconds
    int32_t fromX = 0;        // last position set by a played event
    int32_t fromY = 0;
    int32_t sentX = -1;  // the point last sent while gliding
    int32_t sentY = -1;
    int64_t roundStart = 0;  // counter at the start of the round: the origin of every target
};

// Moves the pointer to the position of the round's first positioned event, and stores it.
void PositionForRound(PlaybackRound& round, const std::vector<UnifiedEvent>& events);
// Glides the pointer towards an absolute move, `elapsed` seconds into the round. Sends only a new point.
void GlideTowards(PlaybackRound& round, const UnifiedEvent& event, double target, double elapsed);
// Sends one event's input, or raises its tool request.
void PerformEvent(PlaybackRound& round, const UnifiedEvent& event);
