#include "app/NestedLoop.h"

#include <utility>

namespace orbisk {

NestedLoop::NestedLoop(std::function<void()> end) : m_end(std::move(end)) {
    running().push_back(this);
}

NestedLoop::~NestedLoop() {
    running().pop_back();
    if (!running().empty())
        return;
    for (const auto& action : std::exchange(waiting(), {}))
        action();
}

void NestedLoop::endAllThen(std::function<void()> action) {
    if (running().empty()) {
        action();
        return;
    }
    waiting().push_back(std::move(action));
    // A loop that was told to end runs on for a moment, and a dialog must be told but once.
    for (auto loop = running().rbegin(); loop != running().rend(); ++loop)
        if (const auto end = std::exchange((*loop)->m_end, nullptr))
            end();
}

std::vector<NestedLoop*>& NestedLoop::running() {
    static std::vector<NestedLoop*> loops;
    return loops;
}

NestedLoop::Actions& NestedLoop::waiting() {
    static Actions actions;
    return actions;
}

} // namespace orbisk
