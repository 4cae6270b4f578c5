#include "cli/command_line.h"
#include "cli/terminal/process_setup.h"

int main(int argumentCount, char** arguments) {
    zembrastel::cli::prepareProcess();
    zembrastel::cli::Interrupt interrupt;
    return static_cast<int>(zembrastel::cli::runCommandLine(argumentCount, arguments, interrupt));
}
