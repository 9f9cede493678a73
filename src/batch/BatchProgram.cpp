#include "batch/BatchProgram.h"

#include <algorithm>
#include <system_error>

#include "batch/StepRunner.h"
#include "files/AudioFile.h"
#include "files/SoundLoader.h"
#include "interchange/Import.h"
#include "platform/Alert.h"
#include "platform/OutOfMemory.h"
#include "platform/Services.h"
#include "platform_linux/LinuxServices.h"
#include "platform_linux/StreamProperties.h"
#include "playback/OutputUnit.h"

namespace zemo::batch {
namespace {

constexpr double kDefaultRate = 44100.0;

/// Alerts go to standard error: there is nobody to dismiss them.
class BatchAlert final : public platform::Alert {
    void runCritical(const std::string& /*title*/, const std::string& message,
                     const std::string& /*button*/) override {
        platform::unlessOutOfMemory(
            [&] {
                std::string line = message;
                std::replace(line.begin(), line.end(), '\n', ' ');
                complainOfStep({line});
            },
            [&] { complainOfStep({message}); });
    }
};

/// The rate in the file's header, 0 where there is none; nothing for a step without such a file.
struct HeaderRate {
    using Rate = std::optional<double>;

    Rate operator()(const OpenStep& step) const {
        const FileUrl url = inputUrl(step.file, step.as);
        if (!isAudioFileExtension(url.pathExtension())) {
            return std::nullopt;
        }
        const auto file = AudioFile::open(url.path());
        return file ? file.value().dataFormat().mSampleRate : 0.0;
    }
    Rate operator()(const ImportStep& step) const {
        const auto file = describeSoundFile(inputUrl(step.file).path());
        return file ? file.value().rate : 0.0;
    }
    template <typename Other> Rate operator()(const Other& /*step*/) const { return std::nullopt; }
};

/// The rate in the header of the first audio file that the steps open or import, if there is one.
double rateOfFirstAudioFile(const std::vector<Step>& steps) {
    for (const Step& step : steps) {
        if (const auto rate = std::visit(HeaderRate{}, step)) {
            return *rate >= kLowestRate && *rate <= kHighestRate ? *rate : kDefaultRate;
        }
    }
    return kDefaultRate;
}

int runSteps(const CommandLine& line) {
    OfflineOutput output(line.rate ? *line.rate : rateOfFirstAudioFile(line.steps));
    platform::services().audioOutput = &output;
    createOutputUnit(&bufferPlayer);
    StepRunner runner(output);
    const bool done = std::all_of(line.steps.begin(), line.steps.end(),
                                  [&](const Step& step) { return runner.run(step); });
    bufferPlayer.outputUnit = nullptr;
    return done ? kDone : kStepFailed;
}

/// Help, or the version.
int printAnswer(const std::string& text) {
    const int error = platform::services().trace->printResult(text);
    if (error != 0) {
        complain(
            {"Standard output cannot be written: ", std::generic_category().message(error), "."});
    }
    return error == 0 ? kDone : kStepFailed;
}

int runCommandLine(const std::vector<std::string>& words, platform::SystemTrace& trace) {
    std::string complaint;
    const auto line = parseCommandLine(words, complaint);
    if (!line) {
        complain({complaint, " See zemo-batch --help."});
        return kWrongCommandLine;
    }
    if (line->help || line->version) {
        return printAnswer(line->help ? usage() : "zemo-batch " ZEMO_VERSION "\n");
    }
    if (writesToStandardOutput(line->steps)) {
        trace.leaveStandardOutput();
    }
    for (const std::string& notice : line->notices) {
        complain({notice});
    }
    return runSteps(*line);
}

} // namespace

int runBatch(std::span<char* const> words) {
    platform::setStreamProperties(ZEMO_VERSION);
    platform::SteadyClock clock;
    platform::PosixFileOperations fileOperations;
    platform::PosixFileSystem fileSystem(platform::Streams::Read);
    platform::KernelVersion systemVersion;
    platform::LinuxMemory memory;
    platform::ThreadWorkers workers;
    platform::SystemTrace trace("zemo-batch");
    BatchAlert alert;
    platform::services() = {.audioOutput = nullptr,
                            .alert = &alert,
                            .clock = &clock,
                            .fileOperations = &fileOperations,
                            .fileSystem = &fileSystem,
                            .systemVersion = &systemVersion,
                            .trace = &trace,
                            .memory = &memory,
                            .workers = &workers};
    return platform::unlessOutOfMemory(
        [&] {
            return runCommandLine({words.begin(), words.end()}, trace);
        },
        [] {
            complain({"There is not enough memory for this command line."});
            return int{kStepFailed};
        });
}

} // namespace zemo::batch
