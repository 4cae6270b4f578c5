#include "cli/command_line.h"
#include "cli/process_setup.h"

int main(int argumentCount, char** arguments) {
    zembrastel::prepareProcess();
    zembrastel::Interrupt interrupt;
    return static_cast<int>(zembrastel::runCommandLine(argumentCount, arguments, interrupt));
}
