#include "batch/BatchProgram.h"
#include "platform_linux/CallThread.h"

int main(int argc, char** argv) {
    const int status = zemo::batch::runBatch({argv + 1, argv + argc});
    return zemo::platform::leaveHungCallsBehind(status);
}
