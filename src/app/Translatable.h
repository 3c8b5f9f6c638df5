#pragma once

namespace orbisk {

/// Marks a text for the translation catalog where it cannot be looked up yet.
constexpr const char* translatable(const char* text) {
    return text;
}

} // namespace orbisk
