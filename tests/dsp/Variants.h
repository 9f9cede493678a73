#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform_linux/LinuxServices.h"

namespace zemo::test {

/// One way in which the kernels may run: an instruction set that this machine has, and a number of
/// threads. In force while it lives.
class Variant {
public:
    Variant(std::int64_t instructionSet, unsigned threads);
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant();

    std::string name() const;

private:
    std::int64_t instructionSet_;
    platform::ThreadWorkers workers_;
};

/// The instruction sets that the kernels are compiled for and this machine has.
std::vector<std::int64_t> instructionSets();

/// Calls check(name) under each of them with 1, 2 and 3 threads.
template <typename Check> void underEveryVariant(const Check& check) {
    for (const std::int64_t set : instructionSets()) {
        for (const unsigned threads : {1U, 2U, 3U}) {
            const Variant variant(set, threads);
            SCOPED_TRACE(variant.name());
            check();
        }
    }
}

} // namespace zemo::test
