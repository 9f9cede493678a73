#pragma once

#include <span>

namespace zemo::batch {

/// How the program ends.
enum ExitStatus : int { kDone = 0, kStepFailed = 1, kWrongCommandLine = 2 };

/// [main] Does what the command line (the program's name left out) says. Returns an ExitStatus.
int runBatch(std::span<char* const> words);

} // namespace zemo::batch
