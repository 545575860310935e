// What saves the work when the process is about to end without its shutdown. Any thread; also in a signal handler.
#pragma once

void SetLastSave(void (*save)());
// Runs it, if it is set.
void RunLastSave();
