#pragma once

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <string>

namespace orbisk::test {

/// A program that "html" files are opened with, for a test in an environment of its own: a script
/// that writes its arguments to a file.
class TestBrowser {
public:
    TestBrowser();

    /// Environment in which it is the browser, and the only one.
    Environment environment() const;

    /// In such an environment: what it was called with last, the number of arguments and each of
    /// them, with a bar after each; empty while it was not called.
    static std::string opened();

    /// Forgets about that.
    static void forget();

private:
    TemporaryFolder m_folder;
};

} // namespace orbisk::test
