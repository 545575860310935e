// The program's entry on X11.
#include "platform/process.h"
#include "platform/program.h"

int main(int argc, char** argv) {
    PrepareProcess();

    // A shell has split the line already; the view of it as one text is put together again with single blanks.
    ProcessArguments arguments;
    arguments.wideViewValid = true;
    for (int i = 1; i < argc; ++i) {
        arguments.arguments.emplace_back(argv[i]);
        if (i > 1) {
            arguments.line += ' ';
        }
        arguments.line += argv[i];
    }

    const int exitCode = RunProgram(arguments);
    EndProcess();
    return exitCode;
}
