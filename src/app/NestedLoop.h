#pragma once

#include <functional>
#include <vector>

namespace orbisk {

/// Stands while a menu or a dialog runs an event loop of its own. Whoever opened it is still at
/// work then, below that loop, and must not be deleted. Main thread.
class NestedLoop {
public:
    /// @param end makes the loop end soon, as if the user had turned away. Called once at most.
    explicit NestedLoop(std::function<void()> end);

    /// The loop has ended.
    ~NestedLoop();

    NestedLoop(const NestedLoop&) = delete;
    NestedLoop& operator=(const NestedLoop&) = delete;

    /// Ends all such loops. Once none is left, which may be now, `action` is run.
    static void endAllThen(std::function<void()> action);

private:
    using Actions = std::vector<std::function<void()>>;

    static std::vector<NestedLoop*>& running();
    static Actions& waiting();

    std::function<void()> m_end;
};

} // namespace orbisk
