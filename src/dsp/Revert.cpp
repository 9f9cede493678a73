#include "dsp/Revert.h"

#include <algorithm>

namespace zemo {

bool make_revert(undo_struct& undo, const float* samples, std::int64_t count) {
    SampleBlock copy = allocateSamples(count);
    if (copy == nullptr) {
        return false;
    }
    std::copy_n(samples, count, copy.get());
    make_revert(undo, std::move(copy), count);
    return true;
}

void make_revert(undo_struct& undo, SampleBlock samples, std::int64_t count) noexcept {
    undo.buf = std::move(samples);
    undo.bufsize = count;
}

/// The blocks change places, which is the same as copying them across. What comes back has no
/// slack behind it, whatever its block has.
void revert(undo_struct& undo) {
    if (undo.buf == nullptr || undo.bufsize == 0) {
        return;
    }
    std::int64_t slack = 0;
    swapBuffer(undo.buf, undo.bufsize, slack);
}

} // namespace zemo
