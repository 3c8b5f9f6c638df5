#pragma once

#include "support/TemporaryFolder.h"

#include <string>

namespace orbisk::test {

/// While it lives, the C library writes and reads numbers with a decimal comma, as on a German
/// user's system. The locale is compiled for the purpose where the system has none.
class CommaLocale {
public:
    CommaLocale();
    ~CommaLocale();

    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

    /// Why there is no such locale here; empty when it is in force.
    const std::string& problem() const { return m_problem; }

private:
    TemporaryFolder m_compiled;
    std::string m_formerLocale;
    std::string m_problem;
};

} // namespace orbisk::test
