#include "ForeignSounds.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>

#include "interchange/WavHeader.h"

/// libsndfile 1.2.0 forgets this block of an Ogg file that breaks off in its headers.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:vorbis_info_init";
}

namespace zemo::test {

class OneFileStream final : public platform::FileStream {
public:
    explicit OneFileStream(OneFile& file) : file_(file) {}

    std::uint64_t size() const override { return file_.bytes_.size(); }

    std::size_t readAt(std::uint64_t offset, void* destination, std::size_t count) override {
        const bool may = !file_.mayRead || file_.mayRead(file_.reads);
        ++file_.reads;
        if (!may || offset >= size()) {
            return 0;
        }
        count = std::min<std::size_t>(count, size() - offset);
        std::memcpy(destination, file_.bytes_.data() + offset, count);
        return count;
    }

private:
    OneFile& file_;
};

std::unique_ptr<platform::FileStream> OneFile::openForReading(const std::string& /*path*/,
                                                              int& /*error*/) {
    return std::make_unique<OneFileStream>(*this);
}

Bytes wavOf(std::uint32_t rate, const std::vector<std::uint32_t>& words) {
    return join({wavHeader(rate, words.size()), littleWords(words)});
}

namespace {

Bytes little(std::uint64_t value, std::size_t bytes) {
    Bytes result = big(value, bytes);
    std::reverse(result.begin(), result.end());
    return result;
}

} // namespace

Bytes wavOfZeros(std::uint16_t channels, std::uint32_t rate, std::size_t frames) {
    const std::size_t data = frames * channels * 2;
    return join({text("RIFF"), little(36 + data, 4), text("WAVEfmt "), little(16, 4), little(1, 2),
                 little(channels, 2), little(rate, 4), little(rate * channels * 2U, 4),
                 little(channels * 2U, 2), little(16, 2), text("data"), little(data, 4),
                 zeros(data)});
}

std::vector<std::uint32_t> wordsOf(const std::vector<float>& samples) {
    std::vector<std::uint32_t> words(samples.size());
    std::memcpy(words.data(), samples.data(), samples.size() * sizeof(float));
    return words;
}

std::vector<float> sine(double rate, double hertz, std::size_t count) {
    std::vector<float> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double time = static_cast<double>(i) / rate;
        samples[i] = static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * hertz * time));
    }
    return samples;
}

const std::map<std::string, Bytes>& foreignFiles() {
    static const std::map<std::string, Bytes> files = [] {
        std::map<std::string, Bytes> found;
        for (const auto& entry : std::filesystem::directory_iterator(ZEMO_SOUND_FILES)) {
            std::ifstream in(entry.path(), std::ios::binary);
            found[entry.path().filename()] = {std::istreambuf_iterator<char>(in),
                                              std::istreambuf_iterator<char>()};
        }
        return found;
    }();
    return files;
}

} // namespace zemo::test
