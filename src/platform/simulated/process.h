// The simulated process and other processes as it sees them.
#pragma once

#include <cstdint>
#include <string>

void SimSetProgramPath(const std::string& path);
void SimAddOwnImageProcess(uint32_t processId);
void SimTakeInstanceName(const std::string& name);  // another process holds it
bool SimOwnsInstanceName(const std::string& name);
bool SimProcessEndedAtOnce();  // by EndProcessAtOnce
void SimCrash();               // runs the crash handler, if one is set
void SimResetProcess();
