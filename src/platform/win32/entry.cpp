// The program's entry on Windows.
#include "platform/process.h"
#include "platform/program.h"
#include "platform/win32/arguments.h"

#include <windows.h>

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    PrepareProcess();
    const int exitCode = RunProgram(ReadProcessArguments());
    EndProcess();
    return exitCode;
}
