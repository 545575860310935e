// The timer resolution that the program asked for.
#pragma once

int SimTimerPeriods();  // BeginTimerPeriod calls without their EndTimerPeriod
bool SimTimerKeptWhenHidden();
void SimResetClock();
