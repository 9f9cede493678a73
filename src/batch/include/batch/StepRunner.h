#pragma once

#include <initializer_list>
#include <string_view>

#include "batch/CommandLine.h"
#include "batch/OfflineOutput.h"
#include "dsp/Revert.h"
#include "dsp/Transformation.h"
#include "files/FileUrl.h"

namespace zemo::batch {

/// [any] The place of a file that a step reads, as a file of the kind `as` where that is said.
FileUrl inputUrl(const std::string& file, const std::string& as = {});

/// [main] Says a sentence, given in parts, on standard error, behind the program's name. Asks for
/// no memory.
void complain(std::initializer_list<std::string_view> parts);

/// [main] The same behind the step that is being done, with its file: "save sound.caf: ".
void complainOfStep(std::initializer_list<std::string_view> parts);

/// Does the steps, through the same functions as the window's actions. Every step is true when it
/// was done; otherwise it has said why not, naming itself and its file. The steps outlive it. All
/// [main].
class StepRunner {
public:
    explicit StepRunner(OfflineOutput& output) : output_(output) {}

    /// Any step. Without memory for it that is said, and nothing is thrown, as it may be by each
    /// of these.
    bool run(const Step& step);

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
    /// Keeps the copy for revert and transforms the sound, unless there is a `refusal` already.
    template <typename Transformation>
    bool transform(std::string_view step, const Refusal& refusal, Transformation transformation);

    OfflineOutput& output_;
    undo_struct undo_;
    std::string_view soundFile_; ///< of the step that brought the sound
};

} // namespace zemo::batch
