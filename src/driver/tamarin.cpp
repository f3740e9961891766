// The program player: "player game server port".
#include "driver/player.h"

int main(int argc, char** argv) {
    return tamarin::runPlayer(argc, argv);
}
