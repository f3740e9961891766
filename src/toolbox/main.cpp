// The `tamarin` program.
#include "support/interrupt.h"
#include "support/standard_streams.h"
#include "toolbox/commands.h"

int main(int argc, char** argv) {
    tamarin::reserveStandardStreams();
    tamarin::handleInterrupts();
    return tamarin::runToolbox(argc, argv, tamarin::allCommands());
}
