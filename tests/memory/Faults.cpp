#include "Faults.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "Sounds.h"
#include "dsp/Filters.h"
#include "dsp/HilbertTransformer.h"
#include "files_test/SoundChecks.h"
#include "playback/SharedState.h"

namespace zemo::test {

namespace fs = std::filesystem;

namespace {

std::size_t openDescriptors() {
    const fs::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(fs::begin(all), fs::end(all)));
}

Words wordsIn(const float* samples, std::int64_t count) {
    Words words(static_cast<std::size_t>(count));
    if (count > 0) {
        std::memcpy(words.data(), samples, words.size() * sizeof(float));
    }
    return words;
}

Bytes contentOf(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace

void FixedText::append(std::string_view text) {
    const std::size_t count = std::min(text.size(), bytes_.size() - size_);
    std::copy_n(text.begin(), count, bytes_.begin() + static_cast<std::ptrdiff_t>(size_));
    size_ += count;
}

void Sentences::add(std::string_view sentence) {
    said.append(sentence);
    said.append("\n");
}

void Sentences::runCritical(const std::string& /*title*/, const std::string& message,
                            const std::string& /*button*/) {
    add(message);
}

bool AskedMemory::isGranted(std::size_t /*bytes*/) {
    void* const block = std::malloc(1);
    std::free(block);
    return block != nullptr;
}

bool WorkOnAnotherThread::run(const Work& work, platform::Cancel /*cancel*/) {
    const SparedMemory mine;
    std::jthread([&] { work(); }).join();
    return true;
}

EveryAllocation::EveryAllocation() {
    platform_.launch(44100.0);
    platform::services().alert = &sentences_;
    platform::services().trace = &sentences_;
    platform::services().fileSystem = &fileSystem_;
    platform::services().fileOperations = &fileOperations_;
    platform::services().memory = &memory_;
    forgetRuns();
    sound_ = noise(30000, 1, 0.9F);
    std::string pattern = (fs::temp_directory_path() / "zemo-memory-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
}

EveryAllocation::~EveryAllocation() {
    forgetRuns();
    fs::remove_all(folder_);
}

void EveryAllocation::keep(const std::string& name, const Bytes& content) {
    kept_[name] = content;
}

void EveryAllocation::prepare() {
    sentences_.said.clear();
    hilbert_xv.fill(0.25);
    xv.fill(0.5F);
    yv.fill(0.125F);
    loadSound(sound_);
    const std::vector<float> copy = noise(100, 2);
    ASSERT_TRUE(make_revert(undo_, copy.data(), 100));
    for (const auto& entry : fs::directory_iterator(folder_)) {
        fs::remove(entry);
    }
    for (const auto& [name, content] : kept_) {
        std::ofstream out(path(name), std::ios::binary);
        out.write(reinterpret_cast<const char*>(content.data()),
                  static_cast<std::streamsize>(content.size()));
    }
}

State EveryAllocation::state() {
    State now;
    now.sound = soundWords();
    now.copy = wordsIn(undo_.buf.get(), undo_.bufsize);
    now.histories.assign(hilbert_xv.begin(), hilbert_xv.end());
    now.histories.insert(now.histories.end(), xv.begin(), xv.end());
    now.histories.insert(now.histories.end(), yv.begin(), yv.end());
    for (const auto& entry : fs::directory_iterator(folder_)) {
        now.files[entry.path().filename()] = contentOf(entry);
    }
    return now;
}

std::size_t EveryAllocation::countRequests(const Run& run, State& result) {
    std::size_t requests = 0;
    for (int turn = 0; turn < 2; ++turn) { // what is made once and for all is made in the first
        prepare();
        FailingMemory counting({.sparing = sparing_});
        const bool done = run();
        counting.end();
        requests = counting.asked();
        EXPECT_TRUE(done) << sentences_.said.text();
        EXPECT_EQ(sentences_.said.text(), "");
        result = state();
    }
    return requests;
}

void EveryAllocation::failOne(const Run& run, const MemoryFault& fault, const Sayings& sayings,
                              const State& expected, const std::vector<State>& left) {
    FailingMemory failing(fault);
    const bool done = run();
    failing.end();
    const std::string said(sentences_.said.text());
    const State now = state();
    if (done) {
        EXPECT_EQ(said, "");
        EXPECT_TRUE(now == expected) << "done, and not what it should be";
        return;
    }
    EXPECT_TRUE(failing.hasFailed());
    EXPECT_NE(std::find(left.begin(), left.end(), now), left.end())
        << "a refusal has changed something";
    EXPECT_NE(std::find(sayings.begin(), sayings.end(), said), sayings.end()) << said;
}

void EveryAllocation::failEach(const Run& run, const Sayings& sayings,
                               const std::vector<State>& others) {
    State expected;
    const std::size_t requests = countRequests(run, expected);
    prepare();
    std::vector<State> left = others;
    left.push_back(state());
    const long held = heldBlocks();
    const std::size_t descriptors = openDescriptors();
    for (const bool forGood : {false, true}) {
        for (std::size_t n = 0; n < requests; ++n) {
            failOne(run, {.after = n, .forGood = forGood, .sparing = sparing_}, sayings, expected,
                    left);
            prepare();
            ASSERT_EQ(openDescriptors(), descriptors) << "after the fault in request " << n;
            ASSERT_EQ(heldBlocks(), held) << "something leaks after the fault in request " << n;
            ASSERT_FALSE(HasFailure()) << "after the fault in request " << n << " of " << requests
                                       << (forGood ? " and all after it" : "");
        }
    }
    RecordProperty("requests", static_cast<int>(requests));
}

} // namespace zemo::test
