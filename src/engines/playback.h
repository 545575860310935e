#pragma once

// Thread body, from start to shutdown.
void PlaybackThreadMain();
