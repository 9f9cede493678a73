#include "platform/OwnEnvironment.h"

#include <atomic>
#include <cstdlib>
#include <string>
#include <vector>

namespace zemo::platform {
namespace {

struct Variable {
    std::string assignment; ///< the environment has its address
    char first = '\0';      ///< of its name
};

/// Never freed: other threads may read the environment at the very end.
std::vector<Variable*>& variables() {
    static auto* const all = new std::vector<Variable*>;
    return *all;
}

/// Other threads may be reading it, so nothing may be moved or freed: one character changes.
void setFirst(Variable& variable, char first) noexcept {
    std::atomic_ref(variable.assignment.front()).store(first, std::memory_order_relaxed);
}

} // namespace

void setOwnVariable(std::string_view name, std::string_view value) {
    const std::string key(name);
    if (std::getenv(key.c_str()) != nullptr) { // NOLINT(concurrency-mt-unsafe): no other thread
        return;
    }
    auto* const variable =
        new Variable{.assignment = key + "=" + std::string(value), .first = key.front()};
    variables().push_back(variable);
    ::putenv(variable->assignment.data()); // NOLINT(concurrency-mt-unsafe): the same
}

WithoutOwnVariables::WithoutOwnVariables() noexcept {
    for (Variable* const variable : variables()) {
        setFirst(*variable, '_'); // a name that nobody asks for
    }
}

WithoutOwnVariables::~WithoutOwnVariables() {
    for (Variable* const variable : variables()) {
        setFirst(*variable, variable->first);
    }
}

} // namespace zemo::platform
