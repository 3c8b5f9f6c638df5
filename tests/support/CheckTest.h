#pragma once

#include "support/SceneTools.h"

#include <gtest/gtest.h>

#include <limits>

namespace orbisk::test {

template <typename Number>
inline constexpr Number notANumber = std::numeric_limits<Number>::quiet_NaN();

template <typename Number>
inline constexpr Number infinite = std::numeric_limits<Number>::infinity();

/// Hands models to the check that are not as they should be; the library would tell of them.
class CheckTest : public testing::Test {
protected:
    QuietLibrary m_quiet;
};

} // namespace orbisk::test
