// The number reads of text.h at a cursor, for readers that walk a line once. Each reads the number at `from`, white
// space first, never past `end`, and gives the first character behind it, or null where the read fails (*value is then
// untouched).
#pragma once

#include <cstdint>

const char* ScanInt(const char* from, const char* end, int32_t* value);
const char* ScanUnsignedLong(const char* from, const char* end,
                             uint32_t* value);  // stoul: "-1" is 4294967295
const char* ScanDouble(const char* from, const char* end, double* value);
