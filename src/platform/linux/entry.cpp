// The program's entry on X11.
#include "base/text.h"
#include "platform/linux/grab_watch.h"
#include "platform/process.h"
#include "platform/program.h"

int main(int argc, char** argv) {
    if (RunAsGrabWatch(argc, argv)) {
        return 0;
    }
    PrepareProcess();

    // The shell has split the line already. Joins it again with single spaces.
    ProcessArguments arguments;
    arguments.wideViewValid = true;
    for (int i = 1; i < argc; ++i) {
        arguments.arguments.push_back(WidenBytes(argv[i]));
        if (i > 1) {
            arguments.line += ' ';
        }
        arguments.line += argv[i];
    }

    const int exitCode = RunProgram(arguments);
    EndProcess();
    return exitCode;
}
