#include "batch/BatchProgram.h"

int main(int argc, char** argv) {
    return zemo::batch::runBatch({argv + 1, argv + argc});
}
