#include "batch/StepRunner.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <system_error>
#include <type_traits>

#include "dsp/AmplitudeModulation.h"
#include "dsp/HarmonicProcessor.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "dsp/SingleSideband.h"
#include "files/AtomicFile.h"
#include "files/AudioFileLayout.h"
#include "files/AudioFileWriter.h"
#include "files/SoundLoader.h"
#include "interchange/Export.h"
#include "interchange/Import.h"
#include "platform/Clock.h"
#include "platform/Format.h"
#include "platform/OutOfMemory.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "platform_linux/LinuxAudioOutput.h"
#include "playback/OutputUnit.h"
#include "playback/RenderCallback.h"
#include "playback/RenderMessageQueue.h"
#include "playback/SharedState.h"

namespace zemo::batch {
namespace {

using namespace std::chrono_literals;
using platform::format;

constexpr const char* kNoMemoryForStep = "there is not enough memory for it.";

/// Of a step whose parameters are clamped instead.
const Refusal kNeverRefused;

/// The step that is being done and its file, kept where they are.
struct UnderWay {
    std::string_view step;
    std::string_view file;
};
constinit UnderWay underWay;

platform::TraceLog& trace() {
    return *platform::services().trace;
}

/// Prints the callback's trace lines; of the meter there is only its value, and no button.
class TracingDelegate final : public RenderDelegate {
    void updateValue(float /*level*/) override {}
    void resetMeter() override { value.store(0.0F); }
    void resetPlayTitle() override {}
    void traceIdleCycle(std::int32_t left) override {
        trace().print(format("IdleCycle = %d\n", left));
    }
    void traceMissingBuffer() override { trace().print("Can't access input buffer\n"); }
};

/// For as long as it lives, the callback's messages go to `delegate`.
class Listening {
public:
    explicit Listening(RenderDelegate& delegate) { renderDelegate.store(&delegate); }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;
    ~Listening() { renderDelegate.store(nullptr); }
};

std::string absolutePath(const std::string& file) {
    std::error_code error;
    const auto path = std::filesystem::absolute(file, error);
    return error ? file : path.string();
}

/// The place of a file that a step writes.
std::string outputPath(const std::string& file) {
    return file == kStandardStream ? "/dev/stdout" : absolutePath(file);
}

std::string reasonFor(int error) {
    return std::generic_category().message(error) + ".";
}

std::span<const float> sound() {
    return {fBuffer.load(), static_cast<std::size_t>(fBuffersize.load())};
}

/// True when the file was written; otherwise the reason was said.
bool written(const WriteOutcome& outcome) {
    if (!outcome.done()) {
        complainOfStep({reasonFor(outcome.createError + outcome.writeError + outcome.closeError)});
    }
    return outcome.done();
}

bool hasSound() {
    if (fBuffersize.load() == 0) {
        complainOfStep({"there is no sound."});
    }
    return fBuffersize.load() > 0;
}

/// A number as %.15g prints it, without memory of its own.
class Digits {
public:
    template <typename Number> explicit Digits(Number number) {
        char* const end = digits_.data() + digits_.size();
        if constexpr (std::is_floating_point_v<Number>) {
            end_ = std::to_chars(digits_.data(), end, number, std::chars_format::general, 15).ptr;
        } else {
            end_ = std::to_chars(digits_.data(), end, number).ptr;
        }
    }
    operator std::string_view() const { return {digits_.data(), end_}; }

private:
    std::array<char, 32> digits_{};
    const char* end_ = nullptr;
};

/// True when all of it was printed; otherwise that was said.
bool printResult(std::initializer_list<std::string_view> parts) {
    for (const std::string_view part : parts) {
        if (const int error = trace().printResult(part)) {
            complainOfStep({"the result cannot be printed: ", reasonFor(error)});
            return false;
        }
    }
    return true;
}

/// The sound is new by then, so that this must not ask for memory.
bool printSource(const SoundFileDescription& source) {
    const Digits channels(source.channels);
    const Digits rate(source.rate);
    return printResult(
        {"imported ", source.format, "\nchannels ", channels, "\nrate ", rate, "\n"});
}

bool writeLevels(const std::string& file, const std::vector<float>& levels) {
    std::string text;
    for (const float level : levels) {
        text += format("%.9g\n", static_cast<double>(level));
    }
    underWay = {"render levels", file};
    return written(writeAtomically(outputPath(file), {}, std::as_bytes(std::span(text))));
}

struct Statistics {
    double peak = 0.0;
    double rms = 0.0;
    std::int64_t nonFinite = 0;
};

Statistics measure(std::span<const float> samples) {
    Statistics result;
    double sum = 0.0;
    for (const float sample : samples) {
        const auto x = static_cast<double>(sample);
        if (!std::isfinite(x)) {
            ++result.nonFinite;
            continue;
        }
        result.peak = std::max(result.peak, std::fabs(x));
        sum += x * x;
    }
    const auto finite = static_cast<std::int64_t>(samples.size()) - result.nonFinite;
    result.rms = finite > 0 ? std::sqrt(sum / static_cast<double>(finite)) : 0.0;
    return result;
}

} // namespace

FileUrl inputUrl(const std::string& file, const std::string& as) {
    return FileUrl(file == kStandardStream ? "/dev/stdin" : absolutePath(file), as);
}

void complain(std::initializer_list<std::string_view> parts) {
    trace().printError("zemo-batch: ");
    for (const std::string_view part : parts) {
        trace().printError(part);
    }
    trace().printError("\n");
}

void complainOfStep(std::initializer_list<std::string_view> parts) {
    trace().printError("zemo-batch: ");
    for (const std::string_view part :
         {underWay.step, std::string_view(underWay.file.empty() ? "" : " "), underWay.file,
          std::string_view(": ")}) {
        trace().printError(part);
    }
    for (const std::string_view part : parts) {
        trace().printError(part);
    }
    trace().printError("\n");
}

bool StepRunner::run(const Step& step) {
    underWay = {};
    const bool done = platform::unlessOutOfMemory([&] { return std::visit(*this, step); },
                                                  [] {
                                                      complainOfStep({kNoMemoryForStep});
                                                      return false;
                                                  });
    underWay = {}; // its names may go now
    return done;
}

bool StepRunner::operator()(const OpenStep& step) {
    underWay = {"open", step.file};
    const FileUrl url = inputUrl(step.file, step.as);
    const OpenResult result = openByExtension(url, step.swap);
    float peak = 0.0F;
    const bool finished = finishOpening(url.path(), &peak, step.normalize);
    if (!result.loaded) {
        complainOfStep({"the file was not opened (", result.status, ")."});
    } else {
        soundFile_ = step.file;
    }
    return result.loaded && finished;
}

template <typename Transformation>
bool StepRunner::transform(std::string_view step, const Refusal& refusal,
                           Transformation transformation) {
    underWay = {step, {}};
    if (!hasSound()) {
        return false;
    }
    const Refusal reason = refusal ? refusal : transformation();
    if (reason) {
        complainOfStep({reason->sentence});
    }
    return !reason;
}

bool StepRunner::operator()(const ResampleStep& step) {
    return transform("resample", resampleRefusal(step.ratio),
                     [&] { return resampleBuffer(step.ratio, &undo_); });
}

bool StepRunner::operator()(const AmStep& step) {
    if (step.kind == AmStep::Kind::Am) {
        return transform("am", kNeverRefused,
                         [&] { return amBuffer(step.frequency, step.index, &undo_); });
    }
    const bool upper = step.kind == AmStep::Kind::SsbUpper;
    return transform(upper ? "ssb-upper" : "ssb-lower", kNeverRefused,
                     [&] { return ssbmBuffer(upper, step.frequency, step.index, &undo_); });
}

bool StepRunner::operator()(const FmStep& step) {
    return transform("fm", pmRefusal(step.envelopeRate), [&] {
        return pmBuffer(step.frequency, step.index, step.envelopeRate, &undo_);
    });
}

bool StepRunner::operator()(const HdStep& step) {
    const HdSettings& s = step.settings;
    return transform("hd", kNeverRefused, [&] {
        return hd(s.two, s.four, s.six, s.attack, s.scale, s.hpSelect, s.slope, s.mix, s.knee,
                  s.comp, &undo_);
    });
}

bool StepRunner::operator()(const RevertStep& /*step*/) {
    underWay = {"revert", {}};
    revert(undo_);
    return true;
}

bool StepRunner::operator()(const SaveStep& step) {
    underWay = {"save", step.file};
    if (!hasSound()) {
        return false;
    }
    const bool saved = saveSound(FileUrl(outputPath(step.file), step.as));
    if (!saved) {
        complainOfStep({"the file was not saved."});
    }
    return saved;
}

bool StepRunner::operator()(const ImportStep& step) {
    underWay = {"import", step.file};
    const auto result = importSound(inputUrl(step.file));
    if (!result) {
        complainOfStep({result.error().sentence});
        return false;
    }
    soundFile_ = step.file;
    const bool printed = printSource(result.value().source);
    if (result.value().incomplete) {
        complainOfStep({"the file is cut off or damaged; what could be read was imported."});
    }
    return printed;
}

bool StepRunner::operator()(const ExportStep& step) {
    underWay = {"export", step.file};
    if (!hasSound()) {
        return false;
    }
    const auto result = exportSound(FileUrl(outputPath(step.file), step.as));
    if (!result) {
        complainOfStep({result.error().sentence});
        return false;
    }
    if (result.value().clipped > 0) {
        complainOfStep(
            {Digits(result.value().clipped), " samples beyond full scale were clipped."});
    }
    return true;
}

bool StepRunner::operator()(const DumpStep& step) {
    underWay = {"dump", step.file};
    return written(writeAtomically(outputPath(step.file), {}, std::as_bytes(sound())));
}

bool StepRunner::operator()(const RenderStep& step) {
    underWay = {"render", step.file};
    if (!hasSound()) {
        return false;
    }
    RenderMessageQueue queue;
    TracingDelegate delegate;
    const Listening listening(queue);
    bufferPlayer.rmsMode.store(step.rms ? 1 : 0);
    std::vector<float> rendered;
    std::vector<float> levels;
    bufferPlay0(0);
    while (output_.isRunning()) {
        output_.renderInto(rendered, step.frames);
        queue.drain(delegate);
        levels.push_back(value.load());
    }
    const auto bytes = std::as_bytes(std::span(rendered));
    return written(writeAtomically(outputPath(step.file), cafHeader(streamFormat, bytes.size()),
                                   bytes)) &&
           (step.levels.empty() || writeLevels(step.levels, levels));
}

bool StepRunner::operator()(const PlayStep& /*step*/) {
    underWay = {"play", {}};
    if (!hasSound()) {
        return false;
    }
    platform::DeviceLimits limits;
    limits.latency = limits.safeLatency; // no key stops this play, and there is no second one
    platform::LinuxOutputUnit device(R, limits);
    device.setRenderCallback(FloatBufferRenderProc, &bufferPlayer);
    device.setSoundName(std::string(soundFile_.substr(soundFile_.rfind('/') + 1)));
    RenderMessageQueue queue;
    TracingDelegate delegate;
    const Listening listening(queue);
    bufferPlayer.outputUnit = &device;
    bufferPlay0(0);
    while (superviseOutputUnit()) {
        queue.drain(delegate);
        platform::services().clock->sleepFor(5ms);
    }
    queue.drain(delegate);
    bufferPlayer.outputUnit = &output_;
    if (!device.notice().empty()) {
        trace().printError(device.notice() + "\n");
    }
    return true;
}

bool StepRunner::operator()(const InfoStep& /*step*/) {
    underWay = {"info", {}};
    const Statistics found = measure(sound());
    const std::int64_t count = fBuffersize.load();
    return printResult({format("samples %ld\nseconds %.6f\npeak %.9g\nrms %.9g\nnon-finite %ld\n"
                               "revert %ld\n",
                               count, static_cast<double>(count) / R, found.peak, found.rms,
                               found.nonFinite, undo_.bufsize)});
}

} // namespace zemo::batch
