// The command line as one string. Pure; any thread.
#pragma once

// Returns the rest of a command line after the program's name and the white space behind it, as a pointer into `line`.
// The name ends at the first byte up to the space that stands outside double quotes. A quote begins or ends a quoted
// piece wherever it stands, and a backslash escapes nothing: it is the separator of paths.
const char* SkipProgramName(const char* line);
