#include "batch/BatchProgram.h"
#include "platform_linux/CallThread.h"
#include "platform_linux/Descriptors.h"
#include "platform_linux/UnfinishedFiles.h"

int main(int argc, char** argv) {
    zemo::platform::reserveStandardDescriptors();
    zemo::platform::removeUnfinishedFilesOnSignals();
    const int status = zemo::batch::runBatch({argv + 1, argv + argc});
    return zemo::platform::leaveHungCallsBehind(status);
}
