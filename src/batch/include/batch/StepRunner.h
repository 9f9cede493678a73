#pragma once

#include <string>

#include "batch/CommandLine.h"
#include "batch/OfflineOutput.h"
#include "dsp/Revert.h"
#include "dsp/Transformation.h"

namespace zemo::batch {

/// [main] Says `sentence` on standard error, behind the program's name.
void complain(const std::string& sentence);

/// [main] The step that is being done, with its file, as a sentence names it: "save sound.caf".
const std::string& stepUnderWay();

/// Does the steps, through the same functions as the window's actions. Every step is true when it
/// was done; otherwise it has said why not, naming itself and its file. All [main].
class StepRunner {
public:
    explicit StepRunner(OfflineOutput& output) : output_(output) {}

    bool operator()(const OpenStep& step);
    bool operator()(const ResampleStep& step);
    bool operator()(const AmStep& step);
    bool operator()(const FmStep& step);
    bool operator()(const HdStep& step);
    bool operator()(const RevertStep& step);
    bool operator()(const SaveStep& step);
    bool operator()(const ImportStep& step);
    bool operator()(const ExportStep& step);
    bool operator()(const DumpStep& step);
    bool operator()(const RenderStep& step);
    bool operator()(const PlayStep& step);
    bool operator()(const InfoStep& step);

private:
    bool hasSound(const std::string& step) const;

    /// Keeps the copy for revert and transforms the sound, unless there is a `refusal` already.
    template <typename Transformation>
    bool transform(const std::string& step, const Refusal& refusal, Transformation transformation);

    OfflineOutput& output_;
    undo_struct undo_;
};

} // namespace zemo::batch
