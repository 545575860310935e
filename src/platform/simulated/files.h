// Faults of the file functions. The files themselves are real. Paths are compared as strings.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

enum class SimFileFault {
    Refused,   // nothing happens
    HalfDone,  // half of the bytes are written or read; a moved file stays as well; everything else as Refused
};
// Fails the number-th operation from now on (1: the next one, 0: none). `permanently`: and every later one.
void SimFailFileOperation(int number, SimFileFault fault = SimFileFault::Refused, bool permanently = false);
void SimFailPath(const std::string& path);            // every operation on it, until SimBegin
void SimDelayFileOperation(uint32_t milliseconds);    // the next one takes this long
int SimFileOperations();                              // number of operations since SimBegin
void SimSetDataFolderRoot(const std::string& value);  // value of LOCALAPPDATA; empty: unset
void SimSetTextLineEnd(std::string_view lineEnd);     // a literal: the characters are not copied
void SimResetFiles();
