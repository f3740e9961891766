// The `tamarin` program.
#include "support/interrupt.h"
#include "toolbox/commands.h"

int main(int argc, char** argv) {
    tamarin::handleInterrupts();
    return tamarin::runToolbox(argc, argv, tamarin::allCommands());
}
