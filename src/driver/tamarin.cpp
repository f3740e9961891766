// The program player: "player game server port".
#include "driver/player.h"
#include "support/standard_streams.h"

int main(int argc, char** argv) {
    tamarin::reserveStandardStreams();
    return tamarin::runPlayer(argc, argv);
}
