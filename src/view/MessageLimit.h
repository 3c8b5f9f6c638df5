#pragma once

namespace orbisk {

/// Has the scene-graph library say no more than `mostMessages` messages about one load; the rest
/// is left out. Some damaged files make gigabytes of them.
void limitMessages();

inline constexpr int mostMessages = 200;

/// Begins to count anew: a load begins. Any thread.
void startCountingMessages();

} // namespace orbisk
