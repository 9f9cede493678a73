#include "batch/BatchProgram.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include "files/AudioFile.h"
#include "files/SoundLoader.h"
#include "platform/Alert.h"
#include "platform/Format.h"
#include "platform/Services.h"
#include "platform_linux/LinuxAudioOutput.h"
#include "platform_linux/LinuxServices.h"
#include "playback/OutputUnit.h"
#include "playback/RenderMessageQueue.h"
#include "playback/SharedState.h"

namespace zemo::batch {
namespace {

using namespace std::chrono_literals;
using platform::format;

constexpr double kDefaultRate = 44100.0;

void complain(const std::string& sentence) {
    platform::services().trace->printError("zemo-batch: " + sentence + "\n");
}

/// Alerts go to standard error: there is nobody to dismiss them.
class BatchAlert final : public platform::Alert {
    void runCritical(const std::string& /*title*/, const std::string& message,
                     const std::string& /*button*/) override {
        std::string line = message;
        std::replace(line.begin(), line.end(), '\n', ' ');
        complain(line);
    }
};

/// Prints the callback's trace lines; there is no meter and no button.
class BatchDelegate final : public RenderDelegate {
    void updateValue(float /*level*/) override {}
    void resetMeter() override {}
    void resetPlayTitle() override {}
    void traceIdleCycle(std::int32_t left) override {
        platform::services().trace->print(format("IdleCycle = %d\n", left));
    }
    void traceMissingBuffer() override {
        platform::services().trace->print("Can't access input buffer\n");
    }
};

std::string absolutePath(const std::string& file) {
    std::error_code error;
    const auto path = std::filesystem::absolute(file, error);
    return error ? file : path.string();
}

/// The rate in the header of the first audio file that the steps open, if there is one.
double rateOfFirstAudioFile(const std::vector<Step>& steps) {
    for (const Step& step : steps) {
        const auto* const open = std::get_if<OpenStep>(&step);
        if (open == nullptr || !isAudioFileExtension(FileUrl(open->file).pathExtension())) {
            continue;
        }
        const auto file = AudioFile::open(open->file);
        const double rate = file ? file.value().dataFormat().mSampleRate : 0.0;
        return std::isfinite(rate) && rate > 0.0 ? rate : kDefaultRate;
    }
    return kDefaultRate;
}

class StepRunner {
public:
    /// True when the step was done; otherwise its complaint was made.
    bool operator()(const OpenStep& step);
    bool operator()(const PlayStep& step);
    bool operator()(const InfoStep& step);

private:
    RenderMessageQueue queue_;
    BatchDelegate delegate_;
};

bool StepRunner::operator()(const OpenStep& step) {
    const FileUrl url(absolutePath(step.file));
    const OpenResult result = openByExtension(url, step.swap);
    float peak = 0.0F;
    finishOpening(url.path(), &peak, step.normalize);
    const bool loaded = result.isAudioFile
                            ? result.status == "OK"
                            : fBuffersize.load() > 0 && result.status != "Raw data file: error";
    if (!loaded) {
        complain("open " + step.file + ": the file was not opened (" + result.status + ").");
    }
    return loaded;
}

bool StepRunner::operator()(const PlayStep& /*step*/) {
    if (fBuffersize.load() == 0) {
        complain("play: there is no sound.");
        return false;
    }
    renderDelegate.store(&queue_);
    bufferPlay0(0);
    while (superviseOutputUnit()) {
        queue_.drain(delegate_);
        platform::services().clock->sleepFor(5ms);
    }
    queue_.drain(delegate_);
    renderDelegate.store(nullptr);
    const std::string notice = bufferPlayer.outputUnit->notice();
    if (!notice.empty()) {
        platform::services().trace->printError(notice + "\n");
    }
    return true;
}

bool StepRunner::operator()(const InfoStep& /*step*/) {
    const float* const samples = fBuffer.load();
    const std::int64_t count = fBuffersize.load();
    double peak = 0.0;
    double sum = 0.0;
    std::int64_t nonFinite = 0;
    for (std::int64_t i = 0; i < count; ++i) {
        const auto sample = static_cast<double>(samples[i]);
        if (!std::isfinite(sample)) {
            ++nonFinite;
            continue;
        }
        peak = std::max(peak, std::fabs(sample));
        sum += sample * sample;
    }
    const std::int64_t finite = count - nonFinite;
    const double rms = finite > 0 ? std::sqrt(sum / static_cast<double>(finite)) : 0.0;
    platform::services().trace->print(
        format("samples %ld\nseconds %.6f\npeak %.9g\nrms %.9g\nnon-finite %ld\n", count,
               static_cast<double>(count) / R, peak, rms, nonFinite));
    return true;
}

int runSteps(const CommandLine& line) {
    const bool plays = std::any_of(line.steps.begin(), line.steps.end(), [](const Step& step) {
        return std::holds_alternative<PlayStep>(step);
    });
    const double rate = line.rate ? *line.rate : rateOfFirstAudioFile(line.steps);
    // Only a step that plays has any business with the sound server.
    platform::LinuxAudioOutput output(rate, plays ? platform::OutputChoice::Device
                                                  : platform::OutputChoice::Silence);
    platform::services().audioOutput = &output;
    createOutputUnit(&bufferPlayer);
    StepRunner runner;
    const bool done = std::all_of(line.steps.begin(), line.steps.end(),
                                  [&](const Step& step) { return std::visit(runner, step); });
    bufferPlayer.outputUnit = nullptr;
    return done ? kDone : kStepFailed;
}

} // namespace

int runBatch(const std::vector<std::string>& words) {
    platform::SteadyClock clock;
    platform::PosixFileSystem fileSystem;
    platform::KernelVersion systemVersion;
    platform::SystemTrace trace("zemo-batch");
    BatchAlert alert;
    platform::services() = {.audioOutput = nullptr,
                            .alert = &alert,
                            .clock = &clock,
                            .fileSystem = &fileSystem,
                            .systemVersion = &systemVersion,
                            .trace = &trace};
    std::string complaint;
    const auto line = parseCommandLine(words, complaint);
    if (!line) {
        complain(complaint + " See zemo-batch --help.");
        return kWrongCommandLine;
    }
    if (line->help || line->version) {
        trace.print(line->help ? usage() : "zemo-batch " ZEMO_VERSION "\n");
        return kDone;
    }
    return runSteps(*line);
}

} // namespace zemo::batch
