#include "batch/BatchProgram.h"
#include "platform_linux/CallThread.h"

int main(int argc, char** argv) {
    return zemo::platform::leaveHungCallsBehind(zemo::batch::runBatch({argv + 1, argv + argc}));
}
