#include "Variants.h"

#include <hwy/targets.h>

#include "platform/Services.h"

namespace zemo::test {

Variant::Variant(std::int64_t instructionSet, unsigned threads)
    : instructionSet_(instructionSet), workers_(threads) {
    hwy::SetSupportedTargetsForTest(instructionSet);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    platform::services().workers = &workers_;
}

Variant::~Variant() {
    platform::services().workers = nullptr;
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

std::string Variant::name() const {
    return std::string(hwy::TargetName(instructionSet_)) + ", " + std::to_string(workers_.count()) +
           " threads";
}

std::vector<std::int64_t> instructionSets() {
    return hwy::SupportedAndGeneratedTargets();
}

} // namespace zemo::test
