#pragma once

#include <string>

#include "batch/CommandLine.h"
#include "batch/OfflineOutput.h"
#include "dsp/Revert.h"

namespace zemo::batch {

/// [main] Says `sentence` on standard error, behind the program's name.
void complain(const std::string& sentence);

/// Does the steps, through the same functions as the window's actions. Every step is true when it
/// was done; otherwise it has said why not, naming itself and its file. All [main].
class StepRunner {
public:
    explicit StepRunner(OfflineOutput& output) : output_(output) {}

    bool operator()(const OpenStep& step);
    bool operator()(const RevertStep& step);
    bool operator()(const SaveStep& step);
    bool operator()(const DumpStep& step);
    bool operator()(const RenderStep& step);
    bool operator()(const PlayStep& step);
    bool operator()(const InfoStep& step);

private:
    bool hasSound(const std::string& step) const;

    OfflineOutput& output_;
    undo_struct undo_;
};

} // namespace zemo::batch
